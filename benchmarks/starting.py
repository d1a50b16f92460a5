"""Starting and closing."""

import json
import pathlib
import subprocess
import sys

from programming import Programming
from programs import Bench, checked
from table import median

SUPPORT = pathlib.Path(__file__).resolve().parent.parent / "tests" / "support"
ROUNDS = 9


def version(programs):
    command = [programs.path("corvane-cli"), "--version"]
    return checked(command, **programs.environment()).seconds * 1000


def shown(programs):
    done = checked([programs.path("corvane-windowrun"), "--only-show"], **programs.environment())
    return done.number(r"was there after ([\d.]+) ms")


class Site:
    """The tests' FTP server with a firmware folder, as a context."""

    def __init__(self, programs):
        self.root = programs.folder / "site"
        firmware = self.root / "firmware"
        firmware.mkdir(parents=True, exist_ok=True)
        for name, source in (("firmware.inf", "firmware.inf"), ("bench.hex", "Download/bench.hex")):
            (firmware / name).write_bytes(programs.path(source).read_bytes())

    def __enter__(self):
        options = json.dumps({"root": str(self.root), "accounts": {"upd": "pw"}})
        self.process = subprocess.Popen([sys.executable, str(SUPPORT / "ftp_site.py"), options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.port = self.process.stdout.readline().split()[1]
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()


def closing(programs):
    """An update from a site whose server then falls silent while the window still has its session."""
    work = Programming(programs, 921600)
    work.programs.write("Download/bench.hex", "\n".join(work.image.read_text().splitlines()[:40]) + "\n:00000001FF\n")
    with Site(programs) as site:
        settings = ["FTP/OffLine=False", "FTP/UserName=upd", "FTP/Password=pw", "FTP/Server=127.0.0.1:" + site.port]
        with Bench(programs, "kind=TarnPlus,baud=19200,boot-baud=921600", settings=settings) as bench:
            command = [programs.path("corvane-windowrun"), "--freeze", site.process.pid]
            done = checked(command, **programs.environment(**bench.variables))
    return done.number(r"closing took ([\d.]+) ms")


def measure(table, programs):
    table.head("Starting and closing")
    table.row("corvane-cli --version", median([version(programs) for _ in range(3 * ROUNDS)]), 20, "ms", digits=1)
    table.row("until the window is shown", median([shown(programs) for _ in range(ROUNDS)]), 300, "ms", digits=1)
    table.row("closing the window with a silent server", median([closing(programs) for _ in range(3)]), 100, "ms", digits=1)
