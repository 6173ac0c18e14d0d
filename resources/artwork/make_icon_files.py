#!/usr/bin/env python3
"""Packs the icons into the files for macOS and Windows: python3 resources/artwork/make_icon_files.py

Both file formats contain unchanged PNGs. An icns file: "icns", the size of the file, then for each picture a type that
encodes its size, the length of the entry and the PNG, big-endian. An ico file: a directory and the PNGs, little-endian.
"""

import struct
from pathlib import Path

RESOURCES = Path(__file__).resolve().parent.parent
ICNS_TYPES = {16: b"icp4", 32: b"icp5", 128: b"ic07", 256: b"ic08"}
ICO_SIZES = (16, 32, 48, 256)


def icns(pictures):
    pieces = b"".join(kind + struct.pack(">I", 8 + len(pictures[size])) + pictures[size]
                      for size, kind in ICNS_TYPES.items())
    return b"icns" + struct.pack(">I", 8 + len(pieces)) + pieces


def ico(pictures):
    directory = struct.pack("<HHH", 0, 1, len(ICO_SIZES))
    place = len(directory) + 16 * len(ICO_SIZES)
    for size in ICO_SIZES:
        # 256 is written as 0; no palette, one plane, 32 bits per pixel.
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(pictures[size]), place)
        place += len(pictures[size])
    return directory + b"".join(pictures[size] for size in ICO_SIZES)


def main():
    for name in ("zebmaker", "video-x-zeb"):
        pictures = {size: (RESOURCES / "desktop" / "icons" / f"{name}-{size}.png").read_bytes()
                    for size in {*ICNS_TYPES, *ICO_SIZES}}
        (RESOURCES / "macos" / f"{name}.icns").write_bytes(icns(pictures))
        (RESOURCES / "windows" / f"{name}.ico").write_bytes(ico(pictures))


if __name__ == "__main__":
    main()
