#!/usr/bin/env python3
"""Gives an installer for Windows the code of its package and the time it says it was made at.

    scripts/stamp-msi.py FILE.msi {CODE} SECONDS

wixl writes a random code and the time now. Both stand in the summary, a stream of the compound file
that an installer is, and are replaced where they stand.
"""
import struct
import sys

END = 0xFFFFFFFE
SUMMARY = "\x05SummaryInformation"
CODE, CREATED, SAVED = 9, 12, 13
TEXT, TIME = 30, 64


class CompoundFile:
    """Where the bytes of a stream stand."""

    def __init__(self, data):
        self.data = data
        if data[:8] != b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1":
            raise SystemExit("not a compound file")
        self.sector = 1 << struct.unpack_from("<H", data, 30)[0]
        self.small = 1 << struct.unpack_from("<H", data, 32)[0]
        first_folder, self.limit, first_small = (struct.unpack_from("<I", data, at)[0]
                                                 for at in (48, 56, 60))
        lists = [at for at in struct.unpack_from("<109I", data, 76) if at < END]
        if struct.unpack_from("<I", data, 72)[0]:
            lists += self.more_lists(struct.unpack_from("<I", data, 68)[0])
        self.next = [number for at in lists for number in self.numbers(at)]
        self.next_small = [number for at in self.chain(first_small, self.next)
                           for number in self.numbers(at)]
        self.entries = {}
        for at in self.chain(first_folder, self.next):
            for start in range(self.offset(at), self.offset(at) + self.sector, 128):
                length = struct.unpack_from("<H", data, start + 64)[0]
                name = data[start:start + max(length - 2, 0)].decode("utf-16-le", "replace")
                self.entries[name] = struct.unpack_from("<II", data, start + 116)

    def offset(self, at):
        return (at + 1) * self.sector

    def numbers(self, at):
        return struct.unpack_from(f"<{self.sector // 4}I", self.data, self.offset(at))

    def more_lists(self, at):
        found = []
        while at < END:
            *part, at = self.numbers(at)
            found += [number for number in part if number < END]
        return found

    @staticmethod
    def chain(at, following):
        while at < END:
            yield at
            at = following[at]

    def places(self, name):
        """The place in the file of each byte of a stream."""
        first, size = self.entries[name]
        if size >= self.limit:
            pieces = [(self.offset(at), self.sector) for at in self.chain(first, self.next)]
        else:
            store = self.chain(self.entries["Root Entry"][0], self.next)
            stored = [self.offset(at) + place for at in store for place in range(self.sector)]
            pieces = [(stored[at * self.small], self.small)
                      for at in self.chain(first, self.next_small)]
        return [place for start, length in pieces for place in range(start, start + length)][:size]


def main():
    path, code, seconds = sys.argv[1:]
    with open(path, "rb") as stream:
        data = bytearray(stream.read())
    places = CompoundFile(data).places(SUMMARY)
    summary = bytes(data[place] for place in places)

    def put(at, value):
        for place, byte in zip(places[at:at + len(value)], value):
            data[place] = byte

    start = struct.unpack_from("<I", summary, 44)[0]
    _, count = struct.unpack_from("<II", summary, start)
    # Windows counts tenths of microseconds from 1601 on.
    time = struct.pack("<Q", (int(seconds) + 11644473600) * 10000000)
    stamped = set()
    for number in range(count):
        key, offset = struct.unpack_from("<II", summary, start + 8 + 8 * number)
        kind, length = struct.unpack_from("<II", summary, start + offset)
        if key == CODE and kind == TEXT and length >= len(code) + 1:
            put(start + offset + 8, code.encode())
        elif key in (CREATED, SAVED) and kind == TIME:
            put(start + offset + 4, time)
        else:
            continue
        stamped.add(key)
    if stamped != {CODE, CREATED, SAVED}:
        raise SystemExit(f"{path}: the summary has not what should be replaced: only {stamped}")
    with open(path, "wb") as stream:
        stream.write(data)


main()
