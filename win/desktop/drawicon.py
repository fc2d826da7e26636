#!/usr/bin/env python3
"""Draws the program's icon: a small picture that two arrows press together.

drawicon.py                    writes parvigif.ico beside this file
drawicon.py --check            fails unless that file is what would be written
drawicon.py --png SIZE FILE    writes it as a PNG file
"""
import os
import struct
import sys
import zlib

SIZES = (16, 20, 24, 32, 48, 64)
SAMPLES = 6  # per pixel and direction

BLUE, DEEP, WHITE = (38, 120, 190), (22, 84, 150), (255, 255, 255)
SKY, SUN, HILL, MEADOW = (186, 226, 252), (255, 196, 46), (72, 160, 84), (44, 124, 66)


def in_rounded_box(x, y, left, top, right, bottom, radius):
    dx = max(left + radius - x, x - (right - radius), 0)
    dy = max(top + radius - y, y - (bottom - radius), 0)
    return left <= x <= right and top <= y <= bottom and dx * dx + dy * dy <= radius * radius


def in_circle(x, y, h, v, radius):
    return (x - h) ** 2 + (y - v) ** 2 <= radius * radius


def colour_at(x, y):
    """The colour at a point of the unit square, None outside the drawing."""
    if not in_rounded_box(x, y, 0.02, 0.02, 0.98, 0.98, 0.2):
        return None
    if in_rounded_box(x, y, 0.31, 0.19, 0.69, 0.81, 0.05):
        if not in_rounded_box(x, y, 0.36, 0.24, 0.64, 0.76, 0.02):
            return WHITE
        if in_circle(x, y, 0.45, 1.02, 0.40):
            return HILL
        if in_circle(x, y, 0.72, 1.12, 0.44):
            return MEADOW
        return SUN if in_circle(x, y, 0.53, 0.38, 0.085) else SKY
    # The arrows are equal but for the side.
    from_edge = min(x, 1 - x) - 0.08
    if 0 <= from_edge <= 0.19 and abs(y - 0.5) <= (0.19 - from_edge) * 1.05:
        return WHITE
    return BLUE if y < 0.5 else tuple(round(a + (b - a) * (y - 0.5) * 2) for a, b in zip(BLUE, DEEP))


def draw(size):
    """Rows of (blue, green, red, alpha), top row first."""
    rows = []
    for v in range(size):
        row = []
        for h in range(size):
            points = [((h + (i + 0.5) / SAMPLES) / size, (v + (j + 0.5) / SAMPLES) / size)
                      for i in range(SAMPLES) for j in range(SAMPLES)]
            colours = [c for c in (colour_at(*point) for point in points) if c]
            if not colours:
                row.append((0, 0, 0, 0))
                continue
            red, green, blue = (round(sum(c[i] for c in colours) / len(colours)) for i in range(3))
            row.append((blue, green, red, round(255 * len(colours) / len(points))))
        rows.append(row)
    return rows


def make_image(size):
    """A bitmap as icons hold it: bottom row first, with a mask of the transparent pixels behind it."""
    rows = draw(size)[::-1]
    header = struct.pack('<IiiHHIIiiII', 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b''.join(bytes(pixel) for row in rows for pixel in row)
    mask_bytes = (size + 31) // 32 * 4
    mask = b''.join(int(''.join('0' if pixel[3] else '1' for pixel in row).ljust(8 * mask_bytes, '0'), 2)
                    .to_bytes(mask_bytes, 'big') for row in rows)
    return header + pixels + mask


def make_icon():
    images = [make_image(size) for size in SIZES]
    entries, offset = b'', 6 + 16 * len(images)
    for size, image in zip(SIZES, images):
        entries += struct.pack('<BBBBHHII', size, size, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    return struct.pack('<HHH', 0, 1, len(images)) + entries + b''.join(images)


def make_png(size):
    def chunk(kind, data):
        return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))

    rows = b''.join(b'\0' + bytes(byte for blue, green, red, alpha in row for byte in (red, green, blue, alpha))
                    for row in draw(size))
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', size, size, 8, 6, 0, 0, 0)) +
            chunk(b'IDAT', zlib.compress(rows, 9)) + chunk(b'IEND', b''))


def main():
    if sys.argv[1:2] == ['--png']:
        with open(sys.argv[3], 'wb') as file:
            file.write(make_png(int(sys.argv[2])))
        return 0
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'parvigif.ico')
    icon = make_icon()
    if sys.argv[1:] == ['--check']:
        with open(path, 'rb') as file:
            return 0 if file.read() == icon else 'win/desktop/parvigif.ico: draw it again with win/desktop/drawicon.py'
    with open(path, 'wb') as file:
        file.write(icon)
    return 0


if __name__ == '__main__':
    sys.exit(main())
