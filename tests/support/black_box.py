"""What the tests of the programs themselves share: a folder with a home and an image in it, a bench, a site."""

import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import unittest

LIMIT = 60      # seconds after which a test is lost, whatever it waits for


def pause(seconds):
    select.select([], [], [], seconds)


def until(condition, meanwhile=lambda: None):
    """Whether it comes to be in time; looks twenty times a second."""
    for _ in range(LIMIT * 20):
        if condition():
            return True
        meanwhile()
        pause(0.05)
    return False


def record(address, data=b"", kind=0):
    body = bytes((len(data), address >> 8, address & 0xFF, kind)) + data
    return ":" + (body + bytes((-sum(body) & 0xFF,))).hex().upper()


def image(records):
    lines = ["[INFO]", "PGM=TARN-R200", "VER=V5.2R1", "BUD=2024/01/31"]
    lines += [record(16 * n, bytes((n * 7 + i) % 255 for i in range(16))) for n in range(records)]
    return "\n".join(lines + [record(0, b"", 1)]) + "\n"


def start_site(test, root, accounts, **faults):
    """A server with this folder until the test ends; its address."""
    options = json.dumps({"root": str(root), "accounts": accounts, **faults})
    server = subprocess.Popen(["/usr/bin/python3", str(pathlib.Path(__file__).with_name("ftp_site.py")), options],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    test.addCleanup(server.communicate)
    return "127.0.0.1:" + server.stdout.readline().split()[1]


class ProgramTest(unittest.TestCase):
    """Every test has a folder of its own; the image has so many records."""
    records = 30

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="corvane-test-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.image = self.folder / "image.hex"
        self.image.write_text(image(self.records))
        self.report = self.folder / "report"

    def own(self, program):
        """A copy of a program, so that downloads lie beside it and in no one else's way."""
        (self.folder / "bin").mkdir(exist_ok=True)
        return pathlib.Path(shutil.copy2(program, self.folder / "bin"))

    def environment(self, **more):
        leaks = pathlib.Path(__file__).with_name("leaks.supp")
        return dict(os.environ, LSAN_OPTIONS=f"suppressions={leaks}:print_suppressions=0", HOME=str(self.folder),
                    XDG_CONFIG_HOME=str(self.folder / "config"), XDG_DATA_HOME=str(self.folder / "data"),
                    CORVANE_FTP_PASSWORD="pw", LC_ALL="C.UTF-8", **more)

    def bench(self, program, device, *command, setting="FTP/OffLine=False"):
        """The bench, with or without a command that it runs; it says at the end whether the memory equals the image."""
        words = [program, "--config-dir", self.folder / "config", "--device", device, "--image", self.image, "--verify",
                 "--report", self.report, "--setting", setting]
        return [str(word) for word in words + (["--", *command] if command else [])]

    def plug(self, program, device, **options):
        """The bench, with its ports there, until unplug: its command does nothing but tell that."""
        words = self.bench(program, device, "sh", "-c", "echo; exec cat", **options)
        self.process = subprocess.Popen(words, env=self.environment(), stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(self.process.kill)
        self.assertEqual(self.process.stdout.readline(), b"\n", "the bench did not start")

    def unplug(self):
        """Ends the bench; its exit status and what it reports of the device."""
        self.process.communicate(timeout=LIMIT)
        return self.process.returncode, self.report.read_text()

    def site(self, baud, **faults):
        """A server with the image, for which it names this rate of the boot loader; its address."""
        root = self.folder / "site"
        (root / "firmware").mkdir(parents=True, exist_ok=True)
        shutil.copy2(self.image, root / "firmware" / "a.hex")
        (root / "firmware" / "firmware.inf").write_text(
            "[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/firmware/a.hex\nISP_BAUDRATE=%d\n" % baud)
        return start_site(self, root, {"upd": "pw"}, **faults)
