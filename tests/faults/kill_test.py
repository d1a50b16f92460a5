#!/usr/bin/python3
"""SIGKILL and other signals at random moments of updates: in the console and in the window, on line and off, in turn. Whatever
the moment, the next start says what it must, brings the device back, and leaves nothing partial and nothing changed elsewhere.

    kill_test.py BIN [--kills N] [--signals N] [--seed N] [--jobs N]

The seed that is printed gives the same moments again, as far as the system's own haste allows.
"""

import argparse
import collections
import concurrent.futures
import os
import pathlib
import random
import re
import select
import signal
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest  # noqa: E402

OTHERS = "HUP INT TERM QUIT USR1 USR2 ALRM VTALRM PROF XCPU XFSZ IO PIPE PWR STKFLT RTMIN RTMAX".split()
SERIAL = "baud=19200,boot-baud=19200,next-version=TARN-R200 V5.2R1"
LEFT, CUT = "A device was left in its boot loader", "An update was cut off"
LONGEST = {"cli": 4.0, "window": 6.0}     # seconds of an update, with what comes before it and a little after
START = 5       # seconds
OWN = ("config", "data", "report", "bin/Download", "bin/firmware.inf", ".cache")    # what programs and bench may write


def pause(seconds):
    select.select([], [], [], seconds)


def holds(process, number):
    """Whether a process has come so far that this signal does not end it, or has ended."""
    status = pathlib.Path("/proc/%d/status" % process.pid).read_text()
    masks = [int(word, 16) for word in re.findall(r"^Sig(?:Blk|Ign|Cgt):\s*(\w+)", status, re.M)]
    return process.poll() is not None or any(mask >> (number - 1) & 1 for mask in masks)


