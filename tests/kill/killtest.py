#!/usr/bin/env python3
"""Kills the program at random moments and looks whether any picture suffered.

Works on copies of the GIF files of a folder. After every kill -9 each file must be whole, the original or a
smaller one of the same screen and frames, and the backup of a changed file must be the original to the byte.

    tests/kill/killtest.py --program build/linux/term/parvigif --kills 200 FOLDER
"""
import argparse
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time


def read_gif(data):
    """(screen width, screen height, number of frames) of a GIF that is whole to the last byte, else None."""
    def skip_sub_blocks(at):
        while data[at]:
            at += 1 + data[at]
        return at + 1

    def table_size(flags):
        return 3 * (2 << (flags & 7)) if flags & 0x80 else 0

    try:
        if data[:6] not in (b"GIF87a", b"GIF89a"):
            return None
        at, frames = 13 + table_size(data[10]), 0
        while data[at] != 0x3B:
            if data[at] == 0x21:
                at = skip_sub_blocks(at + 2)
            elif data[at] == 0x2C:
                at = skip_sub_blocks(at + 11 + table_size(data[at + 9]))
                frames += 1
            else:
                return None
        whole = at + 1 == len(data)
    except IndexError:
        return None
    return (data[6:8], data[8:10], frames) if whole else None


class Trial:
    def __init__(self, program, originals, folder):
        self.program = program
        self.originals = originals
        self.pictures = folder / "pictures"
        self.pictures.mkdir()
        own = {name: str(folder / name) for name in ("machine", "user", "state", "tmp")}
        os.mkdir(own["tmp"])
        self.environment = dict(os.environ, XDG_CONFIG_DIRS=own["machine"], XDG_CONFIG_HOME=own["user"],
                                XDG_STATE_HOME=own["state"], TMPDIR=own["tmp"])
        self.changed = 0

    def restore(self):
        for name, data in self.originals.items():
            path = self.pictures / name
            if not path.exists() or path.read_bytes() != data:
                path.write_bytes(data)
            path.with_name(name + ".BAK").unlink(missing_ok=True)

    def start(self):
        names = random.sample(sorted(self.originals), len(self.originals))
        return subprocess.Popen([self.program, "-q", "--", *names], cwd=self.pictures, env=self.environment,
                                stderr=subprocess.DEVNULL)

    def check(self):
        """A list of complaints about the files as they stand."""
        complaints = []
        for path in sorted(self.pictures.iterdir()):
            data = path.read_bytes()
            if path.suffix == ".BAK":
                if data != self.originals[path.stem]:
                    complaints.append(f"{path.name} is not the original")
            elif path.name in self.originals:
                complaints += self.check_picture(path, data)
            elif not (path.name.startswith(".parvigif-") and path.suffix == ".tmp"):
                complaints.append(f"{path.name} came from nowhere")
        missing = set(self.originals) - set(os.listdir(self.pictures))
        return complaints + [f"{name} is gone" for name in missing]

    def check_picture(self, path, data):
        original = self.originals[path.name]
        if data == original:
            return []
        self.changed += 1
        complaints = []
        # An original may have bytes behind its end, which this reader does not call whole.
        if read_gif(data) is None or read_gif(data) != (read_gif(original) or read_gif(data)):
            complaints.append(f"{path.name} is damaged")
        if len(data) >= len(original):
            complaints.append(f"{path.name} is not smaller")
        if not path.with_name(path.name + ".BAK").exists():
            complaints.append(f"{path.name} changed without a backup")
        return complaints


def run_kills(trial, wanted, whole_run, longest):
    """Kills the program while it works, wanted times; ends the script at the first complaint.

    How long a whole run takes changes with what else the machine does, so the guess follows."""
    kills = 0
    while kills < wanted:
        trial.restore()
        started = time.monotonic()
        process = trial.start()
        try:
            process.wait(timeout=random.uniform(0, min(whole_run, longest)))
            whole_run = time.monotonic() - started
        except subprocess.TimeoutExpired:
            process.kill()
            kills += process.wait() == -signal.SIGKILL
            whole_run *= 1.05
        if complaints := trial.check():
            sys.exit("\n".join([f"after kill {kills}:", *complaints]))


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--program", required=True, type=os.path.abspath)
    arguments.add_argument("--kills", type=int, default=200)
    arguments.add_argument("--longest", type=float, default=3.0, metavar="SECONDS", help="of a run, at most")
    arguments.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    arguments.add_argument("folder", type=pathlib.Path)
    options = arguments.parse_args()
    random.seed(options.seed)

    originals = {path.name: path.read_bytes() for path in options.folder.glob("*.gif")}
    with tempfile.TemporaryDirectory(prefix="parvigif-kill-") as folder:
        trial = Trial(options.program, originals, pathlib.Path(folder))
        trial.restore()
        started = time.monotonic()
        trial.start().wait()
        whole_run = time.monotonic() - started
        if complaints := trial.check():
            sys.exit("\n".join(["without any kill:", *complaints]))

        run_kills(trial, options.kills, whole_run, options.longest)
        trial.restore()
        trial.start().wait()
        if left := [name for name in os.listdir(trial.pictures) if name.endswith(".tmp")]:
            sys.exit(f"left behind for good: {left}")
    print(f"{options.kills} kills over {len(originals)} files (seed {options.seed}): {trial.changed} changed files"
          " looked at, all whole, all with their backups")


if __name__ == "__main__":
    main()
