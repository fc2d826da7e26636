#!/usr/bin/env python3
"""How small files get and how they look then, beside gifsicle, as a table and a scatter plot.

    bench/quality/quality.py PARVIGIF LOOKOF FOLDER [--svg OUT.svg] [--lossless] [OPTION...]

Runs PARVIGIF with the OPTIONs over a copy of the folder, gifsicle at four settings from lossless to lossy,
measures all of it with LOOKOF (bench/quality/lookof.cpp), and prints a line for each file and the totals.
"Equal look" is our bytes over those gifsicle needs for the same mean similarity, interpolated between its
settings. With --lossless only "gifsicle -O3" is set beside ours, and no displayed pixel may differ.
"""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
from html import escape
from pathlib import Path
from typing import NamedTuple

GIFSICLE = [["-O3"], ["-O3", "--colors", "128"], ["-O3", "--colors", "128", "--lossy=30"],
            ["-O3", "--colors", "128", "--lossy=80"]]


class Look(NamedTuple):
    before: int  # bytes
    after: int
    frames: int
    ssim: float  # mean over the displayed frames
    worst_ssim: float
    psnr: float
    worst_psnr: float
    largest: int


class Point(NamedTuple):
    ssim: float  # mean over the files
    bytes: int


def measure(lookof, originals, results):
    """A Look for each file that both folders hold; one that cannot be compared counts as untouched."""
    looks = {}
    for line in subprocess.run([lookof, originals, results], check=True, capture_output=True,
                               text=True).stdout.splitlines():
        name, before, after, *rest = line.split("\t")
        figures = ["1", "1", "1", "99", "99", "0"] if rest[0] == "-" else rest
        looks[name] = Look(int(before), int(after), int(figures[0]), *map(float, figures[1:5]), int(figures[5]))
    return looks


def run_parvigif(program, originals, work, options):
    results = work / "ours"
    shutil.copytree(originals, results)
    environment = dict(os.environ, XDG_CONFIG_DIRS=str(work), XDG_CONFIG_HOME=str(work), XDG_STATE_HOME=str(work))
    command = [program, "-q", "--no-backup", "--no-log", *options, f"{results}/"]
    subprocess.run(command, env=environment, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, check=False)
    return results


def run_gifsicle(options, originals, work):
    results = work / "gifsicle"
    shutil.rmtree(results, ignore_errors=True)
    results.mkdir()
    for path in originals.glob("*.gif"):
        command = ["gifsicle", *options, path, "-o", results / path.name]
        if subprocess.run(command, stderr=subprocess.DEVNULL, check=False).returncode != 0:
            shutil.copyfile(path, results / path.name)
    return results


def total(looks):
    return Point(statistics.mean(look.ssim for look in looks.values()), sum(look.after for look in looks.values()))


def interpolate(points, ssim):
    """Bytes on the line through the points at a similarity; beyond its ends those of the end."""
    points = sorted(points)
    if ssim <= points[0].ssim:
        return points[0].bytes
    for low, high in zip(points, points[1:]):
        if low.ssim <= ssim <= high.ssim and high.ssim > low.ssim:
            return low.bytes + (high.bytes - low.bytes) * (ssim - low.ssim) / (high.ssim - low.ssim)
    return points[-1].bytes


def saving(look):
    return 100 * (1 - look.after / look.before)


def print_files(looks):
    print(f"{'file':44}   before    after  saved     SSIM    worst     PSNR    worst  largest")
    for name, look in sorted(looks.items()):
        print(f"{name[:44]:44} {look.before:8} {look.after:8} {saving(look):5.1f}% {look.ssim:8.4f} "
              f"{look.worst_ssim:8.4f} {look.psnr:8.2f} {look.worst_psnr:8.2f} {look.largest:8}")


def print_totals(looks):
    before = sum(look.before for look in looks.values())
    ssim, after = total(looks)
    worst = min(looks, key=lambda name: looks[name].ssim)
    savings = [saving(look) for look in looks.values()]
    print(f"\n{len(looks)} files, {before} to {after} bytes ({100 * after / before:.1f} %); "
          f"saved in the median {statistics.median(savings):.1f} %, mean {statistics.mean(savings):.1f} %")
    print(f"mean SSIM {ssim:.5f}, mean PSNR {statistics.mean(look.psnr for look in looks.values()):.1f} dB; "
          f"worst file {worst}: {looks[worst].ssim:.4f}")


