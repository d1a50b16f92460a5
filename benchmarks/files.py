"""Large files: what they cost, and how the cost grows with their size."""

import math

from programming import image
from programs import checked
from table import median

SECTIONS = (10, 100, 1000, 10000, 100000)
KIB = (1, 8, 64, 512, 4096, 8192)
ROUNDS = 5
LIMIT = 1.15     # of an exponent that is to be 1


def exponent(sizes, seconds):
    """Of size, by the two largest sizes that are a factor of ten or so apart, without what the smallest one costs."""
    base = seconds[0]
    large, small = len(sizes) - 1, max(i for i in range(len(sizes)) if sizes[i] * 8 <= sizes[-1])
    return math.log((seconds[large] - base) / (seconds[small] - base)) / math.log(sizes[large] / sizes[small])


def timed(command, environment, statuses=(0,)):
    return median([checked(command, statuses, **environment()).seconds for _ in range(ROUNDS)])


def sections(count):
    return "".join("[PGM_%06d]\nPRODUCT=TARN-R%03d\nVERSION=V5.%dR1\nDESC=Reads cards of the new series.\n"
                   "FILE=/firmware/images/bench.hex\nISP_BAUDRATE=57600\n\n" % (i, i % 100, i % 50) for i in range(count))


def lists(table, programs):
    table.head("corvane-cli images --offline, firmware.inf of so many sections")
    programs.write("Download/bench.hex", image(16))
    seconds = []
    for count in SECTIONS:
        programs.write("firmware.inf", sections(count))
        seconds.append(timed([programs.path("corvane-cli"), "images", "--offline"], programs.environment))
        table.row("%d sections" % count, seconds[-1] * 1000, 100 if count == 10000 else None, "ms", digits=1)
    table.row("exponent", exponent(SECTIONS, seconds), LIMIT, digits=2)


def images(table, programs, title, command, statuses):
    table.head(title)
    seconds = []
    for kib in KIB:
        path = programs.write("large.hex", image(kib * 1024))
        seconds.append(timed([programs.path("corvane-cli"), *command, path], programs.environment, statuses))
        table.row("%d KiB" % kib, seconds[-1] * 1000, None, "ms", digits=1)
    table.row("exponent", exponent(KIB, seconds), LIMIT, digits=2)


def measure(table, programs):
    lists(table, programs)
    images(table, programs, "corvane-cli check, HEX files of so much data", ["check"], (0,))
    # Without a port there is nothing to do but to load the file.
    images(table, programs, "corvane-cli update, no port, HEX files of so much data", ["update", "--yes", "--file"], (3,))
