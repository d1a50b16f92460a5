#!/usr/bin/python3
"""corvane-cli as a person meets it: on a terminal, into a pipe, with a reader that goes away, and a terminal that hangs up
in the middle; and what it says of ports that others hold or that its user may not use. The device is corvane-bench on a real
pseudo-terminal.

    program_test.py BIN     the folder with corvane-cli and corvane-bench
"""

import ctypes
import fcntl
import getpass
import grp
import os
import pathlib
import pty
import select
import subprocess
import sys
import termios
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/bin").resolve()
BENCH = BIN / "corvane-bench", "baud=19200"

def obey_modes():
    """Even root then needs a file's mode."""
    drop_from_bounding_set, dac_override = 24, 1
    ctypes.CDLL(None).prctl(drop_from_bounding_set, dac_override, 0, 0, 0)


class Program(ProgramTest):
    def update(self):
        return [str(BIN / "corvane-cli"), "update", "--file", str(self.image), "--yes", "--no-verify"]

    def run_bench(self, *command, **options):
        return subprocess.run(self.bench(*BENCH, *command), env=self.environment(), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=LIMIT, check=False, **options)

    def test_into_a_pipe(self):
        done = self.run_bench(*self.update())
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.startswith("Open COM1 ... < OK\n   Scan by 19200,N,8,1\n[Local Site]\n"), done.stdout)
        self.assertTrue(done.stdout.endswith("Programming... < OK\nUpdate Finish\n"), done.stdout)
        self.assertIn("corvane-cli: The device is updated.", done.stderr)
        self.assertNotIn("\033", done.stdout + done.stderr)

    def test_a_reader_that_goes_away(self):
        done = self.run_bench("sh", "-c", '"$@" | head -1', "sh", *self.update())
        self.assertEqual((done.returncode, done.stdout), (0, "Open COM1 ... < OK\n"), done.stderr + self.report.read_text())
        self.assertIn("memory equals image", self.report.read_text())

    def test_closed_standard_streams(self):
        """What it says about the signal goes nowhere, and not to the device, which would have the descriptor's number."""
        done = self.run_bench("sh", "-c", 'CORVANE_VELLIO=none "$@" <&- >&- 2>&- & '
                              "while [ ! -e $XDG_DATA_HOME/Corvane/interrupted-runs ]; do kill -0 $! || exit; done; "
                              "kill $!; wait $!", "sh", *self.update())
        self.assertEqual(done.returncode, 0, done.stderr + self.report.read_text())
        self.assertIn("heard 1353 bytes", self.report.read_text())

    def terminal_run(self, on_text):
        """corvane-cli with a controlling terminal; on_text(all text so far) True hangs up. (exit status, text)"""
        self.plug(*BENCH)
        master, slave = pty.openpty()

        def own_terminal():
            os.setsid()
            fcntl.ioctl(slave, termios.TIOCSCTTY, 0)
        process = subprocess.Popen(self.update(), env=self.environment(), stdin=slave, stdout=slave, stderr=slave,
                                   preexec_fn=own_terminal)
        os.close(slave)
        text = b""
        while select.select([master], [], [], LIMIT)[0]:
            try:
                data = os.read(master, 4096)
            except OSError:
                data = b""
            text += data
            if not data or on_text(text):
                break
        os.close(master)
        status = process.wait(LIMIT)
        self.verdict, _ = self.unplug()
        return status, text.decode()

    def test_on_a_terminal(self):
        status, text = self.terminal_run(lambda text: False)
        self.assertEqual((status, self.verdict), (0, 0), text)
        self.assertTrue(text.startswith("Open COM1 ... < OK\r\n   Scan by 19200,N,8,1\r\n[Local Site]\r\n"), text)
        self.assertIn("Programming...\0337 3 %\033[K\0338\0337 6 %", text)
        self.assertIn(" %\033[K\0338\033[K < OK\r\nUpdate Finish\r\n", text)

    def test_a_port_that_does_not_open(self):
        far, near = pty.openpty()
        self.addCleanup(os.close, far)
        self.addCleanup(os.close, near)
        node = os.ttyname(near)
        (self.folder / "config" / "Corvane").mkdir(parents=True)
        (self.folder / "config" / "Corvane" / "serialcomm.conf").write_text("auto=off\nCOM7=%s\n" % node)
        run = {"env": self.environment(), "stdin": subprocess.DEVNULL, "capture_output": True, "text": True, "timeout": LIMIT}
        fcntl.flock(near, fcntl.LOCK_EX)
        self.assertIn("COM7 (%s) is in use by %s (process %d). Close that and start again." % (
            node, pathlib.Path("/proc/self/comm").read_text().strip(), os.getpid()), subprocess.run(self.update(), **run).stderr)
        group = grp.getgrgid(os.stat(node).st_gid).gr_name
        os.chmod(node, 0)
        self.assertIn('You may not use COM7 (%s), which belongs to the group %s. Run "sudo chown %s %s" and start again;' % (
            node, group, getpass.getuser(), node), subprocess.run(self.update(), preexec_fn=obey_modes, **run).stderr)

    def test_a_terminal_that_hangs_up(self):
        status, text = self.terminal_run(lambda text: b"Programming..." in text)
        self.assertEqual((status, self.verdict), (0, 0), text + self.report.read_text())


if __name__ == "__main__":
    unittest.main()
