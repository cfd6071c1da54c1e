"""What a run of the filter leaves behind, and how two such results are compared."""

import difflib
import re
from dataclasses import dataclass


@dataclass
class Outcome:
    stdout: bytes
    stderr: bytes
    trace: bytes | None  # None: no trace was to be had
    status: int

    def masked(self):
        """The same with the addresses of the bands, which differ from run to run, blotted out."""
        trace = self.trace
        if trace is not None:
            trace = re.sub(rb"\(pData:-?\d+,", b"(pData:*,", trace)
        return Outcome(self.stdout, self.stderr, trace, self.status)


def first_difference(expected, actual):
    """None when equal; else the offset and what stands around it on both sides."""
    if expected == actual:
        return None
    if expected is None or actual is None:
        return "expected %s, got %s" % (_short(expected), _short(actual))
    at = next((i for i, (a, b) in enumerate(zip(expected, actual)) if a != b), min(len(expected), len(actual)))
    start = max(0, at - 80)
    return "offset %d (%d bytes expected, %d came)\n  expected ...%r\n  actual   ...%r" % (
        at, len(expected), len(actual), bytes(expected[start:at + 80]), bytes(actual[start:at + 80]))


# Each line is the name of an option, blanks, "=" and its value.
_LISTING = re.compile(rb"(DEBUG: CUPS printing options ?\n)((?:DEBUG: \w+ *=[^\n]*\n)*)")


def _without_listing(data):
    return None if data is None else _LISTING.sub(rb"\1", data)


def listing_difference(expected, actual):
    """Where the scheduler's log lists the options otherwise than expected; empty when it does not."""
    listings = [(_LISTING.search(outcome.stderr) or [b"", b"", b""])[2].splitlines() for outcome in (expected, actual)]
    changed = [line for line in difflib.ndiff(*([line.decode("latin-1") for line in side] for side in listings))
               if line[0] in "-+"]
    if not changed:
        return ""
    return "the filter (+, filter/option_dump.cpp) and the oracle (-, tests/filter/process/oracle_options.py) list " \
        "other options:\n" + "\n".join(changed[:10])


def _short(data):
    return "nothing" if data is None else "%d bytes" % len(data)


def differences(expected, actual):
    """All that differs between two masked outcomes, as one text; empty when they agree.

    The listing of the options is left out: listing_difference() compares it, in the tests that are about it.
    """
    lines = []
    if expected.status != actual.status:
        lines.append("status: expected %d, got %d" % (expected.status, actual.status))
    for name in ("stdout", "stderr", "trace"):
        note = first_difference(_without_listing(getattr(expected, name)), _without_listing(getattr(actual, name)))
        if note is not None:
            lines.append("%s: %s" % (name, note))
    return "\n".join(lines)