class Interrupted(ProgramTest):
    def __init__(self, bin_folder, word, is_on_line, name, moment):
        super().__init__("attempt")
        self.bin, self.word, self.is_on_line = bin_folder, word, is_on_line
        self.number, self.moment = getattr(signal, "SIG" + name), moment
        self.title = "%s %s, SIG%s after %.3f s" % (word, "on line" if is_on_line else "off line", name, moment)

    def bench(self, *words, **options):
        settings = ("FTP/Server=" + self.server, "FTP/UserName=upd", "FTP/Password=pw")
        command = super().bench(*words, **options)
        return command[:1] + [word for setting in settings for word in ("--setting", setting)] + command[1:]

    def display(self):
        near, far = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(far), "-nolisten", "tcp", "-screen", "0", "1280x800x24"],
                                  pass_fds=[far], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        os.close(far)
        with os.fdopen(near) as words:
            return ":" + words.readline().strip()

    def prepare(self):
        self.console, self.window = self.own(self.bin / "corvane-cli"), self.own(self.bin / "corvane")
        downloads = self.console.parent / "Download"
        downloads.mkdir()
        self.server = self.site(19200) if self.is_on_line else ""
        if not self.is_on_line:
            (downloads / "a.hex").write_text(self.image.read_text())
            (self.console.parent / "firmware.inf").write_text(
                "[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/a.hex\n")
        (self.folder / "somebody's").write_text("nobody else's")
        self.plug(self.bin / "corvane-bench", SERIAL, setting="FTP/OffLine=%s" % (not self.is_on_line))
        self.before = self.elsewhere()

    def elsewhere(self):
        """Every file that is none of the programs' affair, with its content."""
        files = {str(path.relative_to(self.folder)): path for path in self.folder.rglob("*") if not path.is_dir()}
        return {name: path.read_bytes() for name, path in files.items() if not name.startswith(OWN)}

    def start(self, *more):
        kind = ["--online", "--select", "PGM_A"] if self.is_on_line else ["--file", str(self.image)]
        return subprocess.Popen([str(self.console), "update", "--yes", *(more if "--file" in more else [*kind, *more])],
                                text=True, env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def run_console(self, *more):
        process = self.start(*more)
        log, words = process.communicate(timeout=LIMIT)
        return process.returncode, words, log

    def interrupt(self):
        """Starts the program and sends the signal; its exit status."""
        environment = None
        if self.word == "cli":
            process = self.start()
        else:
            environment = self.environment(DISPLAY=self.display(), QT_QPA_PLATFORM="xcb")
            process = subprocess.Popen([str(self.window)], env=environment, stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.kill)
        # What comes before the program's first own step is the system's; one that never holds the signal is sent it too.
        patience = time.monotonic() + (0 if self.number == signal.SIGKILL else START)
        while time.monotonic() < patience and not holds(process, self.number):
            pause(0.01)
        end = time.monotonic() + self.moment
        while process.poll() is None and time.monotonic() < end:
            if environment:     # the button at hand is the one to go on with, in the window and in each question
                subprocess.run(["xdotool", "key", "Return"], env=environment, check=False, stderr=subprocess.DEVNULL)
            pause(min(0.2, max(0, end - time.monotonic())))
        process.send_signal(self.number)
        if self.word == "window" and self.number != signal.SIGKILL:
            process.send_signal(signal.SIGTERM)     # others do not close it
        process.communicate(timeout=LIMIT)
        return process.returncode

    def attempt(self):
        self.prepare()
        status = self.interrupt()
        if self.number != signal.SIGKILL:
            self.assertGreaterEqual(status, 0, "the signal ended the program")
        said = self.run_console("--port", "COM99")[1]
        self.found = LEFT if LEFT in said else CUT if CUT in said else "Nothing was said"
        left = re.search(r"(?:%s|%s).*force an update with the image (.*)\.$" % (LEFT, CUT), said, re.M)
        if self.number != signal.SIGKILL:
            self.assertIsNone(left, said)
        # Nothing was said: then a plain update does. What was cut off before the erase, or when all was done, may run.
        status, words, log = (None, "", "") if left and LEFT in said else self.run_console()
        if left and status != 0:
            status, words, log = self.run_console("--force", "--file", left.group(1))
        self.assertEqual(status, 0, said + words + log)
        self.assertEqual(self.unplug()[0], 0, self.report.read_text())
        data = {path.name: path for path in (self.folder / "data" / "Corvane").iterdir()}
        self.assertEqual(list(data), ["jobs.csv"])
        self.assertEqual({line.count(b",") for line in data["jobs.csv"].read_bytes().split(b"\r\n")[:-1]}, {7})
        self.assertTrue(data["jobs.csv"].read_bytes().endswith(b"\r\n"))
        self.assertEqual(list(self.folder.rglob("*.part")), [])
        self.assertEqual(self.elsewhere(), self.before)

    def id(self):
        return self.title

    __str__ = shortDescription = id


def attempts(given):
    chance = random.Random(given.seed)
    for number in range(given.kills + given.signals):
        word, is_on_line = ("cli", "window")[number % 2], number // 2 % 2 == 1
        name = "KILL" if number < given.kills else chance.choice(OTHERS)
        yield Interrupted(given.bin.resolve(), word, is_on_line, name, chance.uniform(0, LONGEST[word]))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin", type=pathlib.Path)
    for name, default in (("kills", 4), ("signals", 4), ("seed", random.randrange(10**6)), ("jobs", 4)):
        parser.add_argument("--" + name, type=int, default=default)
    given = parser.parse_args()
    failed, found = 0, collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(given.jobs) as pool:
        def run(test):
            result = unittest.TestResult()
            test.run(result)
            return test, result
        for test, result in pool.map(run, attempts(given)):
            for _, words in result.failures + result.errors:
                print("FAILED: %s\n%s" % (test.title, words), flush=True)
            found[getattr(test, "found", "not asked")] += 1
            failed += not result.wasSuccessful()
    print("seed %d: %d kills and %d signals, %d failed; %s" % (
        given.seed, given.kills, given.signals, failed, ", ".join("%s: %d" % one for one in sorted(found.items()))))
    return failed > 0


if __name__ == "__main__":
    sys.exit(main())
