#!/usr/bin/python3
"""Rehearsals as people meet them: each kind from its start to the simulated device's own word on its memory, without a trace
left behind, and every process gone with the window, however that ends.

    rehearsal_test.py BIN     the folder with corvane, corvane-windowrun and corvane-bench
"""

import functools
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import until  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/bin").resolve()
LIMIT = 180     # seconds after which a test is lost, whatever it waits for
DIFFERS = 10    # the bench's status when no memory is the image's
RESCUE = ["--press", "cmdStartCheck", "--press", "cmdForceISP"]
UPDATED, WAITS = "The device is updated.", "The device waits in its boot loader. It has no working firmware yet."
FOUND = "A device waits in its boot loader; nothing was changed."
KINDS = {   # what is pressed, what the strip says after each run, what else is said
    "healthy": ([], [UPDATED], "The device now answers with TARN-R200 V5.2R1."),
    "boot-loader": (RESCUE, [FOUND, UPDATED], 'Press "Force ISP" to force an update'),
    "bad-cable": (RESCUE, [WAITS, UPDATED], "The device now answers with TARN-R200 V5.2R1."),
    "reader": ([], [UPDATED], "")}


class Run:
    """A program with a home and a folder for temporary files of its own; as it sees it there is no FTP server for Python, or
    there is."""

    def __init__(self, *words, has_server=True):
        self.folder = tempfile.TemporaryDirectory(prefix="corvane-test-")
        self.place = pathlib.Path(self.folder.name)
        for name in ("home", "tmp", "python"):
            (self.place / name).mkdir(0o700)
        environment = {name: value for name, value in os.environ.items() if not name.startswith("XDG_")}
        environment.update(HOME=str(self.place / "home"), TMPDIR=str(self.place / "tmp"), LC_ALL="C.UTF-8",
                           QT_QPA_PLATFORM="offscreen",
                           XDG_RUNTIME_DIR=str(self.place / "home"))  # or Qt makes itself one among the temporary files
        if not has_server:
            (self.place / "python" / "pyftpdlib.py").write_text("raise ImportError\n")
            environment["PYTHONPATH"] = str(self.place / "python")
        self.process = subprocess.Popen([str(word) for word in words], env=environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    @functools.cached_property
    def text(self):
        return self.process.communicate(timeout=LIMIT)[0]

    def traces(self):
        return [path for name in ("home", "tmp") for path in (self.place / name).iterdir()]

    def children(self):
        return [int(word) for word in pathlib.Path("/proc/{0}/task/{0}/children".format(self.process.pid)).read_text().split()]


def is_running(process):
    try:
        return ") Z" not in pathlib.Path("/proc/%d/stat" % process).read_text()
    except OSError:
        return False


class Rehearsal(unittest.TestCase):
    def start(self, *words, **options):
        run = Run(*words, **options)
        self.addCleanup(run.folder.cleanup)
        return run

    def test_each_kind(self):
        """Most of their time they wait for simulated lines, so they run side by side. A busy machine makes an event of a window
        wait in one run, a fault of the program in all of them."""
        program = [BIN / "corvane-windowrun", "--say", "--rehearse"]
        runs = {kind: self.start(*program, kind, *KINDS[kind][0]) for kind in KINDS}
        runs["without a server"] = self.start(*program, "healthy", has_server=False)
        for kind, run in runs.items():
            _, strips, said = KINDS.get(kind, KINDS["healthy"])
            with self.subTest(kind):
                self.assertEqual(re.findall("^strip: (.*)$", run.text, re.M), strips, run.text)
                self.assertEqual(run.process.returncode, 0, run.text)
                self.assertIn("memory equals image", run.text)
                self.assertIn(said, run.text)
                self.assertEqual(run.traces(), [])
        waits = re.findall(r"waited at most ([\d.]+) ms", "".join(run.text for run in runs.values()))
        self.assertLess(min(map(float, waits)), 100)

    def window(self):
        """A rehearsal with nobody at it, once its server and its bench are there."""
        run = self.start(BIN / "corvane", "--rehearse=healthy")
        self.assertTrue(until(lambda: len(run.children()) == 2 or run.process.poll() is not None))
        return run, run.children()

    def test_a_window_that_is_closed(self):
        run, children = self.window()
        self.assertTrue(until(lambda: list(run.place.rglob("ready"))))
        run.process.send_signal(signal.SIGTERM)
        self.assertIn("COM1: memory untouched", run.text)
        self.assertEqual(run.process.returncode, DIFFERS, run.text)
        self.assertEqual(run.traces(), [])
        self.assertEqual([child for child in children if is_running(child)], [])

    def test_a_window_that_is_killed(self):
        run, children = self.window()
        run.process.kill()
        self.assertIsNotNone(run.text)
        self.assertTrue(until(lambda: not any(is_running(child) for child in children)))

    def test_wrong_usage(self):
        self.assertIn('nothing to rehearse is called "flying"', self.start(BIN / "corvane", "--rehearse=flying").text)


if __name__ == "__main__":
    unittest.main()
