#!/usr/bin/python3
"""SIGKILL and other signals in the course of updates, in the console and in the window, on line and off: once in the midst of
programming, all of them, and at random moments. Whatever the moment, the next start says what it must, brings the device
back, and leaves nothing partial and nothing changed elsewhere.

    kill_test.py BIN [--kills N] [--signals N] [--seed N] [--jobs N]

The seed that is printed gives the same moments again, as far as the system's own haste allows.
"""

import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import signal
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest, pause, until  # noqa: E402

OTHERS = "HUP INT TERM QUIT USR1 USR2 ALRM VTALRM PROF XCPU XFSZ IO PIPE PWR STKFLT RTMIN RTMAX".split()
SERIAL = "baud=19200,boot-baud=19200,next-version=TARN-R200 V5.2R1"
LEFT = r"(A device was left in its boot loader|An update was cut off).*force an update with the image (.*)\.$"
LONGEST = {"cli": 4.0, "window": 6.0}     # seconds of an update, with what comes before it and a little after
START = 5       # seconds
OWN = ("config", "data", "report", "bin/Download", "bin/firmware.inf", ".cache")    # what programs and bench may write


def holds(process, numbers):
    """Whether a process has come so far that these signals do not end it, or has ended."""
    status = pathlib.Path("/proc/%d/status" % process.pid).read_text()
    masks = [int(word, 16) for word in re.findall(r"^Sig(?:Blk|Ign|Cgt):\s*(\w+)", status, re.M)]
    return process.poll() is not None or all(any(mask >> (one - 1) & 1 for mask in masks) for one in numbers)


