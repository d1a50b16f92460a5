"""Programming over the paced bench: elapsed time beside the wire time of the bytes exchanged, as its transcript has them.

Program and bench take turns, wherever the system puts them. A pseudo-terminal hands bytes over through a thread of the
kernel, which has to wake up twice a record: that is no real line's, and the bench takes off the least that it can take.
What it costs two loops that never sleep stands beside the program's figures: less is not to be had on this machine. With
both on one processor, which is awake whenever one of the two is, it costs less; a fast line can so come out 1 or 2 %
faster than it is.
"""

import contextlib
import os
import re
import zipfile

from programs import Bench, Failure, checked
from table import median

IMAGE_BYTES = 64 * 1024
LIMITS = {19200: 1.012, 57600: 1.012, 115200: 1.012, 921600: 1.08}
PAUSES = {  # seconds
    "after opening the port": 0.05,
    "after a change of its settings, of the scan and of the last question": 2 * 0.05,
    "for a prompt before the first question": 2 * (0.05 + 0.1),
    "until the line has been silent": 0.5,
    "for the boot loader's start": 1,
    "before its prompt": 0.05,
    "before and after the restart": 0.05 + 0.05 + 0.25,
}
LINE = re.compile(r"(?:COM|HID)\d+ +([\d.]+) ([<>]) (\d+) (.*)$")
ONE_BYTE = re.compile(r"\\x[0-9A-F]{2}|.")


def record(address, data=b"", kind=0):
    body = bytes((len(data), address >> 8 & 0xFF, address & 0xFF, kind)) + data
    return ":" + (body + bytes((-sum(body) & 0xFF,))).hex().upper()


def image(size):
    """Records of 16 bytes, with an address record at the start of each further 64 KiB."""
    lines = ["[INFO]", "PGM=TARN-R200", "VER=V5.2R1", "BUD=2024/01/31"]
    for at in range(0, size, 16):
        if at and at % 0x10000 == 0:
            lines.append(record(0, bytes((0, at >> 16)), 4))
        lines.append(record(at, bytes((at // 16 * 7 + i * 31) % 255 for i in range(16))))
    return "\n".join(lines + [record(0, kind=1)]) + "\n"


def information(rate):
    return ("[PGM_R200]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=For the bench\nFILE=/firmware/bench.hex\n"
            "ISP_BAUDRATE=%d\n" % rate)


def ratio(transcript, rate):
    """From the first byte of the first record to the last answer."""
    first = last = None
    total = seen = 0
    for line in transcript.read_text("latin-1").splitlines():
        moment, direction, speed, text = LINE.match(line).groups()
        if first is None:
            if direction != ">" or not text.startswith(":"):
                continue
            first = float(moment)
        if int(speed) != rate:
            break
        total += len(ONE_BYTE.findall(text))
        if direction == "<":
            last, seen = float(moment), total
    if last is None:
        raise Failure("no record in the transcript")
    return (last - first) / (seen * 10 / rate)


def rate(transcript):
    """Records a second, from the first one to the last."""
    moments = [float(match.group(1)) for match in map(LINE.match, transcript.read_text("latin-1").splitlines())
               if match.group(2) == ">" and match.group(4).startswith(":")]
    return (len(moments) - 1) / (moments[-1] - moments[0])


class Programming:
    """Runs of one rate. The rates are the boot loader's; the application always speaks at 19200."""

    def __init__(self, programs, rate):
        self.programs, self.rate = programs, rate
        self.image = programs.write("Download/bench.hex", image(IMAGE_BYTES))
        programs.write("firmware.inf", information(rate))

    def once(self, command, device="kind=TarnPlus,baud=19200,boot-baud=%d"):
        """One update: its ratio and the program's run."""
        transcript = self.programs.folder / "transcript"
        bench = Bench(self.programs, device % self.rate, "--transcript", transcript, "--image", self.image, "--verify")
        with bench:
            done = checked(command, **self.programs.environment(**bench.variables))
        if bench.status != 0:
            raise Failure(bench.report.read_text())
        return ratio(transcript, self.rate), done

    def transcript(self):
        return (self.programs.folder / "transcript").read_text("latin-1")

    def console(self):
        return self.once([self.programs.path("corvane-cli"), "update", "--offline", "--yes"])

    def window(self):
        return self.once([self.programs.path("corvane-windowrun")])


@contextlib.contextmanager
def on_one_processor():
    """What is started meanwhile stays on one."""
    before = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {max(before)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, before)


def whole(table, programs, rounds):
    """A plain update from opening the port to closing it, beside its wire time and the pauses that the dialogue asks for.
    """
    work = Programming(programs, 115200)
    report = programs.folder / "whole.corvane-report"
    command = [programs.path("corvane-cli"), "update", "--offline", "--yes", "--report", report]
    results = []
    for _ in range(rounds):
        work.once(command, "kind=TarnPlus,baud=19200,boot-baud=%d,next-version=TARN-R200 V5.2R1")
        wire = sum(len(ONE_BYTE.findall(text)) * 10 / int(speed) for _, _, speed, text in
                   (LINE.match(line).groups() for line in work.transcript().splitlines()))
        moments = {line.split()[1]: int(line.split()[0]) / 1e6 for line in
                   zipfile.ZipFile(report).read("recording.txt").decode("latin-1").splitlines()[1:]}
        results.append((moments["close"] - moments["open"]) / (wire + sum(PAUSES.values())))
    table.row("a plain update of 64 KiB at 115200 baud, whole", median(results), 1.02)


def measure(table, programs, build, rounds, rounds_on_one):
    """The rounds say how often each rate is run, by rate: anywhere, and on one processor."""
    shares, waits = {}, []

    def rows(rate, times, limit):
        work = Programming(programs, rate)
        for name, once in (("console", work.console), ("window", work.window)):
            results = [once() for _ in range(times)]
            table.row("%d baud, %s" % (rate, name), median([result for result, _ in results]), limit)
            if (rate, name) not in shares:
                shares[rate, name] = median([done.share() for _, done in results])
            if name == "window":
                waits.extend(done.number(r"waited at most ([\d.]+) ms") for _, done in results)

    table.head("Programming 64 KiB in records of 16 bytes, elapsed / wire time")
    for rate, times in rounds.items():
        rows(rate, times, LIMITS[rate])
        floors = [checked([build / "bench_line_floor", rate]).number(r"floor ([\d.]+)") for _ in range(times)]
        table.row("%d baud, two loops that never sleep" % rate, median(floors), None)
    whole(table, programs, min(rounds.values()))
    table.head("The same with program and device on one processor")
    with on_one_processor():
        for rate, times in rounds_on_one.items():
            rows(rate, times, None)
    table.head("Meanwhile")
    for (rate, name), share in shares.items():
        table.row("processor share of the %s at %d baud" % (name, rate), share, 25, "%", digits=1)
    table.row("longest wait of an event in the window, pauses apart", max(waits), 100, "ms", digits=1)
