"""What has a program of its own that measures it: the FTP reader and the HID transport."""

from programs import checked
from table import median

ROUNDS = 3
MIB = 256


def ftp(table, build):
    table.head("FTP over loopback, %d MiB" % MIB)
    runs = [checked([build / "bench_ftp_rate", MIB]) for _ in range(ROUNDS)]

    def figure(pattern):
        return median([run.number(pattern) for run in runs])

    table.row("download, rate / that of the curl command", figure(r"ratio +([\d.]+)"), 0.9, at_least=True, digits=2)
    table.row("memory at its peak, more than before", figure(r"memory +(\d+)") / 1024, 4, "MiB", digits=1)
    table.row("longest time without a turn for other events", figure(r"longest wait +([\d.]+)"), 100, "ms", digits=1)
    table.row("Disconnect with a silent server", figure(r"closing +([\d.]+)"), 100, "ms", digits=2)


def hid(table, build):
    program = build / "bench_hid"
    if not program.exists():
        return
    table.head("Programming through a HID reader")
    done = checked([program])
    table.row("reports a second / those of the bare exchange", done.number(r"ratio ([\d.]+)"), 0.8, at_least=True, digits=2)
    table.row("reports a second", done.number(r"programming ([\d.]+)"), None, digits=0)
