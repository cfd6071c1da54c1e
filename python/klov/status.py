"""What a printer answers."""

from ctypes import byref
from dataclasses import dataclass

from . import _native, commands
from ._encode import KlovError
from .constants import RealTime


@dataclass(frozen=True)
class Status:
    """How a printer is.

    >>> Status(cover_open=True).ready
    False
    """

    cover_open: bool = False
    paper_near_end: bool = False
    paper_end: bool = False
    drawer_high: bool = False  # the level at pin 3 of the drawer's connector

    @property
    def ready(self) -> bool:
        """Whether it can print: cover closed, paper there."""
        return not self.cover_open and not self.paper_end


# The questions whose answers make a status, each with one byte back.
QUESTIONS = (RealTime.PRINTER, RealTime.OFFLINE, RealTime.PAPER)


def question(printer_class: int, which: int) -> bytes:
    """The request for one byte of status.

    >>> question(1, RealTime.PAPER).hex(" ")
    '10 04 04'
    """
    return commands.transmit_real_time_status(printer_class, which)


def read(printer_class: int, answers: bytes) -> Status:
    """The status out of the answers to QUESTIONS, in their order.

    >>> read(1, bytes([0x12, 0x16, 0x7E]))
    Status(cover_open=True, paper_near_end=True, paper_end=True, drawer_high=False)
    """
    record = _native.PrinterStatus()
    for which, answer in zip(QUESTIONS, answers, strict=True):
        code = _native.klov_cmd_parse_real_time_status(printer_class, which, answer, byref(record))
        if code:
            raise KlovError(code)
    return Status(bool(record.cover_open), bool(record.paper_near_end), bool(record.paper_end),
                  bool(record.drawer_pin3))
