"""A running filter that is spoken to step by step: raster in, printer bytes and messages out, signals in between."""

import fcntl
import os
import select
import signal
import subprocess
import time

import harness
from outcome import Outcome

SMALL_PIPE = 4096


class Session:
    """A running filter whose three streams are pipes of ours."""

    def __init__(self, work, raster_path=None):
        self.work = work
        self.process = harness.start(work, raster_path, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE, bufsize=0)
        fcntl.fcntl(self.process.stdout, fcntl.F_SETPIPE_SZ, SMALL_PIPE)
        self.printed, self.messages = bytearray(), bytearray()
        self.deadline = time.monotonic() + harness.TIMEOUT

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            stream.close()

    def _more(self, stream, into, most):
        if not select.select([stream], [], [], max(0.0, self.deadline - time.monotonic()))[0]:
            raise TimeoutError("the filter stands still: %r" % bytes(self.messages[-200:]))
        piece = os.read(stream.fileno(), most)
        into += piece
        return bool(piece)

    def send(self, data):
        """Writes raster; a filter that has stopped reading is no failure here."""
        try:
            while data:
                data = data[os.write(self.process.stdin.fileno(), data):]
        except BrokenPipeError:
            pass

    def read_printed(self, count):
        """Takes printer bytes until there are `count` of them, and not one more."""
        while len(self.printed) < count:
            if not self._more(self.process.stdout, self.printed, count - len(self.printed)):
                raise AssertionError("printing ended after %d bytes" % len(self.printed))

    def read_messages_until(self, text):
        while text not in self.messages:
            if not self._more(self.process.stderr, self.messages, 65536):
                raise AssertionError("messages ended: %r" % bytes(self.messages[-200:]))

    def terminate(self):
        self.process.send_signal(signal.SIGTERM)

    def finish(self):
        """Closes the raster, reads everything that is still to come, and gives the outcome."""
        self.process.stdin.close()
        left = {self.process.stdout: self.printed, self.process.stderr: self.messages}
        while left:
            ready, _, _ = select.select(list(left), [], [], max(0.0, self.deadline - time.monotonic()))
            if not ready:
                raise TimeoutError("the filter does not end")
            for stream in ready:
                if not self._more(stream, left[stream], 65536):
                    del left[stream]
        status = self.process.wait(timeout=harness.TIMEOUT)
        return Outcome(bytes(self.printed), bytes(self.messages), harness.read_trace(), status).masked()
