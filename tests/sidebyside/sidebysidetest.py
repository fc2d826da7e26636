#!/usr/bin/env python3
"""Runs several processes at once over copies of a folder's GIF files and checks that they do not interfere.

    tests/sidebyside/sidebysidetest.py --program build/linux/term/parvigif --files 500 FOLDER

First each file is named once, spread over all processes: then the log holds one whole entry per file, the totals are
the sum, and every file is what a single process makes of it. Then every process is given all files: each file
is still whole and has its backup, and log, totals and files agree to the byte.
"""
import argparse
import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ENTRY = re.compile(r'\d+/\d+/\d+  \d+:\d+:\d+ File: "([^"]*)" \n'
                   r'(?:     (\d+) bytes saved \((\d+) - (\d+)\) \d+\.\d%|    File Unchanged\.(?:\n     .*)?)\n')


class Round:
    def __init__(self, options, originals):
        self.program, self.processes = options.program, options.processes
        self.temporary = tempfile.TemporaryDirectory(prefix="parvigif-side-by-side-")
        self.folder = pathlib.Path(self.temporary.name)
        own = {name: self.folder / name for name in ("machine", "user", "state", "tmp", "in")}
        own["tmp"].mkdir()
        own["in"].mkdir()
        self.environment = dict(os.environ, XDG_CONFIG_DIRS=str(own["machine"]), XDG_CONFIG_HOME=str(own["user"]),
                                XDG_STATE_HOME=str(own["state"]), TMPDIR=str(own["tmp"]))
        self.originals = {}
        for i in range(options.files):
            name = f"{i:05}.gif"
            self.originals[name] = originals[i % len(originals)]
            (own["in"] / name).write_bytes(self.originals[name])

    def spread(self):
        names = b"".join(name.encode() + b"\0" for name in self.originals)
        subprocess.run(["xargs", "-0", "-P", str(self.processes), "-n", "7", self.program, "-q"], input=names,
                       cwd=self.folder / "in", env=self.environment, check=True)

    def share(self):
        """@return how often a file was left to another process"""
        runs = [subprocess.Popen([self.program, "-v", "--again", *self.originals], cwd=self.folder / "in",
                                 env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
                for _ in range(self.processes)]
        left = 0
        for run in runs:
            complaints = run.communicate()[1].splitlines()
            left += len(complaints)
            assert run.returncode == 0, complaints
            assert all(line.endswith("skipped: another run is working on it") for line in complaints), complaints
        return left

    def check(self, expected=None):
        """@param expected: what every original becomes, each exactly once"""
        log = (self.folder / "state/Norvek/PVGFLog.TXT").read_text()
        assert ENTRY.sub("", log) == "", "torn entries: " + ENTRY.sub("", log)
        entries = [match.groups() for match in ENTRY.finditer(log)]
        saved = collections.Counter()
        for name, part, *_ in entries:
            saved[pathlib.Path(name).name] += int(part or 0)
        for name, original in self.originals.items():
            now = (self.folder / "in" / name).read_bytes()
            backup = self.folder / "in" / (name + ".BAK")
            assert len(original) - len(now) == saved[name], f"{name}: {saved[name]} bytes in the log"
            assert now == original or backup.read_bytes() == original, f"{name}: no backup"
            assert not expected or now == expected[original], f"{name}: another picture than one process makes"
        assert not expected or len(entries) == len(self.originals) == len(saved), f"{len(entries)} entries"
        totals = (self.folder / "user/Norvek/Parvigif/1.x.ini").read_text()
        assert totals == f"BYTESSAVED={saved.total()}\nFILESPROCESSED={len(entries)}\n", (
            totals, saved.total(), len(entries))
        left = [path for path in self.folder.glob("**/*") if path.suffix == ".tmp" or path.parent.name == "tmp"]
        assert not left, left


def what_one_process_makes(options, originals):
    alone = argparse.Namespace(program=options.program, processes=1, files=len(originals))
    trial = Round(alone, originals)
    trial.spread()
    return {original: (trial.folder / "in" / name).read_bytes() for name, original in trial.originals.items()}


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--program", required=True, type=os.path.abspath)
    arguments.add_argument("--processes", type=int, default=8)
    arguments.add_argument("--files", type=int, default=60)
    arguments.add_argument("folder", type=pathlib.Path)
    options = arguments.parse_args()
    originals = sorted({path.read_bytes() for path in options.folder.glob("*.gif")})
    expected = what_one_process_makes(options, originals)
    spread = Round(options, originals)
    spread.spread()
    spread.check(expected)
    shared = Round(options, originals)
    left = shared.share()
    shared.check()
    print(f"{options.files} files, {options.processes} processes: {left} files left to another process")


if __name__ == "__main__":
    sys.exit(main())
