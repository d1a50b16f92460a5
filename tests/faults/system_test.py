#!/usr/bin/python3
"""A program that is killed in the middle of an update, on a real pseudo-terminal, and the run after it that puts it right. The
other faults are tried in virtual time; only the system itself shows what becomes of the port and the journal of a killed program.

    system_test.py BIN     the folder with the programs
"""

import json
import pathlib
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1)).resolve()
LEFT = "A device was left in its boot loader at "


class Killed(ProgramTest):
    def start(self, *options):
        return subprocess.Popen([str(word) for word in (BIN / "corvane-cli", "update", "--yes", "--file", self.image, *options)],
                                text=True, env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def test_the_next_run_knows_and_goes_on(self):
        self.plug(BIN / "corvane-bench", "baud=19200")
        process = self.start("--json")
        for line in process.stdout:
            event = json.loads(line)
            if event["event"] == "progress" and 0 < event["maximum"] < 3 * event["value"]:
                break
        process.kill()
        process.communicate(timeout=LIMIT)
        process = self.start("--force")
        log, words = process.communicate(timeout=LIMIT)
        self.assertEqual(process.returncode, 0, log + words)
        self.assertIn(LEFT, words)
        self.assertIn("COM1, TARN-R200 V5.1R23. To go on, force an update with the image " + str(self.image), words)
        self.assertIn("memory equals image", self.unplug()[1])
        # It is well again, and nobody is told of it any more.
        self.assertNotIn(LEFT, self.start("--port", "COM9").communicate(timeout=LIMIT)[1])


if __name__ == "__main__":
    unittest.main()
