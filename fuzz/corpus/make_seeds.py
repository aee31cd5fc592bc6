#!/usr/bin/env python3
"""Writes the seed inputs of archive_fuzz into corpus/archive/.

Each input is one mode byte (0: list record, 1: coordinate record, 2: region,
list and coordinate records in one stream) followed by little-endian records
as the archive writes them. Run from anywhere; the files are committed.
"""
import os
import struct

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "archive")


def region(x1, y1, x2, y2, valid=1, version=1):
    return struct.pack("<i4di", version, x1, y1, x2, y2, valid)


def db(regions, header=0x80000001, count=None):
    n = len(regions) if count is None else count
    wide = header & 0x80000000
    body = struct.pack("<I", header) + struct.pack("<q" if wide else "<i", n)
    return body + b"".join(regions)


def coords(unit=0, zoom=1.0, vx=0.0, vy=0.0, gx=100.0, gy=100.0, sx=25.0, sy=25.0,
           r1=0.0, r2=0.0, snap=1, version=1):
    return struct.pack("<ii9di", version, unit, zoom, vx, vy, gx, gy, sx, sy, r1, r2, snap)


SEEDS = {
    "list_three": b"\x00" + db([region(0, 0, 1, 1), region(2, 2, 3, 3, valid=0),
                                region(5, 4, -1, 2)]),
    "list_narrow_count": b"\x00" + db([region(0, 0, 2, 2)], header=1),
    "list_huge_count": b"\x00" + db([region(0, 0, 2, 2)], count=1 << 62),
    "list_old_element": b"\x00" + db([struct.pack("<i", 0), region(1, 1, 4, 4)], count=2),
    "coords_default": b"\x01" + coords(),
    "coords_mil": b"\x01" + coords(unit=2, zoom=0.125, vx=-3.5, vy=1e300, snap=0),
    "coords_old": b"\x01" + struct.pack("<i", 0) + coords(),
    "all_three": b"\x02" + region(1, 2, 3, 4) + db([region(0, 0, 9, 9)]) + coords(unit=3),
}

if __name__ == "__main__":
    os.makedirs(HERE, exist_ok=True)
    for name, data in SEEDS.items():
        with open(os.path.join(HERE, name), "wb") as f:
            f.write(data)
