#!/usr/bin/python3
"""Updates that go wrong on a real pseudo-terminal and with a real FTP server, and the run after them that puts it right.
The faults at every step are tried in virtual time; these few show that the real system's ends and losses look the same.

    system_test.py BIN SUPPORT     the folder with the programs, and the one with ftp_site.py
"""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

SUPPORT = pathlib.Path(sys.argv.pop(2)).resolve()
BIN = pathlib.Path(sys.argv.pop(1)).resolve()
LIMIT = 60      # seconds after which a test is lost, whatever it waits for
LEFT = "A device was left in its boot loader at "


def record(address, data=b"", kind=0):
    body = bytes((len(data), address >> 8, address & 0xFF, kind)) + data
    return ":" + (body + bytes((-sum(body) & 0xFF,))).hex().upper()


def image(records):
    lines = ["[INFO]", "PGM=TARN-R200", "VER=V5.2R1", "BUD=2024/01/31"]
    lines += [record(16 * n, bytes((n * 7 + i) % 255 for i in range(16))) for n in range(records)]
    return "\n".join(lines + [record(0, b"", 1)]) + "\n"


class Mishap(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="corvane-test-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "bin").mkdir()
        # A program of its own: downloads lie beside it.
        self.program = self.folder / "bin" / "corvane-cli"
        shutil.copy2(BIN / "corvane-cli", self.program)
        self.image = self.folder / "image.hex"
        self.image.write_text(image(48))
        self.report = self.folder / "report"

    def plug(self, device):
        """Starts the bench with this device; unplug ends it and says what became of the device's memory."""
        ready = self.folder / "ready"
        words = [BIN / "corvane-bench", "--config-dir", self.folder / "config", "--device", device, "--image", self.image,
                 "--verify", "--report", self.report, "--ready-file", ready]
        self.bench = subprocess.Popen([str(word) for word in words])
        self.addCleanup(self.bench.kill)
        self.wait_until(ready.exists)

    def unplug(self):
        self.bench.send_signal(signal.SIGTERM)
        self.bench.wait(LIMIT)
        return self.report.read_text()

    def wait_until(self, condition):
        end = time.monotonic() + LIMIT
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.02)

    def site(self, **faults):
        """A server with the image; its address."""
        root = self.folder / "site"
        (root / "firmware").mkdir(parents=True, exist_ok=True)
        shutil.copy2(self.image, root / "firmware" / "a.hex")
        (root / "firmware" / "firmware.inf").write_text(
            "[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/firmware/a.hex\nISP_BAUDRATE=115200\n")
        options = json.dumps({"root": str(root), "accounts": {"upd": "pw"}, **faults})
        server = subprocess.Popen(["/usr/bin/python3", str(SUPPORT / "ftp_site.py"), options], stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE, text=True)
        self.addCleanup(server.communicate)
        return "127.0.0.1:" + server.stdout.readline().split()[1]

    def environment(self):
        return dict(os.environ, HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder / "config"),
                    XDG_DATA_HOME=str(self.folder / "data"), CORVANE_FTP_PASSWORD="pw", LC_ALL="C.UTF-8")

    def start(self, *options):
        return subprocess.Popen([str(word) for word in (self.program, "update", "--yes", *options)], text=True,
                                env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def update(self, *options):
        process = self.start(*options)
        output, words = process.communicate(timeout=LIMIT)
        return process.returncode, output, words

    def test_a_transfer_that_breaks_off(self):
        self.plug("baud=19200,boot-baud=115200")
        status, log, words = self.update("--user", "upd", "--server", self.site(drop={"/firmware/a.hex": [1000, "both"]}))
        self.assertEqual(status, 4, log + words)
        self.assertNotIn("Erase", log)
        downloads = self.folder / "bin" / "Download"
        self.assertEqual(list(downloads.iterdir()) if downloads.exists() else [], [])
        status, log, words = self.update("--user", "upd", "--server", self.site())
        self.assertEqual(status, 0, log + words)
        self.assertEqual((downloads / "a.hex").read_text(), self.image.read_text())
        report = self.unplug()
        self.assertIn("1 erase,", report)
        self.assertIn("memory equals image", report)

    def test_a_program_that_is_killed(self):
        self.plug("baud=19200")
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
        self.assertIn("memory equals image", self.unplug())
        # It is well again, and nobody is told of it any more.
        _, _, words = self.update("--file", self.image, "--port", "COM9")
        self.assertNotIn(LEFT, words)

    def test_a_device_that_is_unplugged(self):
        self.plug("baud=19200,fault=unplug@20,replug=500")
        status, log, words = self.update("--file", self.image)
        self.assertEqual(status, 5, log + words)
        self.assertIn("Programming... < NG", log)
        ports = self.folder / "config" / "Corvane" / "serialcomm.conf"
        self.wait_until(lambda: "COM1=" in ports.read_text())
        status, log, words = self.update("--file", self.image, "--force")
        self.assertEqual(status, 0, log + words)
        self.assertIn(LEFT, words)
        self.assertIn("memory equals image", self.unplug())


if __name__ == "__main__":
    unittest.main()
