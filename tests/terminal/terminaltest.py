#!/usr/bin/env python3
"""Runs the program on a terminal of its own, types keys, and checks what it draws and leaves behind.

    tests/terminal/terminaltest.py --program build/linux/term/parvigif
"""
import argparse
import fcntl
import os
import pathlib
import pty
import random
import re
import select
import signal
import struct
import sys
import tempfile
import termios

PATIENCE = 120  # seconds after which a test that waits has failed


def make_picture(side, rng):
    """One frame: blocks of 8 by 8 pixels of one colour, some pixels of another."""
    blocks = [[rng.randrange(128) for _ in range(0, side, 8)] for _ in range(0, side, 8)]
    pixels = bytes((blocks[y // 8][x // 8] + (rng.randrange(12) == 0)) % 128 for y in range(side) for x in range(side))
    # Codes of 8 bits: a clear code (128) often enough that they never grow.
    codes = b"".join(b"\x80" + pixels[i:i + 100] for i in range(0, len(pixels), 100)) + b"\x81"
    blocks = b"".join(bytes([len(codes[i:i + 255])]) + codes[i:i + 255] for i in range(0, len(codes), 255))
    return (b"\x21\xf9\x04\x04\x05\0\0\0" + b"," + struct.pack("<HHHHB", 0, 0, side, side, 0) + b"\x07" +
            blocks + b"\0")


def make_gif(side, frames):
    """A square animation that gets much smaller; a large one takes its time."""
    rng = random.Random(side)
    pictures = [make_picture(side, rng) for _ in range(4)]
    table = bytes(level for grey in range(0, 256, 2) for level in (grey,) * 3)
    return (b"GIF89a" + struct.pack("<HHBBB", side, side, 0xF6, 0, 0) + table +
            b"".join(pictures[i % 4] for i in range(frames)) + b";")


class Terminal:
    """The program in a folder of ten pictures, the third of which takes long."""

    SMALL, LARGE = make_gif(8, 2), make_gif(300, 300)

    def __init__(self, program, columns=80, arguments=("-j1",), takes_long=True):
        self.temporary = tempfile.TemporaryDirectory(prefix="parvigif-terminal-")
        folder = pathlib.Path(self.temporary.name)
        self.pictures, self.own = folder / "in", folder
        self.pictures.mkdir()
        (folder / "tmp").mkdir()
        self.names = [f"{i:02}.gif" for i in range(1, 11)]
        for name in self.names:
            (self.pictures / name).write_bytes(self.LARGE if name == "03.gif" and takes_long else self.SMALL)
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            os.environ.update(XDG_CONFIG_DIRS=str(folder / "machine"), XDG_CONFIG_HOME=str(folder / "user"),
                              XDG_STATE_HOME=str(folder / "state"), TMPDIR=str(folder / "tmp"), TERM="xterm",
                              LC_ALL="C.UTF-8", NO_COLOR="")
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            os.chdir(self.pictures)
            os.execv(program, ["parvigif", *arguments, "."])
        self.output = ""

    def wait_for(self, text):
        """Reads until the text was drawn; what came before it is forgotten."""
        while text not in self.output:
            if not self.read():
                sys.exit(f"{text!r} never came, but {self.output!r}")
        self.output = self.output.split(text, 1)[1]

    def read(self):
        if not select.select([self.master], [], [], PATIENCE)[0]:
            sys.exit(f"nothing came for {PATIENCE} s after {self.output!r}")
        try:
            data = os.read(self.master, 65536)
        except OSError:  # the program has ended
            return False
        self.output += data.decode(errors="replace")
        return bool(data)

    def type(self, keys):
        os.write(self.master, keys)

    def end(self):
        """The exit status, minus the signal's number when one ended it. The rest of the output is kept."""
        while self.master is not None and self.read():
            pass
        return os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])

    def hang_up(self):
        os.close(self.master)
        self.master = None

    def is_echoing(self):
        return bool(termios.tcgetattr(self.master)[3] & termios.ECHO)

    # ---- what is left behind

    def check_files(self):
        """The first two files done, the third whole, the others untouched."""
        for name in self.names:
            now = (self.pictures / name).read_bytes()
            original = self.LARGE if name == "03.gif" else self.SMALL
            backup = self.pictures / (name + ".BAK")
            if name < "03.gif":
                assert len(now) < len(original) and backup.read_bytes() == original, name
            else:
                assert now == original and not backup.exists(), name

    def check_books(self):
        """Log and totals hold the first two files; the third was counted when it was begun. Nothing else is left."""
        log = (self.own / "state/Norvek/PVGFLog.TXT").read_text()
        assert len(re.findall(r'File: "/[^"]*/0[12]\.gif" \n +\d+ bytes saved', log)) == log.count("File:") == 2, log
        saved = 2 * (len(self.SMALL) - (self.pictures / "01.gif").stat().st_size)
        totals = (self.own / "user/Norvek/Parvigif/1.x.ini").read_text()
        assert not list(self.own.glob("tmp/*"))
        assert totals == f"BYTESSAVED={saved}\nFILESPROCESSED=3\n", totals

    def wait_for_third(self):
        self.wait_for("./03.gif")
        self.wait_for(f"{len(self.LARGE):,} bytes unoptimized")


def test_ctrl_c_leaves_the_file_in_hand_and_the_rest(program):
    terminal = Terminal(program)
    terminal.wait_for_third()
    assert not terminal.is_echoing()
    terminal.type(b"\x03")
    assert terminal.end() == 130
    assert terminal.output.endswith("2 files: 2 made smaller\r\nparvigif: cancelled\r\n"), terminal.output
    assert "\x1b[?25h" in terminal.output, "the cursor is still hidden"
    assert "\x1b" not in terminal.output.rsplit("\x1b[?25h", 1)[1], "drawn after the panel was gone"
    terminal.check_files()
    terminal.check_books()


def test_a_pause_waits_for_a_key_and_can_be_cancelled(program):
    terminal = Terminal(program, columns=40)
    terminal.wait_for_third()
    terminal.type(b"p")
    terminal.wait_for("OPERATION PAUSED")
    terminal.wait_for("any key resumes, Ctrl-C stops")
    terminal.type(b" ")
    terminal.wait_for("p pauses, Ctrl-C stops")
    terminal.type(b"p")
    terminal.wait_for("OPERATION PAUSED")
    terminal.type(b"\x03")
    assert terminal.end() == 130
    terminal.check_files()


def test_a_pause_holds_workers_too(program):
    terminal = Terminal(program, arguments=("-j2",))
    terminal.wait_for_third()
    terminal.type(b"p")
    terminal.wait_for("OPERATION PAUSED")
    terminal.type(b" ")
    terminal.wait_for("10 files: 10 made smaller")
    assert terminal.end() == 0


def test_the_second_ctrl_c_leaves_every_file_whole(program):
    terminal = Terminal(program)
    terminal.wait_for_third()
    os.kill(terminal.pid, signal.SIGSTOP)  # so that both find it in the middle of the file
    terminal.type(b"\x03")
    os.kill(terminal.pid, signal.SIGTERM)
    os.kill(terminal.pid, signal.SIGCONT)
    assert terminal.end() in (-signal.SIGINT, -signal.SIGTERM)
    assert terminal.output.endswith("\x1b[J\x1b[?25h"), terminal.output
    terminal.check_files()


def test_ctrl_z_gives_the_terminal_back_and_goes_on(program):
    # Only a shell's job can be stopped.
    script = 'set -m; "$0" -j1 .; stty -a; echo asleep; fg; echo "status $?"'
    terminal = Terminal("/bin/bash", arguments=("-c", script, program))
    terminal.wait_for_third()
    terminal.type(b"\x1a")
    terminal.wait_for("\x1b[?25h")
    terminal.wait_for(" icanon ")
    terminal.wait_for(" echo ")
    terminal.wait_for("asleep")
    terminal.wait_for("./03.gif\x1b")
    assert not terminal.is_echoing()
    terminal.type(b"\x03")
    terminal.wait_for("status 130")
    assert terminal.end() == 0
    terminal.check_books()


def test_a_terminal_that_goes_away_cancels(program):
    terminal = Terminal(program)
    terminal.wait_for_third()
    terminal.hang_up()
    assert terminal.end() == 130
    terminal.check_files()
    terminal.check_books()


def test_lines_fit_the_terminal(program):
    terminal = Terminal(program, columns=40)
    terminal.wait_for("p pauses")
    terminal.output = ""
    terminal.wait_for("p pauses")
    fcntl.ioctl(terminal.master, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 120, 0, 0))
    terminal.wait_for("Files processed to date.")
    terminal.wait_for("p pauses, Ctrl-C stops")
    terminal.wait_for("\x1b[4A")  # five lines, the wide form
    terminal.type(b"\x03")
    assert terminal.end() == 130


def test_no_panel_where_nobody_looks(program):
    for arguments in (("-q",), ("--json",)):
        terminal = Terminal(program, arguments=arguments, takes_long=False)
        assert terminal.end() == 0
        assert "\x1b" not in terminal.output, terminal.output


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--program", required=True, type=os.path.abspath)
    options = arguments.parse_args()
    for name, test in list(globals().items()):
        if name.startswith("test_"):
            print(name, flush=True)
            test(options.program)


if __name__ == "__main__":
    main()
