#!/usr/bin/python3
"""Measures the programs of a release build against their budgets and prints a table. Exit status 1 when one is missed.

    benchmarks/bench.py FOLDER [GROUP...]     FOLDER holds the programs; groups: start wait ftp hid files peer program
"""

import os
import pathlib
import sys

import files
import libraries
import peer
import programming
import starting
import waiting
from programs import Failure, Programs
from table import Table

ROUNDS = {19200: 1, 57600: 1, 115200: 3, 921600: 5}
ROUNDS_ON_ONE = {115200: 1, 921600: 3}


def main(build, wanted):
    table = Table()
    table.note("load of the machine before: %.1f %.1f %.1f, %d processors" % (*os.getloadavg(), os.cpu_count()))
    with Programs(build) as programs:
        groups = {
            "start": lambda: starting.measure(table, programs),
            "wait": lambda: waiting.measure(table, programs),
            "ftp": lambda: libraries.ftp(table, build),
            "hid": lambda: libraries.hid(table, programs),
            "files": lambda: files.measure(table, programs),
            "peer": lambda: peer.measure(table, programs),
            "program": lambda: programming.measure(table, programs, build, ROUNDS, ROUNDS_ON_ONE),
        }
        if not set(wanted) <= set(groups):
            sys.exit(__doc__)
        for name in wanted or groups:
            try:
                groups[name]()
            except (Failure, OSError, ValueError) as failure:
                table.failed(name, failure)
    table.head("%d missed: %s" % (len(table.missed), ", ".join(table.missed)) if table.missed else "Every budget is met.")
    return 1 if table.missed else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2:]))
