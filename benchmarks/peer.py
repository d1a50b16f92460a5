"""The avrdude command on the same kind of line, for comparison: a device of its protocol (STK500 version 1) behind a paced
pseudo-terminal. Pages of 128 bytes have eight times fewer turnarounds than records of 16."""

import os
import shutil
import subprocess
import threading
import time
import tty

from programs import Failure
from table import median
import programming

RATE = 115200
BYTES = 28 * 1024
OK, IN_SYNC, END = b"\x10", b"\x14", 0x20
LENGTHS = {0x41: 2, 0x42: 21, 0x45: 6, 0x55: 3, 0x56: 5, 0x74: 4}  # of commands with parameters, without the end
LOAD_ADDRESS, PROGRAM_PAGE = 0x55, 0x64


SIGNATURE = b"\x1E\x95\x0F"  # of a part with 32 KiB


def answer(command):
    if command[0] == 0x56 and command[1] == 0x30:
        return SIGNATURE[command[3]:command[3] + 1]
    if command[0] == 0x75:
        return SIGNATURE
    if command[0] == 0x74:
        return bytes(command[1] * 256 + command[2])
    return b"\x03" if command[0] in (0x41, 0x56) else b""


class Peer(threading.Thread):
    """Hears bytes when they have crossed the line, and answers so that they have crossed it when they are read."""

    def __init__(self, master):
        super().__init__(daemon=True)
        self.master, self.first, self.last, self.bytes = master, None, None, 0

    def run(self):
        heard, free = b"", 0.0
        try:
            while True:
                more = os.read(self.master, 4096)
                free = max(free, time.monotonic()) + len(more) * 10 / RATE
                heard += more
                while heard and len(heard) > self.length(heard):
                    command, heard = heard[:self.length(heard) + 1], heard[self.length(heard) + 1:]
                    free = self.reply(command, free)
        except OSError:
            pass  # the other side has closed it

    @staticmethod
    def length(heard):
        if heard[0] == PROGRAM_PAGE:
            return 4 + heard[1] * 256 + heard[2] if len(heard) > 3 else 4096
        return LENGTHS.get(heard[0], 1)

    def reply(self, command, heard_at):
        text = IN_SYNC + answer(command) + OK
        if command[0] == LOAD_ADDRESS and self.first is None:
            self.first = heard_at - len(command) * 10 / RATE
        due = heard_at + len(text) * 10 / RATE
        while time.monotonic() < due:
            time.sleep(max(0, due - time.monotonic() - 0.0005))
        os.write(self.master, text)
        if self.first is not None and command[0] in (LOAD_ADDRESS, PROGRAM_PAGE):
            self.bytes += len(command) + len(text)
            self.last = due
        return due


def once(folder):
    master, slave = os.openpty()
    tty.setraw(slave)
    peer = Peer(master)
    peer.start()
    done = subprocess.run(["avrdude", "-c", "stk500v1", "-p", "m328p", "-P", os.ttyname(slave), "-b", str(RATE), "-D", "-V", "-U",
                           "flash:w:%s:i" % (folder / "peer.hex")], capture_output=True, text=True, timeout=60)
    os.close(slave)
    os.close(master)
    if done.returncode or not peer.bytes:
        raise Failure(done.stderr)
    return (peer.last - peer.first) / (peer.bytes * 10 / RATE)


def measure(table, programs):
    table.head("The avrdude command on such a line, pages of 128 bytes, elapsed / wire time")
    if not shutil.which("avrdude"):
        return table.note("it is not installed")
    lines = programming.image(BYTES).splitlines()[4:]
    (programs.folder / "peer.hex").write_text("\n".join(lines) + "\n")
    table.row("%d baud" % RATE, median([once(programs.folder) for _ in range(3)]), None)
