#!/usr/bin/env python3
"""Shows how parvigif's time and memory grow with the work: more frames, and more pixels a frame.

    bench/growth.py PARVIGIF [ROUNDS]

Draws animations of a texture with a box that moves over it: 10 to 1,000 frames of one size, with the texture at
rest and scrolling, and 10 frames of 0.1 to 16 million pixels, at rest. Prints the least processor time of ROUNDS (3)
runs, the time per pixel, and the factor from each step to the next, scaled to a doubling of the work: 2 where time
grows with the work, less where something fixed still counts.
"""

import math
import os
import sys
import tempfile
from pathlib import Path

from againstgifsicle import measure_peak, measure_seconds

COLOURS = 128
PIECE = 126  # codes of one byte each: a clear code before the table grows beyond them


def image_data(pixels):
    """LZW data without any compression, which needs no encoder: every pixel is a code of 8 bits."""
    codes = b"".join(b"\x80" + pixels[i : i + PIECE] for i in range(0, len(pixels), PIECE)) + b"\x81"
    blocks = (codes[i : i + 255] for i in range(0, len(codes), 255))
    return b"\x07" + b"".join(bytes([len(block)]) + block for block in blocks) + b"\x00"


def frame(background, width, height, number):
    """The background with a box on it, a quarter as wide and high."""
    pixels = bytearray(background)
    box_width, box_height = width // 4, height // 4
    left, top = number * 7 % (width - box_width), number * 5 % (height - box_height)
    for y in range(top, top + box_height):
        pixels[y * width + left : y * width + left + box_width] = bytes([number % COLOURS]) * box_width
    return bytes(pixels)


def word(number):
    return number.to_bytes(2, "little")


def write_animation(path, width, height, frames, scroll):
    row = bytes((x * x // 64 + x % 5) % COLOURS for x in range(width))
    texture = b"".join(row[y % 61 :] + row[: y % 61] for y in range(height + 61))
    with open(path, "wb") as file:
        file.write(b"GIF89a" + word(width) + word(height) + b"\xe6\0\0")
        file.write(b"".join(bytes([2 * i, 255 - 2 * i, i * 37 % 256]) for i in range(COLOURS)))
        for number in range(frames):
            file.write(b"\x21\xf9\x04\x04" + word(5) + b"\0\0\x2c" + word(0) * 2 + word(width) + word(height) + b"\0")
            top = number * scroll % 61 * width
            file.write(image_data(frame(texture[top : top + width * height], width, height, number)))
        file.write(b";")


def run(program, work, width, height, frames, scroll, rounds):
    """Least processor seconds, and peak bytes."""
    path = os.path.join(work, "growing.gif")
    environment = dict(os.environ, XDG_CONFIG_DIRS=work, XDG_CONFIG_HOME=work, XDG_STATE_HOME=work, TMPDIR=work)
    command = [program, "-q", "--again", "--no-backup", path]
    seconds = []
    for _ in range(rounds):
        write_animation(path, width, height, frames, scroll)
        seconds.append(measure_seconds(command, environment))
    write_animation(path, width, height, frames, scroll)
    return min(seconds), measure_peak(command, environment, work) * 1024


def series(title, program, work, sizes, scroll, rounds):
    print(f"{title:24} seconds  ns/pixel  bytes/pixel  factor a doubling")
    last = None
    for width, height, frames in sizes:
        pixels = width * height * frames
        seconds, memory = run(program, work, width, height, frames, scroll, rounds)
        factor = ""
        if last:
            factor = f"{2 ** (math.log(seconds / last[1]) / math.log(pixels / last[0])):.2f}"
        name = f"{frames} x {width} x {height}"
        print(f"{name:24} {seconds:7.3f}  {seconds * 1e9 / pixels:8.1f}  {memory / pixels:11.2f}  {factor:>17}")
        last = (pixels, seconds)


def main():
    program = os.path.realpath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    memory_disk = "/dev/shm" if os.path.isdir("/dev/shm") else None
    with tempfile.TemporaryDirectory(dir=memory_disk) as work:
        counts = [(320, 240, n) for n in (10, 30, 100, 300, 1000)]
        series("more frames", program, work, counts, 0, rounds)
        series("more that scroll", program, work, counts, 3, rounds)
        sides = [(400, 250), (800, 500), (1600, 1000), (3200, 2000), (5000, 3200)]
        series("more pixels", program, work, [(w, h, 10) for w, h in sides], 0, rounds)


if __name__ == "__main__":
    main()
