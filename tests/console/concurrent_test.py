#!/usr/bin/python3
"""Ten on-line runs at once: one copy of corvane-cli, one data folder, ten devices on pseudo-terminals. The site's ten images
are different and all have the same name, so every run finds the downloads of the others in its way.

    concurrent_test.py BIN     the folder with corvane-cli and corvane-bench
"""

import csv
import pathlib
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest, image, start_site  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1)).resolve()
RUNS = range(10)


class Concurrent(ProgramTest):
    def offer(self):
        """A site with an image for each product; its address."""
        information = ""
        for n in RUNS:
            folder = self.folder / "site" / "firmware" / str(n)
            folder.mkdir(parents=True)
            (folder / "a.hex").write_text(image(20 + n).replace("TARN-R200", "TARN-R20%d" % n))
            information += "[PGM_%d]\nPRODUCT=TARN-R20%d\nVERSION=V5.2R1\nDESC=d\nFILE=/firmware/%d/a.hex\nISP_BAUDRATE=19200\n" % (
                n, n, n)
        (folder.parent / "firmware.inf").write_text(information)
        return start_site(self, self.folder / "site", {"upd": "pw"})

    def start(self, n, server):
        """The bench with device n, its image and the run."""
        self.image, self.report = self.folder / "site" / "firmware" / str(n) / "a.hex", self.folder / ("report%d" % n)
        words = self.bench(BIN / "corvane-bench", "baud=19200,version=TARN-R20%d V5.1R23" % n,
                           "env", "XDG_DATA_HOME=%s" % (self.folder / "data"), self.cli, "update", "--server", server,
                           "--user", "upd", "--yes", "--no-verify")
        words[words.index("--config-dir") + 1] += str(n)
        process = subprocess.Popen(words, env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True)
        self.addCleanup(process.kill)
        return process

    def test_each_device_gets_its_own_image(self):
        self.cli = self.own(BIN / "corvane-cli")
        server = self.offer()
        for process in [self.start(n, server) for n in RUNS]:
            log = process.communicate(timeout=LIMIT)[0]
            self.assertEqual(process.returncode, 0, log)
        for n in RUNS:
            self.assertIn("memory equals image", (self.folder / ("report%d" % n)).read_text())
        data = next((self.folder / "data").rglob("jobs.csv")).parent
        rows = list(csv.reader((data / "jobs.csv").read_text().splitlines()))
        self.assertEqual(len(rows), 1 + len(RUNS), rows)
        self.assertEqual({len(row) for row in rows}, {len(rows[0])})
        journal = data / "interrupted-runs"
        self.assertFalse(journal.exists() and journal.read_text(), "entries are left in the journal")


if __name__ == "__main__":
    unittest.main()
