#!/usr/bin/python3
"""Updates that go wrong on a real pseudo-terminal and with a real FTP server, and the run after them that puts it right.
The faults at every step are tried in virtual time; these few show that the real system's ends and losses look the same.

    system_test.py BIN     the folder with the programs
"""

import json
import pathlib
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1)).resolve()
LEFT = "A device was left in its boot loader at "


class Mishap(ProgramTest):
    records = 48

    def setUp(self):
        super().setUp()
        self.program = self.own(BIN / "corvane-cli")

    def start(self, *options):
        return subprocess.Popen([str(word) for word in (self.program, "update", "--yes", *options)], text=True,
                                env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def update(self, *options):
        process = self.start(*options)
        output, words = process.communicate(timeout=LIMIT)
        return process.returncode, output, words

    def test_a_transfer_that_breaks_off(self):
        self.plug(BIN / "corvane-bench", "baud=19200,boot-baud=115200")
        status, log, words = self.update("--user", "upd", "--server", self.site(115200, drop={"/firmware/a.hex": [1000, "both"]}))
        self.assertEqual(status, 4, log + words)
        self.assertNotIn("Erase", log)
        downloads = self.folder / "bin" / "Download"
        self.assertEqual(list(downloads.iterdir()) if downloads.exists() else [], [])
        status, log, words = self.update("--user", "upd", "--server", self.site(115200))
        self.assertEqual(status, 0, log + words)
        self.assertEqual((downloads / "a.hex").read_text(), self.image.read_text())
        _, report = self.unplug()
        self.assertIn("1 erase,", report)
        self.assertIn("memory equals image", report)

    def test_a_program_that_is_killed(self):
        self.plug(BIN / "corvane-bench", "baud=19200")
        process = self.start("--file", self.image, "--json")
        for line in process.stdout:
            event = json.loads(line)
            if event["event"] == "progress" and 0 < event["maximum"] < 3 * event["value"]:
                break
        process.kill()
        process.communicate(timeout=LIMIT)
        self.assertEqual(process.returncode, -signal.SIGKILL)
        status, log, words = self.update("--file", self.image, "--force")
        self.assertEqual(status, 0, log + words)
        self.assertIn(LEFT, words)
        self.assertIn("COM1, TARN-R200 V5.1R23. To go on, force an update with the image " + str(self.image), words)
        self.assertIn("memory equals image", self.unplug()[1])
        # It is well again, and nobody is told of it any more.
        _, _, words = self.update("--file", self.image, "--port", "COM9")
        self.assertNotIn(LEFT, words)

    def test_a_device_that_is_unplugged(self):
        self.plug(BIN / "corvane-bench", "baud=19200,fault=unplug@20,replug=500")
        status, log, words = self.update("--file", self.image)
        self.assertEqual(status, 5, log + words)
        self.assertIn("Programming... < NG", log)
        for _ in range(100):  # until it is back
            status, log, words = self.update("--file", self.image, "--force")
            if status != 3:
                break
        self.assertEqual(status, 0, log + words)
        self.assertIn(LEFT, words)
        self.assertIn("memory equals image", self.unplug()[1])


if __name__ == "__main__":
    unittest.main()
