"""What the tests of single jobs share: how a job is put together and how its outcome is looked at."""

import re
import unittest

import bounded
import harness
import oracle
import oracle_commands
import raster
from outcome import differences
from ppd import Option, Ppd, Size

INK = b"\xff"


def hexed(text):
    """Bytes from their hexadecimal digits; blanks are for the eye."""
    return bytes.fromhex(text)


def job(*pages, options="", ppd=None, version=3, order="<", **more):
    """A job of (header, rows) pages on a printer of the catalogue's first brand."""
    return oracle.Job(raster=raster.stream(pages, version, order), options=options.encode(),
                      ppd=Ppd() if ppd is None else ppd, ppd_path=harness.path("test.ppd").encode(), **more)


def page(*rows, copies=1, **fields):
    """A page of these rows, all of one width."""
    return raster.header(len(rows[0]), len(rows), copies, **fields), b"".join(rows)


def blank(width, count):
    return [bytes(width)] * count


def inked(width, count):
    return [INK * width] * count


def roll(name="72x200", right="204", **more):
    """A PPD with one page size, its default."""
    return Ppd(sizes=[Size(name, ("0", "0", right, "600"), (right, "600"))], default_size=name, **more)


def choice(keyword, default, *others):
    """A PPD option with its default choice."""
    return Option(keyword, (default,) + others, default)


class JobTest(unittest.TestCase):
    maxDiff = None
    failureException = bounded.Failure

    @classmethod
    def setUpClass(cls):
        harness.prepare()

    def run_job(self, work, **how):
        """Runs a job, holds every channel to the oracle, and gives the outcome."""
        actual = harness.run(work, **how)
        self.assertEqual(differences(oracle.run(work).masked(), actual), "")
        return actual

    def assert_prints(self, work, *pieces):
        """The job ends well, and its printer bytes are these."""
        actual = self.run_job(work)
        self.assertEqual(actual.status, 0)
        self.assertEqual(actual.stdout.hex(" "), b"".join(pieces).hex(" "))
        return actual


def raster_command(width, rows, mode=0):
    """The head of a raster command of literal bytes `rows` or of that many rows."""
    return oracle_commands.raster_header(1, mode, width, rows)[1]


def white(rows):
    """A feed of so many rows: a white image eight dots wide."""
    return raster_command(1, rows) + bytes(rows)


def trace_lines(actual, pattern):
    """The lines of the trace in which the pattern stands."""
    return [line.decode("latin-1") for line in actual.trace.split(b"\n") if re.search(pattern, line)]
