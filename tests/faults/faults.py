#!/usr/bin/env python3
"""Makes every file-system call and allocation of a run fail in turn, and checks that no picture is lost.

A point is one way of working, one fault and one call. After each point, and again after a run that nothing
disturbs, every picture that anybody had made must be whole under its name or in a backup, and the second run
must leave no temporary file behind.

    tests/faults/faults.py --program build/linux/term/parvigif --shims build/linux/tests samples
    tests/faults/faults.py ... --points 300 --seed 1    a sample of the points
    tests/faults/faults.py ... --slice 2/10             the second of ten parts, each of every kind of point
"""
import argparse
import collections
import concurrent.futures
import errno
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

PICTURE = "cat.gif"
Shape = collections.namedtuple("Shape", "width height delays comments")


def read_gif(data):
    """What identifies a picture that is whole to its trailer: its Shape; else None."""
    def sub_blocks(at):
        text = b""
        while data[at]:
            text += data[at + 1:at + 1 + data[at]]
            at += 1 + data[at]
        return at + 1, text

    def table_size(flags):
        return 3 * (2 << (flags & 7)) if flags & 0x80 else 0

    delays, comments, delay = [], [], 0
    try:
        if data[:6] not in (b"GIF87a", b"GIF89a"):
            return None
        at = 13 + table_size(data[10])
        while data[at] != 0x3B:
            if data[at] == 0x2C:
                at, _ = sub_blocks(at + 11 + table_size(data[at + 9]))
                delays.append(delay)
                delay = 0
                continue
            label = data[at + 1]
            if data[at] != 0x21:
                return None
            at, text = sub_blocks(at + 2)
            if label == 0xF9:
                delay = text[1] | text[2] << 8
            elif label == 0xFE:
                comments.append(text)
    except IndexError:
        return None
    return Shape(data[6:8], data[8:10], tuple(delays), tuple(comments))


