#!/usr/bin/python3
"""The window's program on a display of its own: no signal of a terminal, a desktop or a system ends it while it programs. Only
on such a display does it have the threads, beside its one, that a signal could reach.

    signals_test.py BIN     the folder with corvane and corvane-bench
"""

import os
import pathlib
import select
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, ProgramTest  # noqa: E402

BIN = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else "build/bin").resolve()
SIGNALS = "HUP INT TERM QUIT USR1 USR2 ALRM VTALRM PROF XCPU XFSZ IO PIPE PWR STKFLT RTMIN RTMAX".split()


class Signals(ProgramTest):
    records = 60

    def display(self):
        """An X server without a window manager; its name."""
        near, far = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(far), "-nolisten", "tcp", "-screen", "0", "1280x800x24"],
                                  pass_fds=[far], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        os.close(far)
        with os.fdopen(near) as words:
            return ":" + words.readline().strip()

    def until(self, condition, meanwhile=lambda: None):
        for _ in range(LIMIT * 5):
            if condition():
                return
            meanwhile()
            select.select([], [], [], 0.2)
        self.fail("this does not come")

    def test_none_ends_a_program_that_programs(self):
        program = self.own(BIN / "corvane")
        (program.parent / "Download").mkdir()
        (program.parent / "Download" / "a.hex").write_text(self.image.read_text())
        (program.parent / "firmware.inf").write_text("[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/a.hex\n")
        self.plug(BIN / "corvane-bench", "baud=19200,boot-baud=19200,next-version=TARN-R200 V5.2R1", setting="FTP/OffLine=True")
        environment = self.environment(DISPLAY=self.display(), QT_QPA_PLATFORM="xcb")
        window = subprocess.Popen([str(program)], env=environment, stdin=subprocess.DEVNULL)
        self.addCleanup(window.kill)

        def agree():  # the button at hand is the one to go on with, in the window and in each question
            subprocess.run(["xdotool", "key", "Return"], env=environment, check=False)
        journal = self.folder / "data" / "Corvane" / "interrupted-runs"
        self.until(lambda: journal.exists() or window.poll() is not None, agree)
        for name in SIGNALS:
            window.send_signal(getattr(signal, "SIG" + name))
        self.assertEqual(window.wait(LIMIT), 0)
        status, report = self.unplug()
        self.assertEqual(status, 0, report)
        self.assertFalse(journal.exists())


if __name__ == "__main__":
    unittest.main()