class Interrupted(ProgramTest):
    """The moment is in seconds after the start; None is in the midst of programming."""

    def __init__(self, bin_folder, word, is_on_line, names, moment):
        super().__init__("attempt")
        self.bin, self.word, self.is_on_line, self.moment = bin_folder, word, is_on_line, moment
        self.numbers = [getattr(signal, "SIG" + name) for name in names]
        self.title = "%s %s, %s at %s" % (word, "on line" if is_on_line else "off line", names, moment)

    def bench(self, *words, **options):
        settings = ("FTP/Server=" + self.server, "FTP/UserName=upd", "FTP/Password=pw")
        command = super().bench(*words, **options)
        return command[:1] + [word for setting in settings for word in ("--setting", setting)] + command[1:]

    def display(self):
        """An X server without a window manager, which does not begin anew when its last client leaves; its name."""
        near, far = os.pipe()
        server = subprocess.Popen(["Xvfb", "-noreset", "-displayfd", str(far), "-nolisten", "tcp", "-screen", "0",
                                   "1280x800x24"], pass_fds=[far], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        os.close(far)
        with os.fdopen(near) as words:
            return ":" + words.readline().strip()

    def prepare(self):
        self.console, self.window = self.own(self.bin / "corvane-cli"), self.own(self.bin / "corvane")
        self.server = self.site(19200) if self.is_on_line else ""
        if not self.is_on_line:
            (self.console.parent / "Download").mkdir()
            (self.console.parent / "Download" / "a.hex").write_text(self.image.read_text())
            (self.console.parent / "firmware.inf").write_text(
                "[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/a.hex\n")
        (self.folder / "somebody's").write_text("nobody else's")
        self.plug(self.bin / "corvane-bench", SERIAL, setting="FTP/OffLine=%s" % (not self.is_on_line))

    def elsewhere(self):
        """Every file that is none of the programs' affair, with its content."""
        files = {str(path.relative_to(self.folder)): path for path in self.folder.rglob("*") if not path.is_dir()}
        return {name: path.read_bytes() for name, path in files.items() if not name.startswith(OWN)}

    def update(self, *more):
        kind = ["--online", "--select", "PGM_A"] if self.is_on_line else ["--file", str(self.image)]
        return [str(self.console), "update", "--yes", *(more if "--file" in more else [*kind, *more])]

    def run_console(self, *more):
        return subprocess.run(self.update(*more), env=self.environment(), stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=LIMIT, check=False)

    def interrupt(self):
        """Starts the program and sends the signals; its exit status."""
        environment = self.environment()
        if self.word == "window":
            environment.update(DISPLAY=self.display(), QT_QPA_PLATFORM="xcb")
        process = subprocess.Popen([str(self.window)] if self.word == "window" else self.update(), env=environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.kill)

        def agree():    # the button at hand is the one to go on with, in the window and in each question
            if self.word == "window":
                subprocess.run(["xdotool", "key", "Return"], env=environment, check=False, stderr=subprocess.DEVNULL)
        # What comes before the program's first own step is the system's; one that never holds a signal is sent it too.
        patience = time.monotonic() + (0 if signal.SIGKILL in self.numbers else START)
        while time.monotonic() < patience and not holds(process, self.numbers):
            pause(0.01)
        if self.moment is None:
            until((self.folder / "data" / "Corvane" / "interrupted-runs").exists, agree)
            pause(1.5)  # it has switched and erased
        end = time.monotonic() + (self.moment or 0)
        while process.poll() is None and time.monotonic() < end:
            agree()
            pause(min(0.2, max(0, end - time.monotonic())))
        for number in [*self.numbers, *([signal.SIGTERM] if self.word == "window" else [])]:    # others do not close it
            process.send_signal(number)
        process.communicate(timeout=LIMIT)
        return process.returncode

    def attempt(self):
        self.prepare()
        before = self.elsewhere()
        status = self.interrupt()
        said = self.run_console("--port", "COM99").stderr
        left = re.search(LEFT, said, re.M)
        if signal.SIGKILL not in self.numbers:
            self.assertGreaterEqual(status, 0, "the signal ended the program")
            self.assertIsNone(left, said)
        # Nothing was said: then a plain update does. What was cut off before the erase, or when all was done, may run.
        done = None if left and "left" in left[1] else self.run_console()
        if left and (not done or done.returncode != 0):
            done = self.run_console("--force", "--file", left[2])
        self.assertEqual(done.returncode, 0, said + done.stderr + done.stdout)
        self.assertEqual(self.unplug()[0], 0, self.report.read_text())
        jobs, = (self.folder / "data" / "Corvane").iterdir()
        lines = jobs.read_bytes().split(b"\r\n")
        self.assertEqual((jobs.name, {line.count(b",") for line in lines[:-1]}, lines[-1]), ("jobs.csv", {8}, b""))
        self.assertEqual(list(self.folder.rglob("*.part")), [])
        self.assertEqual(self.elsewhere(), before)

    def id(self):
        return self.title


def attempts(given):
    chance = random.Random(given.seed)
    bin_folder = given.bin.resolve()
    yield Interrupted(bin_folder, "window", False, OTHERS, None)
    yield Interrupted(bin_folder, "cli", False, ["KILL"], None)
    for number in range(given.kills + given.signals):
        word, is_on_line = ("cli", "window")[number % 2], number // 2 % 2 == 1
        name = "KILL" if number < given.kills else chance.choice(OTHERS)
        yield Interrupted(bin_folder, word, is_on_line, [name], chance.uniform(0, LONGEST[word]))


def run(test):
    result = unittest.TestResult()
    test.run(result)
    for _, words in result.failures + result.errors:
        print("FAILED: %s\n%s" % (test.title, words), flush=True)
    return result.wasSuccessful()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin", type=pathlib.Path)
    for name, default in (("kills", 3), ("signals", 3), ("seed", random.randrange(10**6)), ("jobs", 4)):
        parser.add_argument("--" + name, type=int, default=default)
    given = parser.parse_args()
    with concurrent.futures.ThreadPoolExecutor(given.jobs) as pool:
        results = list(pool.map(run, attempts(given)))
    print("seed %d: %d attempts, %d failed" % (given.seed, len(results), results.count(False)))
    return not all(results)


if __name__ == "__main__":
    sys.exit(main())
