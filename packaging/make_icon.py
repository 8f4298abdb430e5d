#!/usr/bin/env python3
"""Draws murlconv.ico: a sheet with lines of text, and an arrow that leads out of it.

    packaging/make_icon.py packaging/murlconv.ico

Shapes are polygons on a field of 32 by 32; each pixel of each size is the mean of 64 samples.
"""
import struct
import sys

SIZES = (16, 32, 48)
SAMPLES = 8

SHEET = [(4, 1), (19, 1), (26, 8), (26, 31), (4, 31)]
SHEET_EDGE = [(3, 0), (19.5, 0), (27, 7.5), (27, 32), (3, 32)]
FOLD = [(19, 1), (26, 8), (19, 8)]
LINES = [[(7, y), (x, y), (x, y + 2), (7, y + 2)] for y, x in ((6, 16), (11, 22), (26, 22))]
ARROW_EDGE = [(8, 16), (20, 16), (20, 11), (32, 19), (20, 27), (20, 22), (8, 22)]
ARROW = [(9, 17), (21, 17), (21, 13), (30, 19), (21, 25), (21, 21), (9, 21)]

# Painted one over the other: polygon, red, green, blue.
SHAPES = [
    (SHEET_EDGE, (52, 73, 94)),
    (SHEET, (250, 250, 246)),
    (FOLD, (170, 184, 196)),
    *[(line, (120, 140, 160)) for line in LINES],
    (ARROW_EDGE, (250, 250, 246)),
    (ARROW, (214, 96, 38)),
]


def inside(polygon, x, y):
    result = False
    for (x1, y1), (x2, y2) in zip(polygon, polygon[1:] + polygon[:1]):
        if (y1 > y) != (y2 > y) and x < x1 + (y - y1) / (y2 - y1) * (x2 - x1):
            result = not result
    return result


def sample(x, y):
    color = None
    for polygon, paint in SHAPES:
        if inside(polygon, x, y):
            color = paint
    return color


def pixel(size, column, row):
    """Blue, green, red and opacity of one pixel."""
    step = 32 / size / SAMPLES
    hits = [
        color
        for i in range(SAMPLES)
        for j in range(SAMPLES)
        if (color := sample((column * SAMPLES + i + 0.5) * step, (row * SAMPLES + j + 0.5) * step))
    ]
    if not hits:
        return bytes(4)
    red, green, blue = (round(sum(hit[k] for hit in hits) / len(hits)) for k in range(3))
    return bytes((blue, green, red, round(255 * len(hits) / SAMPLES**2)))


def image(size):
    """One icon image: bitmap header, rows from the bottom up, and a mask that hides nothing."""
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    rows = b"".join(pixel(size, column, row) for row in reversed(range(size)) for column in range(size))
    mask = bytes((size + 31) // 32 * 4 * size)
    return header + rows + mask


def main():
    images = [image(size) for size in SIZES]
    place = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, data in zip(SIZES, images):
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(data), place)
        place += len(data)
    with open(sys.argv[1], "wb") as file:
        file.write(directory + b"".join(images))


main()
