"""Where the bytes go: a file or device, a socket, a queue of CUPS, the virtual printer. All are context managers."""

import os
import pathlib
import select
import socket
import subprocess
import tempfile
import time
from types import TracebackType
from typing import IO, Any, Optional, Protocol, Type

from . import status as _status


class Printer(Protocol):
    """Anything that takes bytes."""

    def send(self, data: bytes) -> None:
        """Sends all of the bytes, or raises."""


class _Closing:
    def close(self) -> None:
        """Lets the printer go."""

    def __enter__(self) -> Any:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 where: Optional[TracebackType]) -> None:
        self.close()


class _TwoWay(_Closing):
    """A printer that answers, by its file descriptor."""

    def _descriptor(self) -> int:
        raise NotImplementedError

    def send(self, data: bytes) -> None:
        """Sends all of the bytes, or raises OSError."""
        rest = memoryview(data)
        while rest:
            rest = rest[os.write(self._descriptor(), rest):]

    def status(self, printer_class: int = 1, seconds: float = 3.0) -> _status.Status:
        """Asks how the printer is. TimeoutError when it does not answer in time."""
        answers = b""
        for which in _status.QUESTIONS:
            self.send(_status.question(printer_class, which))
            answers += self._answer(time.monotonic() + seconds)
        return _status.read(printer_class, answers)

    def _answer(self, end: float) -> bytes:
        descriptor = self._descriptor()
        while select.select([descriptor], [], [], max(0.0, end - time.monotonic()))[0]:
            byte = os.read(descriptor, 1)
            if not byte:
                raise ConnectionError("the printer hung up")
            # Real-time answers have fixed bits; what else a printer says by itself is not for us.
            if byte[0] & 0x93 == 0x12:
                return byte
        raise TimeoutError("the printer does not answer")


class FilePrinter(_TwoWay):
    """A file, or a printer's device such as /dev/usb/lp0."""

    def __init__(self, path: "str | os.PathLike[str]") -> None:
        flags = os.O_RDWR if pathlib.Path(path).is_char_device() else os.O_WRONLY | os.O_CREAT | os.O_TRUNC
        self._file = os.open(path, flags | os.O_NOCTTY | os.O_CLOEXEC, 0o666)

    def _descriptor(self) -> int:
        return self._file

    def close(self) -> None:
        """Closes the file."""
        if self._file >= 0:
            os.close(self._file)
            self._file = -1


class SocketPrinter(_TwoWay):
    """A printer in the network, on its raw port."""

    def __init__(self, host: str, port: int = 9100, seconds: float = 10.0) -> None:
        self._socket = socket.create_connection((host, port), seconds)
        self._socket.settimeout(None)

    def _descriptor(self) -> int:
        return self._socket.fileno()

    def close(self) -> None:
        """Hangs up."""
        self._socket.close()


class QueuePrinter(_Closing):
    """A queue of CUPS, which gets the bytes as they are, one job a send."""

    def __init__(self, queue: str, lp: str = "lp") -> None:
        self.queue = queue
        self._lp = lp

    def send(self, data: bytes) -> None:
        """Makes one job of the bytes. subprocess.CalledProcessError when CUPS does not take it."""
        subprocess.run([self._lp, "-d", self.queue, "-o", "raw", "-"], input=data, check=True,
                       stdout=subprocess.DEVNULL)


class VirtualPrinter(SocketPrinter):
    """klov-preview in the place of a network printer: it answers, and picture() is its paper."""

    def __init__(self, width: int = 576, tool: str = "klov-preview") -> None:
        self._folder = tempfile.TemporaryDirectory(prefix="klov-")
        self._paper = pathlib.Path(self._folder.name) / "paper.png"
        self._process = subprocess.Popen(
            [tool, "--listen", "127.0.0.1:0", "--jobs", "1", "--quiet", "--width", str(width), "-o", self._paper],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        host, _, port = _announced(self._process.stderr).rpartition(":")
        super().__init__(host, int(port))

    def picture(self) -> bytes:
        """Ends the job; the paper as a PNG file's bytes."""
        self._socket.close()
        self._process.communicate(timeout=60)
        return self._paper.read_bytes()

    def close(self) -> None:
        """Hangs up and throws the paper away."""
        super().close()
        if self._process.poll() is None:
            self._process.terminate()
        self._process.communicate()
        self._folder.cleanup()


def _announced(lines: Optional[IO[str]]) -> str:
    line = lines.readline() if lines is not None else ""
    if not line.startswith("listening on "):
        raise OSError(f"klov-preview does not listen: {line.strip()}")
    return line.removeprefix("listening on ").strip()


def paint(data: bytes, width: int = 576, tool: str = "klov-preview") -> bytes:
    """The paper that these bytes make, as a PNG file's bytes."""
    with tempfile.TemporaryDirectory(prefix="klov-") as folder:
        path = pathlib.Path(folder) / "paper.png"
        subprocess.run([tool, "-", "-o", path, "--quiet", "--width", str(width)], input=data, check=True)
        return path.read_bytes()
