"""A printer of the tests' own: it keeps every byte that it printed, in order, and its moods can be changed at any time.

The virtual printer draws paper; this one proves that the bytes which were printed are those of the job, each once, and
says things that no good printer says."""

import os
import select
import socket
import threading
import time

DLE_EOT, DLE_DC4 = b"\x10\x04", b"\x10\x14"
CLEAR = bytes([0x10, 0x14, 8, 1, 3, 20, 1, 6, 2, 8])
FIXED = {b"\x1bJ": 3, b"\x1dV": 4, b"\x1ba": 3, b"\x1b3": 3, b"\x1dE": 3, b"\x1dL": 4, b"\x1bp": 5, b"\x1b@": 2,
         b"\x1da": 3, b"\x1dr": 3, b"\x1dI": 3, b"\x1ci": 3}


def command_length(data):
    """Of the first command in data; None while its head is not complete."""
    if data[0] not in (0x1B, 0x1C, 0x1D):
        return 1
    if len(data) < 2:
        return None
    head = bytes(data[:2])
    if head == b"\x1dv":
        return 8 + (data[4] + 256 * data[5]) * (data[6] + 256 * data[7]) if len(data) >= 8 else None
    if head in (b"\x1d(", b"\x1b(", b"\x1c("):
        return 5 + data[3] + 256 * data[4] if len(data) >= 5 else None
    return FIXED.get(head, 2)


class Till:
    """Serve one connection after the other: serve(read descriptor, write descriptor) or listen()."""

    def __init__(self, speed=4e6, buffer=4096, mute=False, half_mute=False, no_automatic=False):
        self.speed, self.capacity = speed, buffer   # bytes a second; a narrow row of 72 bytes is an eighth of a mm
        self.mute, self.half_mute, self.no_automatic = mute, half_mute, no_automatic
        self.paper_out = self.paper_low = self.cover_open = self.cutter = False
        self.logos = False
        self.lock = threading.RLock()
        self.received = bytearray()     # all bytes, ours and the monitor's
        self.printed = bytearray()      # bytes of whole commands that were executed, the monitor's left out
        self.events = []                # (time, text)
        self.pending = bytearray()
        self.automatic = 0
        self.stop_after = None          # paper out when so many bytes were printed
        self.drop_after = None          # reset the connection when so many bytes came
        self.write_to = None
        self.connections = 0
        self.closing = False

    # --- moods

    def ready(self):
        return not (self.paper_out or self.cover_open or self.cutter)

    def set(self, **moods):
        with self.lock:
            for name, value in moods.items():
                setattr(self, name, value)
            self.events.append((time.monotonic(), " ".join("%s=%s" % mood for mood in moods.items())))
            if self.automatic and not self.no_automatic:
                self.say(self.automatic_status())

    def sensor(self):
        return (0x0F if self.paper_out else 0x03 if self.paper_low else 0)

    def automatic_status(self):
        return bytes([0x10 | (0x20 if self.cover_open else 0), 0x08 if self.cutter else 0, self.sensor(), 0])

    def real_time_status(self, n):
        if n == 2:
            return 0x12 | (0x04 if self.cover_open else 0) | (0x20 if self.paper_out else 0)
        if n == 3:
            return 0x12 | (0x08 if self.cutter else 0)
        if n == 4:
            return 0x12 | (0x6C if self.paper_out else 0x0C if self.paper_low else 0)
        return 0x12

    def say(self, data):
        if self.mute or self.write_to is None:
            return
        try:
            os.write(self.write_to, data)
        except OSError:
            pass

    # --- bytes

    def receive(self, data):
        """Real-time requests are answered as they come, wherever they stand."""
        self.received += data
        self.pending += data
        at = 0
        while True:
            at = self.pending.find(b"\x10", at)
            if at < 0 or at + 3 > len(self.pending):
                return
            if self.pending[at:at + 2] == DLE_EOT and 1 <= self.pending[at + 2] <= 4:
                self.say(bytes([self.real_time_status(self.pending[at + 2])]))
                del self.pending[at:at + 3]
            elif self.pending[at:at + len(CLEAR)] == CLEAR:
                self.events.append((time.monotonic(), "cleared %d" % at))
                del self.pending[:at + len(CLEAR)]
                self.say(b"\x37\x25\x00")
                at = 0
            else:
                at += 1

    def execute(self):
        """Print what is complete. Returns how many bytes were printed."""
        printed = 0
        while self.pending and self.ready():
            if self.pending[0] == 0x10 and (len(self.pending) < 3 or CLEAR.startswith(bytes(self.pending))):
                break       # the beginning of a real-time request
            length = command_length(self.pending)
            # A command may be longer than the buffer: its bytes are taken as they come.
            if length is None or length > len(self.pending):
                break
            command = bytes(self.pending[:length])
            del self.pending[:length]
            if command[:2] == b"\x1da":
                self.automatic = command[2]
                if self.automatic and not self.no_automatic:
                    self.say(self.automatic_status())
                continue
            if command[:2] == b"\x1dr":
                if not self.half_mute:
                    self.say(bytes([self.sensor()]))
                continue
            if command[:2] == b"\x1dI":
                self.say(b"_1.2.30 \0" if command[2] == 65 else bytes([command[2] + 1]))
                continue
            if command == b"\x1d(L\x04\0\x30\x40KC":
                self.say(b"\x37\x72\x41" + b"01" + b"\0" if self.logos else b"\x37\x72\x40\0")
                continue
            if command == b"\x06" and self.logos:
                self.say(b"\x37\x72\x40" + b"03AB" + b"\0")
                continue
            self.printed += command
            printed += length
            if self.stop_after is not None and len(self.printed) >= self.stop_after:
                self.stop_after = None
                self.set(paper_out=True)
        return printed

    def room(self):
        """A half command does not fill the buffer: a real printer has passed its rows on to the paper."""
        length = command_length(self.pending) if self.pending else 0
        return length is None or len(self.pending) < max(self.capacity, length or 0)

    def serve(self, read_from, write_to):
        self.write_to = write_to
        os.set_blocking(write_to, False)
        self.automatic = 0
        try:
            while not self.closing:
                with self.lock:
                    printed = self.execute()
                    wants = self.room()
                if printed:
                    time.sleep(printed / self.speed)
                    continue
                readable, _, _ = select.select([read_from] if wants else [], [], [], 0.01)
                if not readable:
                    continue
                data = os.read(read_from, 1024)
                if not data:
                    break
                with self.lock:
                    self.receive(data)
                    if self.drop_after is not None and len(self.received) >= self.drop_after:
                        self.drop_after = None
                        return False
        except OSError:
            pass
        finally:
            self.write_to = None
        while self.pending and not self.closing and self.ready() and self.execute():
            pass
        return True

    # --- network

    def listen(self):
        self.socket = socket.socket()
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.listen(8)
        self.device = "socket://127.0.0.1:%d" % self.socket.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()
        return self

    def accept(self):
        while not self.closing:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            self.connections += 1
            if not self.serve(connection.fileno(), connection.fileno()):
                linger = b"\x01\0\0\0\0\0\0\0"
                connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, linger)
            connection.close()

    def close(self):
        self.closing = True
        if hasattr(self, "socket"):
            self.socket.shutdown(socket.SHUT_RDWR)
            self.socket.close()
