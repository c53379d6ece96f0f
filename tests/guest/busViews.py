"""One bus seen by three: lspci and the kernel's files in a guest, as busReport prints what pcibus/
sees. Each function becomes a line

    01:00.0 type 1 104c:8232 subsystem 0000:0000 secondary 02 link x1 speed 1

with the secondary bus and the link only of bridges, as pcibus/ has it.
"""
import re

# Speeds as lspci and the kernel write them, without "GT/s", by their number on the bus.
SPEEDS = {"unknown": 0, "Unknown": 0, "2.5": 1, "5": 2, "5.0": 2, "8": 3, "8.0": 3, "16": 4,
          "16.0": 4, "32": 5, "32.0": 5}
UNKNOWN_WIDTHS = {"0", "255"}

# Prints each file of each function as "0000:00:04.0 NAME VALUE", those that there are.
SYSFS_COMMAND = (
    "cd /sys/bus/pci/devices && for each in *; do"
    " for name in vendor device subsystem_vendor subsystem_device secondary_bus_number"
    " max_link_width max_link_speed; do"
    " if [ -e $each/$name ]; then read -r value <$each/$name; echo $each $name $value; fi;"
    " done; done")

# Copies the files that make up a bus, and the links to what is driven through it, as a folder that
# stands for /sys. A bridge of the old kind has no link, and some functions no subsystem, so some
# copies fail.
COPY_COMMAND = (
    "mkdir -p /tmp/copy/bus/pci/devices && cd /sys/bus/pci/devices && for each in *; do"
    " to=/tmp/copy/bus/pci/devices/$each; mkdir -p $to;"
    " cp $each/config $each/subsystem_vendor $each/subsystem_device $each/max_link_width"
    " $each/max_link_speed $each/current_link_width $each/current_link_speed $to 2>/dev/null;"
    " done;"
    " for each in /sys/class/*/*; do"
    " case $each in /sys/class/pci_bus/*) continue; esac;"
    " cd -P $each 2>/dev/null || continue;"
    " case $PWD in /sys/devices/pci*|/sys/devices/virtual/nvme-subsystem/*)"
    " kind=/tmp/copy${each#/sys}; kind=${kind%/*}; to=/tmp/copy${PWD#/sys};"
    " mkdir -p $kind $to; cp -P $each $kind;"
    " if [ -f hidden ]; then cp hidden $to; fi;"
    " for link in nvme*; do if [ -L $link ]; then cp -P $link $to; fi; done;"
    " esac; done; tar -cz -C /tmp/copy . | base64; rm -rf /tmp/copy")

# The complaint that there are no modules to name is of no interest here.
LSPCI_COMMAND = "lspci -D -n -vv 2>/dev/null"


def describe(address, ids, subsystem, secondary, width, speed):
    """`secondary` is None for a function that is no bridge."""
    bridge = secondary is not None
    return (f"{address} type {int(bridge)} {ids} subsystem {subsystem} "
            f"secondary {secondary if bridge else 0:02x} "
            f"link x{width if bridge else 0} speed {speed if bridge else 0}")


def seen_by_lspci(text):
    """The lines for what LSPCI_COMMAND prints."""
    lines = []
    for block in text.strip().split("\n\n"):
        head = re.match(r"0000:(\S+) \S+ ([0-9a-f]{4}:[0-9a-f]{4})", block)
        bus = re.search(r"^\tBus: .*secondary=([0-9a-f]{2})", block, re.MULTILINE)
        # The capability of a bridge, or the line of another function.
        subsystem = re.search(r"Subsystem: ([0-9a-f]{4}:[0-9a-f]{4})", block)
        link = re.search(r"LnkCap:.* Speed ([^,]*?)(?:GT/s)?, Width x(\d+)", block)
        lines.append(describe(head[1], head[2], subsystem[1] if subsystem else "0000:0000",
                              int(bus[1], 16) if bus else None,
                              int(link[2]) if link else 0, SPEEDS[link[1]] if link else 0))
    return lines


def seen_by_kernel(text):
    """The lines for what SYSFS_COMMAND prints."""
    functions = {}
    for line in text.splitlines():
        address, name, value = line.split(" ", 2)
        functions.setdefault(address, {})[name] = value

    def identifier(files, name):
        return f"{int(files.get(name, '0'), 16):04x}"

    def width(files):
        value = files.get("max_link_width", "0")
        return 0 if value in UNKNOWN_WIDTHS else int(value)

    def speed(files):
        return SPEEDS[files.get("max_link_speed", "unknown").split()[0]]

    def secondary(files):
        return int(files["secondary_bus_number"]) if "secondary_bus_number" in files else None

    return [describe(address.removeprefix("0000:"),
                     identifier(files, "vendor") + ":" + identifier(files, "device"),
                     identifier(files, "subsystem_vendor") + ":" +
                     identifier(files, "subsystem_device"),
                     secondary(files), width(files), speed(files))
            for address, files in sorted(functions.items())]


def links_by_bus(text):
    """The links that ports lead down, by the number of the bus below, as (width, speed): what
    LSPCI_COMMAND prints of how they run. A link on which nothing answers is none.
    """
    links = {}
    blocks = text.strip().split("\n\n")
    buses = {int(re.match(r"0000:(..)", block)[1], 16) for block in blocks}
    for block in blocks:
        bus = re.search(r"^\tBus: .*secondary=([0-9a-f]{2})", block, re.MULTILINE)
        port = re.search(r"Express .*(?:Root Port|Downstream Port)", block)
        runs = re.search(r"LnkSta:\s+Speed ([^,\s]*?)(?:GT/s)?(?: \(\w+\))?, Width x(\d+)", block)
        if bus and port and runs and int(bus[1], 16) in buses:
            links[int(bus[1], 16)] = (int(runs[2]), SPEEDS[runs[1]])
    return links


def links_of_listing(listing):
    """Each link that tavctl lists, as (name and connector, bus below, width, speed)."""
    return [(f"{device['name'].rstrip('*')} {what}", bus, link["negotiatedWidth"],
             link["negotiatedSpeed"])
            for device in listing["devices"]
            for what, bus, link in
            [("upstream", device["upstreamBus"], device["upstreamLink"]),
             *((port["label"], port["secondaryBus"], port) for port in device["ports"])]
            if bus is not None]
