#!/usr/bin/env python3
"""Times parvigif beside "gifsicle -O3 --colors 128" over a folder of GIFs, one process a file for both.

    bench/againstgifsicle.py PARVIGIF FOLDER [ROUNDS]

Every file is processed by one, then at once by the other, so that a change in the machine's speed hits both; of ROUNDS
(3) such pairs the least time of each counts. Prints a line with each file's processor seconds and peak memory, totals
with wall seconds, and the files that are furthest off. Figures are those of the whole process; both work on copies,
on a RAM disk if there is one, with backups and log. Needs gifsicle and GNU time.
"""

import os
import shutil
import sys
import tempfile
import time
from pathlib import Path


def measure(command, environment):
    """Runs a command; wall seconds, processor seconds and peak KiB of its process.

    GNU time starts it: the peak of a process begins with that of the one that started it, and this one's is
    larger than that of many a run."""
    peak = os.path.join(environment["TMPDIR"], "peak")
    start = time.perf_counter()
    pid = os.fork()
    if pid == 0:
        null = os.open(os.devnull, os.O_RDWR)
        for stream in (0, 1, 2):
            os.dup2(null, stream)
        os.execvpe("time", ["time", "-q", "-f", "%M", "-o", peak, *command], environment)
    _, _, usage = os.wait4(pid, 0)
    return time.perf_counter() - start, usage.ru_utime + usage.ru_stime, int(Path(peak).read_text())


def least(results):
    return tuple(min(column) for column in zip(*results))


def compare(program, original, work, rounds):
    environment = dict(os.environ, XDG_CONFIG_DIRS=work, XDG_CONFIG_HOME=work, XDG_STATE_HOME=work, TMPDIR=work)
    ours_path = os.path.join(work, "ours.gif")
    theirs_path = os.path.join(work, "theirs.gif")
    ours, theirs = [], []
    for _ in range(rounds):
        shutil.copyfile(original, ours_path)
        Path(ours_path + ".BAK").unlink(missing_ok=True)
        ours.append(measure([program, "-q", ours_path], environment))
        gifsicle = ["gifsicle", "-O3", "--colors", "128", str(original), "-o", theirs_path]
        theirs.append(measure(gifsicle, environment))
    sizes = [os.path.getsize(path) if os.path.exists(path) else 0 for path in (ours_path, theirs_path)]
    return least(ours), least(theirs), sizes


def main():
    program, folder = os.path.realpath(sys.argv[1]), Path(sys.argv[2])
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    memory_disk = "/dev/shm" if os.path.isdir("/dev/shm") else None
    rows = []
    with tempfile.TemporaryDirectory(dir=memory_disk) as work:
        for path in sorted(folder.glob("*.gif")):
            copy = Path(work) / "original.gif"
            shutil.copyfile(path, copy)
            rows.append((path.name, path.stat().st_size, *compare(program, copy, work, rounds)))

    print(f"{'file':40} {'seconds':>8} {'gifsicle':>8} {'ratio':>6} {'MiB':>7} {'gifsicle':>8} {'ratio':>6}")
    for name, _, ours, theirs, _ in rows:
        print(
            f"{name[:40]:40} {ours[1]:8.3f} {theirs[1]:8.3f} {ours[1] / max(theirs[1], 1e-3):6.2f} "
            f"{ours[2] / 1024:7.1f} {theirs[2] / 1024:8.1f} {ours[2] / theirs[2]:6.2f}"
        )
    print()

    def total(side, field):
        return sum(row[side][field] for row in rows)

    print(f"{len(rows)} files, least of {rounds} runs each    parvigif  gifsicle  ratio")
    for name, field in (("wall s", 0), ("processor s", 1)):
        print(f"{name:34} {total(2, field):9.2f} {total(3, field):9.2f} {total(2, field) / total(3, field):6.2f}")
    print(f"{'bytes':34} {total(4, 0):9} {total(4, 1):9} {total(4, 0) / total(4, 1):6.2f}")
    print("\nmost processor seconds beyond gifsicle's")
    for row in sorted(rows, key=lambda row: row[3][1] - row[2][1])[:10]:
        print(f"{row[0][:34]:34} {row[2][1]:9.3f} {row[3][1]:9.3f} {row[2][1] / max(row[3][1], 1e-3):6.2f}")
    print("\npeak memory in MiB, the ten largest files")
    for row in sorted(rows, key=lambda row: -row[1])[:10]:
        print(f"{row[0][:34]:34} {row[2][2] / 1024:9.1f} {row[3][2] / 1024:9.1f} {row[2][2] / row[3][2]:6.2f}")


if __name__ == "__main__":
    main()