def compare_lossy(ours, theirs):
    points = [total(looks) for looks in theirs]
    for options, point in zip(GIFSICLE, points):
        print(f"gifsicle {' '.join(options):28} {point.bytes:9} bytes, mean SSIM {point.ssim:.5f}")
    mine = total(ours)
    print(f"equal look: {mine.bytes / interpolate(points, mine.ssim):.4f}")
    print("\nmore than 10 % larger than gifsicle at the same look of the file:")
    for name, look in sorted(ours.items()):
        other = interpolate([Point(looks[name].ssim, looks[name].after) for looks in theirs], look.ssim)
        if look.after > 1.1 * other:
            print(f"  {name:60} {look.after:8} {other:10.0f} {look.after / other:6.2f}")


def compare_lossless(ours, theirs):
    mine, other = total(ours).bytes, total(theirs).bytes
    smaller = sum(ours[name].after <= theirs[name].after for name in ours)
    print(f"gifsicle -O3 {other} bytes; ours {mine / other:.4f} of it, smaller or equal on {smaller} of {len(ours)}")
    for name, look in ours.items():
        if look.largest > 0 or look.ssim < 1 or look.after > look.before:
            print(f"  WRONG: {name} changed or grew")


def write_plot(path, looks):
    """Saving against SSIM, the file's name as a tooltip. The SSIM axis is stretched towards 1."""
    width, height, margin = 760, 480, 60
    worst = min(0.9, min(look.ssim for look in looks.values()))

    def place(look):
        x = margin + (width - 2 * margin) * max(saving(look), 0) / 100
        y = margin + (height - 2 * margin) * ((1 - look.ssim) / (1 - worst)) ** 0.5
        return f"{x:.1f}", f"{y:.1f}"

    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
             'font-size="12">', f'<rect width="{width}" height="{height}" fill="white"/>']
    for percent in range(0, 101, 20):
        x = margin + (width - 2 * margin) * percent / 100
        lines.append(f'<path d="M{x:.1f} {margin}V{height - margin}" stroke="#ddd"/>'
                     f'<text x="{x:.1f}" y="{height - margin + 18}" text-anchor="middle">{percent} %</text>')
    for ssim in (1.0, 0.999, 0.99, 0.97, 0.95, 0.9):
        y = margin + (height - 2 * margin) * ((1 - ssim) / (1 - worst)) ** 0.5
        lines.append(f'<path d="M{margin} {y:.1f}H{width - margin}" stroke="#ddd"/>'
                     f'<text x="{margin - 6}" y="{y + 4:.1f}" text-anchor="end">{ssim:g}</text>')
    for name, look in sorted(looks.items()):
        x, y = place(look)
        lines.append(f'<circle cx="{x}" cy="{y}" r="4" fill="#2563eb" fill-opacity="0.5">'
                     f"<title>{escape(name)}: {saving(look):.1f} %, {look.ssim:.4f}</title></circle>")
    lines += [f'<text x="{width / 2}" y="{height - 12}" text-anchor="middle">bytes saved</text>',
              f'<text x="{margin}" y="{margin - 16}" text-anchor="middle">SSIM</text>', "</svg>"]
    Path(path).write_text("\n".join(lines) + "\n", encoding="utf-8")


def main():
    arguments = sys.argv[1:]
    plot = None
    if "--svg" in arguments:
        at = arguments.index("--svg")
        plot = arguments[at + 1]
        del arguments[at:at + 2]
    if len(arguments) < 3:
        sys.exit(__doc__)
    program, lookof = (os.path.realpath(path) for path in arguments[:2])
    options = arguments[3:]
    with tempfile.TemporaryDirectory() as folder:
        work = Path(folder)
        originals = work / "originals"
        originals.mkdir()
        for path in Path(arguments[2]).glob("*.gif"):
            shutil.copyfile(path, originals / path.name)  # whatever its permissions are
        ours = measure(lookof, originals, run_parvigif(program, originals, work, options))
        is_lossless = "--lossless" in options
        theirs = [measure(lookof, originals, run_gifsicle(settings, originals, work))
                  for settings in (GIFSICLE[:1] if is_lossless else GIFSICLE)]
    print_files(ours)
    print_totals(ours)
    if is_lossless:
        compare_lossless(ours, theirs[0])
    else:
        compare_lossy(ours, theirs)
    if plot:
        write_plot(plot, ours)


if __name__ == "__main__":
    main()
