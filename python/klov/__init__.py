"""libklov for Python: receipts, commands, models and printers.

>>> import klov
>>> with klov.Receipt(model="QX-100") as receipt:
...     _ = receipt.text("CORNER CAFE", align="centre", bold=True)
...     _ = receipt.columns("Coffee", "2.80").cut()
>>> klov.commands.set_left_margin(1, 24).hex(" ")
'1d 4c 18 00'
>>> klov.commands.select_justification(1, 7)
Traceback (most recent call last):
...
klov._encode.KlovError: Parameter is error. Please check the parameter is corrected. (-1)
"""

from . import commands, constants
from ._encode import KlovError, error_text
from .models import Model, find_model, library_version, models
from .printers import FilePrinter, QueuePrinter, SocketPrinter, VirtualPrinter
from .receipt import Preview, Receipt
from .status import Status

__all__ = ["FilePrinter", "KlovError", "Model", "Preview", "QueuePrinter", "Receipt", "SocketPrinter", "Status",
           "VirtualPrinter", "commands", "constants", "error_text", "find_model", "library_version", "models"]
