#!/usr/bin/python3
"""corvane-cli as a person meets it: on a terminal, with a reader that goes away, and a terminal that hangs up in the middle;
what it says of ports that others hold or that its user may not use; and ten on-line runs at once. The device is corvane-bench
on a real pseudo-terminal.

    program_test.py BIN     the folder with corvane-cli and corvane-bench
"""

import csv
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

from black_box import LIMIT, ProgramTest, image, start_site  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/bin").resolve()
BENCH = BIN / "corvane-bench", "baud=19200"
RUNS = range(10)

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


class AtOnce(ProgramTest):
    """One copy of the program and one data folder. The site's ten images are different and all have the same name, so every run
    finds the downloads of the others in its way."""

    def offer(self):
        """A site with an image for each product; its address."""
        information = ""
        for n in RUNS:
            folder = self.folder / "site" / "firmware" / str(n)
            folder.mkdir(parents=True)
            (folder / "a.hex").write_text(image(20 + n).replace("TARN-R200", "TARN-R20%d" % n))
            information += "[PGM_%d]\nPRODUCT=TARN-R20%d\nVERSION=V5.2R1\nDESC=d\nFILE=/firmware/%d/a.hex\n" % (n, n, n)
        (folder.parent / "firmware.inf").write_text(information.replace(".hex", ".hex\nISP_BAUDRATE=19200"))
        return start_site(self, self.folder / "site", {"upd": "pw"})

    def start(self, n, program, server):
        """The bench with device n, its image and the run."""
        self.image, self.report = self.folder / "site" / "firmware" / str(n) / "a.hex", self.folder / ("report%d" % n)
        words = self.bench(BENCH[0], "baud=19200,version=TARN-R20%d V5.1R23" % n, "env",
                           "XDG_DATA_HOME=%s" % (self.folder / "data"), program, "update", "--server", server, "--user", "upd",
                           "--yes", "--no-verify")
        words[words.index("--config-dir") + 1] += str(n)
        process = subprocess.Popen(words, env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True)
        self.addCleanup(process.kill)
        return process

    def test_each_device_gets_its_own_image(self):
        program, server = self.own(BIN / "corvane-cli"), self.offer()
        for process in [self.start(n, program, server) for n in RUNS]:
            log = process.communicate(timeout=LIMIT)[0]
            self.assertEqual(process.returncode, 0, log)
            self.assertIn("corvane-cli: The device is updated.", log)
            self.assertNotIn("\033", log)
        for n in RUNS:
            self.assertIn("memory equals image", (self.folder / ("report%d" % n)).read_text())
        data = next((self.folder / "data").rglob("jobs.csv")).parent
        rows = list(csv.reader((data / "jobs.csv").read_text().splitlines()))
        self.assertEqual((len(rows), {len(row) for row in rows}), (1 + len(RUNS), {len(rows[0])}), rows)
        journal = data / "interrupted-runs"
        self.assertFalse(journal.exists() and journal.read_text(), "entries are left in the journal")


if __name__ == "__main__":
    unittest.main()
