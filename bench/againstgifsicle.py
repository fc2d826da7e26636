#!/usr/bin/env python3
"""Times parvigif beside "gifsicle -O3 --colors 128" over folders of GIFs, one process a file for both.

    bench/againstgifsicle.py [-n ROUNDS] PARVIGIF FOLDER...

Every file is processed by one, then at once by the other, so that a change in the machine's speed hits both; of ROUNDS
(2) such pairs the least time of each counts. Time is that of the processor, user and system, of the whole process.
Both work on copies, on a RAM disk if there is one; parvigif keeps no backups and no log. Prints a line for each file
and, for each folder, the worst ten, the peak memory of the ten largest and the ten smallest, the ratio of the totals
and that of the median file. Needs gifsicle and GNU time.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
from pathlib import Path
from typing import NamedTuple


def measure_seconds(command, environment):
    """Of user and system time."""
    null = os.open(os.devnull, os.O_RDWR)
    streams = [(os.POSIX_SPAWN_DUP2, null, stream) for stream in (0, 1, 2)]
    process = os.posix_spawn(command[0], command, environment, file_actions=streams)
    os.close(null)
    _, _, usage = os.wait4(process, 0)
    return usage.ru_utime + usage.ru_stime


def measure_peak(command, environment, work):
    """KiB. A process's peak begins with that of its parent, which is larger here than that of many a run."""
    peak = Path(work) / "peak"
    timed = ["time", "-q", "-f", "%M", "-o", str(peak), *command]
    subprocess.run(timed, env=environment, check=False, capture_output=True)
    return int(peak.read_text())


class Sides:
    """The two programs at work on a copy of a file."""

    def __init__(self, program, work):
        self.work = Path(work)
        self.source, self.ours, self.theirs = (self.work / name for name in ("source.gif", "ours.gif", "theirs.gif"))
        self.environment = dict(
            os.environ, XDG_CONFIG_DIRS=work, XDG_CONFIG_HOME=work, XDG_STATE_HOME=work, TMPDIR=work
        )
        self.commands = (
            [program, "-q", "--again", "--no-backup", "--no-log", str(self.ours)],
            [shutil.which("gifsicle"), "-O3", "--colors", "128", str(self.source), "-o", str(self.theirs)],
        )

    def take(self, original):
        shutil.copyfile(original, self.source)
        self.theirs.unlink(missing_ok=True)

    def seconds(self, command):
        if str(self.ours) in command:  # which it replaces
            shutil.copyfile(self.source, self.ours)
        return measure_seconds(command, self.environment)

    def peak(self, command):
        shutil.copyfile(self.source, self.ours)
        return measure_peak(command, self.environment, self.work)

    def sizes(self):
        return [path.stat().st_size if path.exists() else 0 for path in (self.ours, self.theirs)]


class File(NamedTuple):
    path: Path
    size: int
    seconds: list  # ours and theirs
    sizes: list

    @property
    def ratio(self):
        return self.seconds[0] / self.seconds[1]


def measure(sides, path, rounds):
    sides.take(path)
    runs = [[sides.seconds(command) for command in sides.commands] for _ in range(rounds)]
    return File(path, path.stat().st_size, [min(column) for column in zip(*runs)], sides.sizes())


def print_times(files):
    for file in files:
        ours, theirs = file.seconds
        print(f"{file.path.name[:50]:50} {file.size:9} {ours:9.4f} {theirs:9.4f} {file.ratio:6.2f}")


def print_peaks(sides, files):
    for file in files:
        sides.take(file.path)
        ours, theirs = (sides.peak(command) / 1024 for command in sides.commands)
        print(f"{file.path.name[:50]:50} {file.size:9} {ours:9.1f} {theirs:9.1f} {ours / theirs:6.2f}")


def print_folder(sides, folder, rounds):
    files = [measure(sides, path, rounds) for path in sorted(folder.glob("*.gif"))]
    print(f"{folder.name:50} {'bytes':>9} {'seconds':>9} {'gifsicle':>9} {'ratio':>6}")
    print_times(files)
    print("\nworst ten")
    print_times(sorted(files, key=lambda file: -file.ratio)[:10])
    print("\npeak memory in MiB, ten largest and ten smallest")
    by_size = sorted(files, key=lambda file: -file.size)
    print_peaks(sides, by_size[:10] + by_size[10:][-10:])
    seconds, size = ([sum(side) for side in zip(*column)] for column in zip(*((f.seconds, f.sizes) for f in files)))
    print(f"\n{folder.name}: {len(files)} files, least of {rounds}, {seconds[0]:.2f} s beside {seconds[1]:.2f}")
    print(f"ratio {seconds[0] / seconds[1]:.2f}, median file {statistics.median(f.ratio for f in files):.2f}")
    print(f"{size[0]} bytes beside {size[1]}, {size[0] / size[1]:.3f}\n", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-n", dest="rounds", type=int, default=2)
    parser.add_argument("program", type=os.path.realpath)
    parser.add_argument("folders", metavar="folder", type=Path, nargs="+")
    options = parser.parse_args()
    memory_disk = "/dev/shm" if os.path.isdir("/dev/shm") else None
    with tempfile.TemporaryDirectory(dir=memory_disk) as work:
        for folder in options.folders:
            print_folder(Sides(options.program, work), folder, options.rounds)


if __name__ == "__main__":
    main()