class Pictures:
    """The pictures of a trial: the user's, and what another program may make of it or save in its place."""
    def __init__(self, samples):
        self.original = (samples / "ball.gif").read_bytes()
        self.saved = (samples / "tiles.gif").read_bytes()
        self.appended = self.original[:-1] + b"!\xfe\x05hello\x00;"
        at = self.original.index(b"!\xf9\x04") + 4
        self.tweaked = self.original[:at] + bytes([self.original[at] ^ 1]) + self.original[at + 1:]
        self.truncated = self.original[:len(self.original) // 2]


# What another program does to $P, the picture; $D holds the pictures to choose from.
ACTIONS = {
    "saves": 'cat "$D/saved" > "$P"',
    "replaces": 'cp "$D/saved" "$P.new" && mv "$P.new" "$P"',
    "truncates": 'cat "$D/truncated" > "$P"',
    "appends": 'cat "$D/appended" > "$P"',
    "deletes": 'rm "$P"',
    "renames": 'mv "$P" "$P.moved"',
    "links": 'mv "$P" "$P.moved" && cp "$D/saved" "$P.other" && ln -s "$(basename "$P").other" "$P"',
    # only in the original, and keeping size and time
    "tweaks": 'if cmp -s "$P" "$D/original"; then cp -p "$P" "$D/time" && '
              'dd if="$D/tweaked" of="$P" conv=notrunc status=none && touch -r "$D/time" "$P"; fi',
}

MODES = {
    "default": [], "no-backup": ["--no-backup"], "overwrite-backups": ["--overwrite-backups"],
    "keep-times": ["--keep-times"], "min-saving": ["--min-saving=1"], "output": ["-o", "out"],
    "restore": ["--restore"], "lossless": ["--lossless"], "stdin": ["-"], "link": [],
    "sheet": ["--contact-sheet", "sheet.gif"],
}

FAILURES = [errno.EIO, errno.ENOSPC, errno.EACCES, errno.EINTR, errno.EMFILE]


class Trial:
    def __init__(self, options, mode, pictures):
        self.options, self.mode, self.pictures = options, mode, pictures
        self.temporary = tempfile.TemporaryDirectory(prefix="parvigif-faults-")
        self.folder = pathlib.Path(self.temporary.name)
        self.data = self.folder / "data"
        self.data.mkdir()
        for name, content in vars(pictures).items():
            (self.data / name).write_bytes(content)
        self.place = self.folder / "pictures"
        self.vault = self.place / "vault" if mode == "link" else self.place
        self.target = self.vault / PICTURE
        self.acted = ""

    def start(self):
        shutil.rmtree(self.place, ignore_errors=True)
        for name in ("user", "machine", "state", "tmp"):
            shutil.rmtree(self.folder / name, ignore_errors=True)
        (self.folder / "tmp").mkdir()
        self.vault.mkdir(parents=True)
        self.target.write_bytes(self.pictures.original)
        if self.mode == "link":
            (self.place / PICTURE).symlink_to("vault/" + PICTURE)
        if self.mode == "restore":
            self.run({}, [])
        self.before = self.target.read_bytes()
        self.all_before = self.contents()

    def run(self, extra, arguments=None):
        environment = {"PATH": os.environ["PATH"], "XDG_CONFIG_HOME": str(self.folder / "user"),
                       "XDG_CONFIG_DIRS": str(self.folder / "machine"), "XDG_STATE_HOME": str(self.folder / "state"),
                       "TMPDIR": str(self.folder / "tmp"), "HOME": str(self.folder), "P": str(self.target),
                       "D": str(self.data), **extra}
        arguments = MODES[self.mode] if arguments is None else arguments
        stdin = subprocess.DEVNULL
        if arguments == ["-"]:
            stdin = open(self.target, "rb") if self.target.exists() else subprocess.DEVNULL
        else:
            arguments = arguments + [PICTURE]
        with open(self.folder / "output.gif", "wb") as output:
            return subprocess.run([self.options.program, *arguments], cwd=self.place, env=environment, stdin=stdin,
                                  stdout=output, stderr=subprocess.PIPE, timeout=120, check=False)

    def count(self, shim, extra):
        self.start()
        number = self.folder / "count"
        self.run({"LD_PRELOAD": str(self.options.shims / shim), "PARVIGIF_COUNT": str(number), **extra})
        return int(number.read_text())

    # ---- what must hold

    def contents(self):
        return {path.relative_to(self.place).as_posix(): path.read_bytes()
                for path in self.place.rglob("*") if path.is_file() and not path.is_symlink()}

    def holds(self, there, content, place):
        """Whether a picture is under its name, or a smaller one made from it is and it is in a backup itself."""
        now = there.get(place)
        if now == content:
            return True
        if now is None or read_gif(now) != read_gif(content) or len(now) >= len(content):
            return False
        # The user wants the backup to be that of whatever has the name now.
        gives_backup_up = self.mode == "overwrite-backups" and self.acted == "links"
        return self.mode == "no-backup" or gives_backup_up or any(
            data == content for name, data in there.items() if name.endswith(".BAK"))

    def complaints(self):
        there = self.contents()
        name = ("vault/" if self.mode == "link" else "") + PICTURE
        pictures = self.pictures
        wrong = []

        saved = {"saves": pictures.saved, "replaces": pictures.saved, "truncates": pictures.truncated,
                 "appends": pictures.appended, "tweaks": pictures.tweaked if self.has_tweaked else None}
        if self.acted in ("deletes", "renames"):
            # restoring brings back missing pictures too
            if name in there and not (self.mode == "restore" and there[name] == pictures.original):
                wrong.append("what was taken away is back")
            if self.acted == "renames":
                self.demand_old(there, name + ".moved", wrong)
        elif self.acted == "links":
            if not self.target.is_symlink():
                wrong.append("the link is gone")
            self.demand_saved(there, pictures.saved, name + ".other", wrong)
            self.demand_old(there, name + ".moved", wrong)
        elif saved.get(self.acted):
            self.demand_saved(there, saved[self.acted], name, wrong)
        else:
            self.demand_old(there, name, wrong)
        delivered = there.get("out/" + PICTURE, pictures.original)
        if read_gif(delivered) is None and delivered != there.get(name):
            wrong.append("what was delivered is neither whole nor the file as it is")
        if read_gif(there.get("sheet.gif", pictures.original)) is None:
            wrong.append("the contact sheet is torn")
        return wrong

    def demand_old(self, there, place, wrong):
        """The picture itself, smaller or not."""
        if self.mode == "restore":
            ok = there.get(place) in (self.before, self.pictures.original) and \
                self.pictures.original in [data for name, data in there.items() if name.endswith(".BAK")]
        else:
            ok = self.holds(there, self.pictures.original, place)
        if not ok:
            wrong.append(f"the picture is not whole at {place}: {sorted((n, len(d)) for n, d in there.items())}")

    def demand_saved(self, there, content, place, wrong):
        """What another program saved: still there, or kept when the original was restored over it."""
        kept = self.mode == "restore" and there.get(place) == self.pictures.original and \
            any(data == content for name, data in there.items() if name.endswith(".BAK"))
        if not kept and not self.holds(there, content, place):
            sizes = sorted((name, len(data)) for name, data in there.items())
            wrong.append(f"what somebody saved is not whole at {place}: {sizes}")

    def left_over(self):
        left = [path.name for path in self.place.rglob("*.tmp")]
        return left + [path.name for path in (self.folder / "tmp").iterdir() if path.name != "Norvek-0"]

    def try_point(self, fault, at):
        """A list of complaints."""
        self.start()
        kind, _, what = fault.partition(" ")
        self.acted = what if kind == "other" else ""
        extra = {"LD_PRELOAD": str(self.options.shims / "libfaultshim.so")}
        if kind == "alloc":
            extra = {"LD_PRELOAD": str(self.options.shims / "liballocshim.so"), "PARVIGIF_ALLOC": str(at)}
        else:
            extra["PARVIGIF_FAULT"] = f"{kind}={at}" + (":" + what if kind == "fail" else "")
            extra["PARVIGIF_ACTION"] = ACTIONS.get(what, "")
        result = self.run(extra)
        self.has_tweaked = self.acted == "tweaks" and (self.data / "time").exists()
        wrong = []
        wanted = [0, 1, -9] if kind in ("die", "tear") else [0, 1]
        if self.mode == "output":
            wanted.append(2)  # nothing can be delivered there
        if self.mode == "stdin" and fault == f"fail {errno.EINTR}":
            wanted.append(130)  # taken for Ctrl-C
        if result.returncode not in wanted:
            wrong.append(f"ended with {result.returncode}: {result.stderr.decode(errors='replace')}")
        wrong += self.complaints()
        if kind == "sync" and self.contents() != self.all_before:
            wrong.append("what cannot be flushed has changed something")
        again = self.run({}, [] if self.mode == "sheet" else None)  # drawing a sheet removes no leftovers
        if again.returncode not in (0, 1):
            wrong.append(f"the next run ended with {again.returncode}")
        wrong += ["next run: " + text for text in self.complaints()]
        wrong += [f"left for good: {name}" for name in self.left_over()]
        return wrong


def try_one(job):
    options, pictures, mode, fault, at = job
    return mode, fault, at, Trial(options, mode, pictures).try_point(fault, at)


def list_points(options, pictures):
    points = []
    for mode in options.modes:
        trial = Trial(options, mode, pictures)
        calls = trial.count("libfaultshim.so", {})
        changes = trial.count("libfaultshim.so", {"PARVIGIF_FAULT": "die=0"})
        allocations = trial.count("liballocshim.so", {"PARVIGIF_ALLOC": "0"}) if options.allocations else 0
        faults = ["short", *(f"fail {error}" for error in FAILURES), *("other " + name for name in ACTIONS)]
        points += [(mode, fault, at) for fault in faults for at in range(1, calls + 1)]
        # A backup is trusted without being read back.
        faults = ["die", "tear", "full", *(["rot"] if mode == "no-backup" else [])]
        points += [(mode, fault, at) for fault in faults for at in range(1, changes + 1)] + [(mode, "sync", 1)]
        points += [(mode, "alloc", at) for at in range(1, allocations + 1, options.allocations or 1)]
        print(f"{mode}: {calls} calls, {changes} changes, {allocations} allocations", flush=True)
    return points


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True, type=os.path.abspath)
    parser.add_argument("--shims", required=True, type=lambda text: pathlib.Path(text).absolute())
    parser.add_argument("--modes", nargs="+", default=list(MODES), choices=list(MODES))
    parser.add_argument("--faults", nargs="+", help="only those whose names begin so")
    parser.add_argument("--points", type=int, help="that many, drawn at random")
    parser.add_argument("--slice", default="1/1", help="I/N: every N-th point from the I-th on")
    parser.add_argument("--allocations", type=int, default=1, help="every n-th only; 0: none")
    parser.add_argument("--seed", type=int, default=0)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("samples", type=pathlib.Path)
    options = parser.parse_args()
    pictures = Pictures(options.samples)
    points = list_points(options, pictures)
    if options.faults:
        points = [point for point in points if point[1].startswith(tuple(options.faults))]
    first, step = map(int, options.slice.split("/"))
    points = points[first - 1::step]
    random.seed(options.seed)
    if options.points and options.points < len(points):
        points = random.sample(points, options.points)
    bad, tried = 0, collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        jobs = ((options, pictures, *point) for point in points)
        for mode, fault, at, wrong in pool.map(try_one, jobs):
            tried[fault.split()[0]] += 1
            if wrong:
                bad += 1
                print(f"{mode}, {fault}, call {at}:", *wrong, sep="\n    ", flush=True)
    print(", ".join(f"{count} {kind}" for kind, count in sorted(tried.items())) + f": {bad} points with complaints")
    sys.exit(1 if bad or not points else 0)


if __name__ == "__main__":
    main()
