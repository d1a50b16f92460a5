#!/usr/bin/python3
"""The programs and a simulated HID reader: the same updates through the bench's transport library and its socket, and through
the real library with hidapi and udev, on a mocked device of the system.

    program_test.py BIN WRAPPER     the folder with the programs, umockdev-wrapper
"""

import pathlib
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))

from black_box import LIMIT, ProgramTest  # noqa: E402

BIN, WRAPPER = (pathlib.Path(word).resolve() for word in sys.argv[1:3])

# An update; the reader is unplugged in the middle of it and comes back; the next update.
LOST_AND_BACK = """
"$@"; echo "status $?"
for i in $(seq 100); do "$1" ports 2>&1 | grep -q HID1 && break; sleep 0.1; done
"$@" --force
"""


class Updates:
    """What is the same on both ways. The device is at 19200 baud, its boot loader at 57600."""

    def setUp(self):
        super().setUp()
        self.program = self.own(BIN / "corvane-cli")

    def run_with_reader(self, *command, reader="boot-baud=115200", verifies=True):
        bench = [BIN / "corvane-bench", "--device", "hid=yes," + reader,
                 *(["--image", self.image, "--verify"] if verifies else []), "--", *self.way]
        return subprocess.run([str(word) for word in (*bench, *command)], stdin=subprocess.DEVNULL,
                              env={**self.environment(QT_QPA_PLATFORM="offscreen"), "LC_ALL": "C"}, capture_output=True,
                              encoding="utf-8", timeout=LIMIT, check=False)

    def test_update_at_the_rate_that_the_site_announces(self):
        done = self.run_with_reader(self.program, "update", "--yes", "--no-verify", "--server", self.site(57600), "--user",
                                    "upd", reader="boot-baud=57600")
        self.assertEqual(done.returncode, 0, done.stderr)
        for text in ("\nOpen HID1 ... < OK\n   Scan by 19200,N,8,1\n[Local Site]\nComm Port : HID1 (F/W:KESTREL V2.4)\n",
                     "Programming... < OK\nUpdate Finish\n", "memory equals image",
                     "its reader took 7 commands, rate 57600, direction 3"):
            self.assertIn(text, done.stdout)

    def test_unplugged_while_programming_and_back(self):
        # No rate is announced, so it is found without one: at 115200 baud, the second that is tried.
        done = self.run_with_reader("sh", "-c", LOST_AND_BACK, "sh", self.program, "update", "--yes", "--file", self.image,
                                    reader="boot-baud=115200,fault=unplug@5,replug=300")
        self.assertIn("Programming... < NG\n\niTry:3\nstatus 5\n", done.stdout, done.stderr)
        self.assertIn("HID1 (F/W:KESTREL V2.4) was lost: it was unplugged, or its cable came loose.\n", done.stderr)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertTrue(done.stdout.count("Update Finish") == 1 and "memory equals image" in done.stdout, done.stdout)

    def test_update_through_the_window(self):
        done = self.run_with_reader(self.own(BIN / "corvane-windowrun"), "--file", self.image)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("memory equals image", done.stdout)

    def test_a_reader_in_use_is_refused_and_its_holder_named(self):
        lost = self.run_with_reader("sh", "-c", f'exec flock "{self.node}" sh -c \'"$1" ports --json; "$@"\' sh "$@"', "sh",
                                    self.program, "update", "--yes", "--file", self.image, verifies=False)
        self.assertIn('"problem":"in use by flock (process ', lost.stdout, lost.stderr)
        self.assertRegex(lost.stderr, r"HID1 \(/\S+\) is in use by flock \(process \d+\)\. Close that and start again\.")
        self.assertIn("HID1: 0 requests", lost.stdout)

    def test_ports_names_it_in_a_session_without_a_locale(self):
        done = self.run_with_reader(self.program, "ports", reader="reader=Größer €", verifies=False)
        self.assertEqual((done.returncode, done.stdout.split("\n")[0]), (0, "HID1\t\tHID1 Größer €"), done.stderr)


class BenchLibrary(Updates, ProgramTest):
    way = []
    node = "$CORVANE_BENCH_SOCKET.1"


class RealLibrary(Updates, ProgramTest):
    way = [WRAPPER, BIN / "mocked-reader"]
    node = "/dev/hidraw1"


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
