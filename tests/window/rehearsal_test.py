#!/usr/bin/python3
"""Rehearsals as people meet them: each kind from its start to the simulated device's own word on its memory, without a trace
left behind, and every process gone with the window, however that ends.

    rehearsal_test.py BIN     the folder with corvane, corvane-windowrun and corvane-bench
"""

import os
import pathlib
import re
import select
import signal
import subprocess
import sys
import tempfile
import unittest

BIN = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/bin").resolve()
LIMIT = 180     # seconds after which a test is lost, whatever it waits for
DIFFERS = 10    # the bench's status when no memory is the image's
RESCUE = ["--press", "cmdStartCheck", "--press", "cmdForceISP"]


class Run:
    """A program with a home and a folder for temporary files of its own."""

    def __init__(self, *words, **environment):
        self.text = None
        self.folder = tempfile.TemporaryDirectory(prefix="corvane-test-")
        for name in ("home", "tmp"):
            os.mkdir(os.path.join(self.folder.name, name), 0o700)
        environment = dict(os.environ, HOME=self.folder.name + "/home", TMPDIR=self.folder.name + "/tmp", LC_ALL="C.UTF-8",
                           QT_QPA_PLATFORM="offscreen", **environment)
        environment = {name: value for name, value in environment.items() if not name.startswith("XDG_")}
        environment["XDG_RUNTIME_DIR"] = environment["HOME"]  # or Qt makes itself one among the temporary files
        self.process = subprocess.Popen([str(word) for word in words], env=environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def end(self):
        """Exit status and output."""
        if self.text is None:
            self.text = self.process.communicate(timeout=LIMIT)[0]
        return self.process.returncode, self.text

    def traces(self):
        return [str(path) for path in pathlib.Path(self.folder.name).rglob("*") if not path.is_dir()] + os.listdir(
            self.folder.name + "/tmp")

    def children(self):
        return [int(word) for word in pathlib.Path("/proc/{0}/task/{0}/children".format(self.process.pid)).read_text().split()]


def comes(condition):
    for _ in range(LIMIT * 20):
        if condition():
            return True
        select.select([], [], [], 0.05)
    return False


def is_running(process):
    try:
        return pathlib.Path("/proc/%d/stat" % process).read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


class Rehearsal(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # Most of their time they wait for simulated lines, so they run side by side.
        cls.runs = {kind: Run(BIN / "corvane-windowrun", "--say", "--rehearse", kind, *more)
                    for kind, more in (("healthy", []), ("boot-loader", RESCUE), ("bad-cable", RESCUE), ("reader", []))}
        for run in cls.runs.values():
            cls.addClassCleanup(run.folder.cleanup)

    def test_each_kind(self):
        """The strip after each run, what the program says of it, and that the memory is right in the end."""
        updated = "The device is updated."
        for kind, strips, said in (
                ("healthy", [updated], "The device now answers with TARN-R200 V5.2R1."),
                ("boot-loader", ["A device waits in its boot loader; nothing was changed.", updated],
                 'Press "Force ISP" to force an update'),
                ("bad-cable", ["The device waits in its boot loader. It has no working firmware yet.", updated],
                 "The device now answers with TARN-R200 V5.2R1."),
                ("reader", [updated], "")):
            with self.subTest(kind):
                run = self.runs[kind]
                status, text = run.end()
                self.assertEqual([line[7:] for line in text.splitlines() if line.startswith("strip: ")], strips, text)
                self.assertEqual(status, 0, text)
                self.assertIn("memory equals image", text)
                self.assertIn(said, text)
                self.assertEqual(run.traces(), [])

    def test_the_window_answers(self):
        """A busy machine makes an event wait in one run, a fault of the program in all of them."""
        texts = [run.end()[1] for run in self.runs.values()]
        waits = [float(wait) for wait in re.findall(r"waited at most ([\d.]+) ms", "".join(texts))]
        self.assertGreater(len(waits), len(self.runs))
        self.assertLess(min(waits), 100)

    def test_without_a_server(self):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "pyftpdlib.py").write_text("raise ImportError\n")
            run = Run(BIN / "corvane-windowrun", "--say", "--rehearse", "healthy", PYTHONPATH=folder)
            self.addCleanup(run.folder.cleanup)
            status, text = run.end()
        self.assertEqual(status, 0, text)
        self.assertIn("strip: The device is updated.", text)
        self.assertEqual(run.traces(), [])

    def window(self):
        """A rehearsal with nobody at it, once its server and its bench are there."""
        run = Run(BIN / "corvane", "--rehearse=healthy")
        self.addCleanup(run.folder.cleanup)
        self.assertTrue(comes(lambda: len(run.children()) == 2 or run.process.poll() is not None))
        return run, run.children()

    def test_a_window_that_is_closed(self):
        run, children = self.window()
        self.assertTrue(comes(lambda: list(pathlib.Path(run.folder.name).rglob("ready"))))
        run.process.send_signal(signal.SIGTERM)
        status, text = run.end()
        self.assertEqual(status, DIFFERS, text)
        self.assertIn("COM1: memory untouched", text)
        self.assertEqual(run.traces(), [])
        self.assertEqual([child for child in children if is_running(child)], [])

    def test_a_window_that_is_killed(self):
        run, children = self.window()
        run.process.kill()
        run.end()
        self.assertTrue(comes(lambda: not any(is_running(child) for child in children)))

    def test_wrong_usage(self):
        run = Run(BIN / "corvane", "--rehearse=flying")
        self.addCleanup(run.folder.cleanup)
        status, text = run.end()
        self.assertEqual(status, 2)
        self.assertIn('nothing to rehearse is called "flying"', text)


if __name__ == "__main__":
    unittest.main()
