"""The table of a benchmark run: what was measured beside its limit."""

import statistics
import sys


class Table:
    """Rows are printed as they come; misses() says how many went over their limits."""

    def __init__(self):
        self.missed = []
        print("%-58s %10s   %s" % ("", "measured", "limit"), flush=True)

    def head(self, text):
        print("\n" + text, flush=True)

    def row(self, name, value, limit, unit="", at_least=False, digits=3):
        """A limit of None makes it a figure to look at."""
        measured = "%.*f" % (digits, value)
        bad = limit is not None and (value < limit if at_least else value > limit)
        if bad:
            self.missed.append(name)
        bound = "" if limit is None else "%s %g%s" % (">=" if at_least else "<=", limit, unit and " " + unit)
        print("  %-56s %10s   %-12s %s" % (name, measured + (unit and " " + unit), bound, "MISSED" if bad else ""),
              flush=True)

    def note(self, text):
        print("  (%s)" % text, flush=True)

    def failed(self, name, why):
        """A measurement that could not be made counts as missed."""
        self.missed.append(name)
        print("  %-56s %s" % (name, "FAILED"), flush=True)
        print(why, file=sys.stderr, flush=True)


def median(values):
    return statistics.median(values)
