"""What a run of the filter leaves behind, and how two such results are compared."""

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


def _short(data):
    return "nothing" if data is None else "%d bytes" % len(data)


def differences(expected, actual):
    """All that differs between two masked outcomes, as one text; empty when they agree."""
    lines = []
    if expected.status != actual.status:
        lines.append("status: expected %d, got %d" % (expected.status, actual.status))
    for name in ("stdout", "stderr", "trace"):
        note = first_difference(getattr(expected, name), getattr(actual, name))
        if note is not None:
            lines.append("%s: %s" % (name, note))
    return "\n".join(lines)
