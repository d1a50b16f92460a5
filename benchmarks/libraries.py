"""The FTP reader, which has a program of its own that measures it, and the HID transport."""

import socket
import time
import zipfile

import programming
from programs import Bench, checked
from table import median

ROUNDS = 3
HID_BAUD = 4000000
MIB = 256


def ftp(table, build):
    table.head("FTP over loopback, %d MiB" % MIB)
    runs = [checked([build / "bench_ftp_rate", MIB]) for _ in range(ROUNDS)]

    def figure(pattern):
        return median([run.number(pattern) for run in runs])

    table.row("download, rate / that of the curl command", figure(r"\nratio +([\d.]+)"), 0.9, at_least=True, digits=2)
    table.row("the same, encrypted", figure(r"encrypted ratio +([\d.]+)"), 0.9, at_least=True, digits=2)
    table.row("memory at its peak, more than before", figure(r"memory +(\d+)") / 1024, 4, "MiB", digits=1)
    table.row("longest time without a turn for other events", figure(r"longest wait +([\d.]+)"), 100, "ms", digits=1)
    table.row("Disconnect with a silent server", figure(r"closing +([\d.]+)"), 100, "ms", digits=2)


def echoed(path, baud, count):
    """Reports a second that are written one by one, each as soon as the one before is answered, with nothing between."""
    def exchange(letter, report=b""):
        line.send(letter + (report.ljust(64, b"\0") if report else b""))
        return line.recv(16384)

    with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as line:
        line.connect(path)
        if exchange(b"O" + (path + ".1").encode()) != b"Y":
            raise programming.Failure("the bench's reader does not open")
        exchange(b"R", b"\x02\x06\x01\x04" + baud.to_bytes(4, "big"))
        record = programming.record(0, bytes(range(16))).encode() + b"\r"
        start = time.monotonic()
        for _ in range(count):
            exchange(b"R", bytes((1, len(record))) + record)
        return count / (time.monotonic() - start)


def exchanges(report, command):
    """Microseconds from each such command to the last piece of its reply, as the recording in a report has them."""
    sent = last = None
    for line in zipfile.ZipFile(report).read("recording.txt").decode("latin-1").splitlines():
        moment, kind, rest = (line.split(" ", 2) + ["", ""])[:3]
        if kind == "reply":
            last = int(moment)
            continue
        if sent is not None and last is not None:
            yield last - sent
        sent = int(moment) if kind == "command" and rest.endswith(" " + command) else None
        last = None


def hid(table, programs):
    """Records that are programmed through a reader of the bench, each in a report of its own. The rate is so high that the
    reports and not the line behind them set the pace."""
    table.head("Programming through a HID reader")
    work = programming.Programming(programs, HID_BAUD)
    update = [programs.path("corvane-cli"), "update", "--offline", "--yes"]
    report = programs.folder / "hid.corvane-report"
    rates, bare, commands = [], [], []
    for _ in range(ROUNDS):
        work.once([*update, "--report", report], "hid=yes,kind=TarnPlus,baud=19200,boot-baud=%d")
        rates.append(programming.rate(programs.folder / "transcript"))
        commands += exchanges(report, "\\x04\\x00")
        with Bench(programs, "hid=yes,kind=boot,baud=%d" % HID_BAUD) as bench:
            bare.append(echoed(bench.variables["CORVANE_BENCH_SOCKET"], HID_BAUD, 2000))
    table.row("reports a second / those of the bare exchange", median(rates) / median(bare), 0.8, at_least=True, digits=2)
    table.row("reports a second", median(rates), None, digits=0)
    table.row("a command with results (the reader's version)", median(commands) / 1000, 3, "ms", digits=1)
