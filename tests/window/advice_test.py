#!/usr/bin/python3
"""What an operator is told about a port that another process holds, one that he may not use, and a device that stays silent:
in the window and in the console, on real pseudo-terminals.

    advice_test.py BIN     the folder with corvane-cli, corvane-windowrun and corvane-bench
"""

import ctypes
import getpass
import grp
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
import unittest

BIN = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/bin").resolve()
LIMIT = 120     # seconds after which a test is lost, whatever it waits for
IMAGE = "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\n:0400000001020304F2\n:00000001FF\n"
FACES = {"console": ["corvane-cli", "update", "--yes"], "window": ["corvane-windowrun", "--say"]}
HOLDER = "import fcntl, sys; f = open(sys.argv[1], 'r+b', buffering=0); fcntl.flock(f, fcntl.LOCK_EX); print('held', flush=True); sys.stdin.read()"


def obey_modes():
    """Even root then needs a file's mode."""
    drop_from_bounding_set, dac_override = 24, 1
    ctypes.CDLL(None).prctl(drop_from_bounding_set, dac_override, 0, 0, 0)


class Advice(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="corvane-advice-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        (cls.folder / "image.hex").write_text(IMAGE)
        # A scan of a silent device takes its time, so these run beside the other tests.
        cls.silent = {face: cls.start(face, [BIN / "corvane-bench", "--device", "kind=silent", "--"]) for face in FACES}

    @classmethod
    def start(cls, face, before=(), config=None, **options):
        home = cls.folder / ("%s-%s" % (face, config or "bench"))
        home.mkdir(exist_ok=True)
        environment = dict(os.environ, HOME=str(home), XDG_DATA_HOME=str(home), LC_ALL="C.UTF-8", QT_QPA_PLATFORM="offscreen")
        if config:
            environment["XDG_CONFIG_HOME"] = str(cls.folder / config)
        words = [*before, BIN / FACES[face][0], *FACES[face][1:], "--file", cls.folder / "image.hex"]
        return subprocess.Popen([str(word) for word in words], env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)

    def told(self, face, config, **options):
        return self.start(face, config=config, **options).communicate(timeout=LIMIT)[0]

    def terminal(self, config):
        """The node of a new terminal, the only port that a program with this configuration sees."""
        far, near = pty.openpty()
        self.addCleanup(os.close, far)
        node = os.ttyname(near)
        os.close(near)
        (self.folder / config / "Corvane").mkdir(parents=True)
        (self.folder / config / "Corvane" / "serialcomm.conf").write_text("auto=off\nCOM7=%s\n" % node)
        return node

    def test_a_port_that_is_in_use(self):
        node = self.terminal("busy")
        holder = subprocess.Popen([sys.executable, "-c", HOLDER, node], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(holder.communicate)
        self.assertEqual(holder.stdout.readline(), "held\n")
        program = pathlib.Path("/proc/%d/comm" % holder.pid).read_text().strip()
        for face in FACES:
            with self.subTest(face):
                self.assertIn("COM7 (%s) is in use by %s (process %d). Close that and start again."
                              % (node, program, holder.pid), self.told(face, "busy"))

    def test_a_port_that_may_not_be_used(self):
        node = self.terminal("forbidden")
        group = grp.getgrgid(os.stat(node).st_gid).gr_name
        os.chmod(node, 0)
        advice = 'You may not use COM7 (%s), which belongs to the group %s. Run "sudo chown %s %s" and start again;' % (
            node, group, getpass.getuser(), node)
        for face in FACES:
            with self.subTest(face):
                self.assertIn(advice, self.told(face, "forbidden", preexec_fn=obey_modes))

    def test_a_silent_device(self):
        for face, process in self.silent.items():
            with self.subTest(face):
                text = process.communicate(timeout=LIMIT)[0]
                self.assertIn("No device was found; nothing was changed.", text)
                self.assertIn("Check the device's power and its cable.", text)


if __name__ == "__main__":
    unittest.main()
