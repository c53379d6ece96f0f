"""Tells on which bus each connector is: a host in Python."""
import tav


def report():
    """Yields a line for each connector of each device."""
    for device in tav.devices():
        for label, port in device.ports.items():
            yield f"{device.name}:{label} bus {port.secondary_bus:02x}"


if __name__ == "__main__":
    print(*report(), sep="\n")
