"""What all end-to-end tests share: one scheduler a module, listeners that play printers, comparisons of dots."""

import os
import shutil
import socket
import sys
import tempfile
import threading
import time
import unittest

import escpos
import preview
import raster
from scheduler import Scheduler

sys.path.insert(0, os.path.join(os.environ["KLOV_SOURCE"], "tests", "ppd"))
import tables  # noqa: E402, F401  (the readers of the model and option tables)

# Behind ours: both folders have a module for raster streams.
sys.path.append(os.path.join(os.environ["KLOV_SOURCE"], "tests", "filter", "process"))
import bounded  # noqa: E402

PATIENCE = 60


def start_scheduler(documents=False):
    """For setUpModule: a scheduler that is stopped after the module's last test."""
    cups = Scheduler(documents)
    cups.__enter__()
    unittest.addModuleCleanup(cups.__exit__)
    return cups


def work_folder():
    folder = tempfile.mkdtemp(prefix="klov-documents-")
    unittest.addModuleCleanup(shutil.rmtree, folder)
    return folder


def dots(millimetres, dpi=203):
    return int(millimetres / (25.4 / dpi))


def split_at_ink(commands):
    """The commands before the first ink, and those after the last."""
    inked = [i for i, command in enumerate(commands) if isinstance(command, escpos.Raster) and any(command.data)]
    return commands[:inked[0]], commands[inked[-1] + 1:]


class Listener:
    """A network printer on loopback. A held one takes nothing until it is released."""

    def __init__(self, held=False):
        self.jobs = []
        self.open_connections = 0
        self.released = threading.Event()
        if not held:
            self.released.set()
        self.socket = socket.socket()
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.listen(8)
        self.device = "socket://127.0.0.1:%d/?waiteof=false" % self.socket.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            self.open_connections += 1
            with connection:
                self.released.wait()
                data = b""
                while block := connection.recv(65536):
                    data += block
            self.jobs.append(data)
            self.open_connections -= 1

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.released.set()
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()

    def wait_for_jobs(self, count):
        wait_until(lambda: len(self.jobs) >= count, "%d jobs at the printer" % count)
        return self.jobs


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("waited in vain for " + what)
        time.sleep(0.05)


class PrintTest(unittest.TestCase):
    failureException = bounded.Failure

    def assert_same_dots(self, data, raster_path, width):
        """The paper shows the rows of the raster that CUPS made; blank ends of pages are left out.

        The tests' own reader says so and, where it is built, the virtual printer too."""
        pages = raster.read_pages(raster_path)
        expected = []
        for page in pages:
            rows = escpos.without_blank_end(raster.rows_of(page, width))
            expected += rows * page.copies
        self.assertTrue(any(map(any, expected)), "the raster has no ink")
        rows = escpos.without_blank_end(escpos.picture(escpos.read_commands(data), width))
        self.assertEqual(len(rows), len(expected))
        for number, (row, wanted) in enumerate(zip(rows, expected)):
            self.assertEqual(row, wanted, "row %d" % number)
        if preview.TOOL:
            drawn = escpos.without_blank_end(preview.rows(data, width))
            self.assertTrue(drawn == rows, "the virtual printer draws something else")
        return pages
