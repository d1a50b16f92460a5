"""What a program costs that only waits."""

from programs import Bench, checked


def share(programs, device):
    """Of one core, during a scan for a device that hears and never answers."""
    with Bench(programs, device) as bench:
        done = checked([programs.path("corvane-cli"), "scan"], statuses=(3,), **programs.environment(**bench.variables))
    return done.share()


def measure(table, programs):
    table.head("Processor share while waiting for a silent device, of one core")
    for name, device, limit in (("serial port", "kind=silent", 2), ("HID reader", "kind=silent,hid=yes", 4)):
        table.row(name, share(programs, device), limit, "%", digits=2)
