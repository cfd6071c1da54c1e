"""The status example against printers played by this test, at a socket and at a pseudo-terminal."""

import os
import pty
import re
import select
import socket
import subprocess
import threading
import time
import unittest

STATUS = os.environ["KLOV_STATUS"]

HEALTHY = {1: b"\x12", 2: b"\x12", 3: b"\x12", 4: b"\x12"}
TROUBLED = {1: b"\x1a", 2: b"\x16", 3: b"\x72", 4: b"\x7e"}

HEALTHY_WORDS = ["drawer connector, pin 3: low", "cover: closed", "error status: 0x12", "paper: there"]
TROUBLED_WORDS = ["drawer connector, pin 3: high", "cover: open", "error status: 0x72", "paper: at its end"]


class Printer(threading.Thread):
    """Answers DLE EOT n on a descriptor with the bytes it was given, and keeps what it was sent."""

    def __init__(self, descriptor, answers):
        super().__init__(daemon=True)
        self.descriptor = descriptor
        self.answers = answers
        self.received = b""
        self.stopped = threading.Event()

    def run(self):
        answered = 0
        while not self.stopped.is_set():
            if not select.select([self.descriptor], [], [], 0.02)[0]:
                continue
            try:
                data = os.read(self.descriptor, 100)
            except OSError:  # the terminal's other end is not open
                time.sleep(0.01)
                continue
            if not data:
                return
            self.received += data
            while len(self.received) >= answered + 3:
                request = self.received[answered:answered + 3]
                answered += 3
                os.write(self.descriptor, self.answers.get(request[2], b""))

    def stop(self):
        self.stopped.set()
        self.join()


class Comment(unittest.TestCase):
    def test_the_line_for_a_network_printer_works_as_it_is_written(self):
        """The words go to the user and not to the printer."""
        with open(os.environ["KLOV_STATUS_SOURCE"], encoding="utf-8") as source:
            line = re.search(r"^ \*     (bash -c '.*?')  ", source.read(), re.M)[1]
        with socket.create_server(("127.0.0.1", 0)) as server:
            line = line.replace("192.0.2.7/9100", "127.0.0.1/%d" % server.getsockname()[1])
            asking = subprocess.Popen(["bash", "-c", line], stdout=subprocess.PIPE, text=True,
                                      env=dict(os.environ, PATH=os.path.dirname(STATUS) + ":" + os.environ["PATH"]))
            connection, _ = server.accept()
            with connection:
                printer = Printer(connection.fileno(), HEALTHY)
                printer.start()
                words, _ = asking.communicate(timeout=20)
                printer.stop()
        self.assertEqual(asking.returncode, 0)
        self.assertEqual(words.splitlines(), HEALTHY_WORDS)
        self.assertEqual(printer.received, b"\x10\x04\1\x10\x04\2\x10\x04\3\x10\x04\4")


class Status(unittest.TestCase):
    def ask_over_socket(self, answers, *options, before=b""):
        ours, theirs = socket.socketpair()
        with ours, theirs:
            ours.sendall(before)
            printer = Printer(ours.fileno(), answers)
            printer.start()
            result = subprocess.run([STATUS, *options, "-"], stdin=theirs, capture_output=True, text=True, timeout=30,
                                    check=False)
            printer.stop()
        return result, printer.received

    def test_asks_for_the_four_statuses(self):
        result, received = self.ask_over_socket(HEALTHY)
        self.assertEqual(received, bytes.fromhex("100401 100402 100403 100404"))
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_tells_of_a_healthy_printer(self):
        result, _ = self.ask_over_socket(HEALTHY)
        self.assertEqual(result.stdout.splitlines(), HEALTHY_WORDS)

    def test_tells_of_trouble(self):
        result, _ = self.ask_over_socket(TROUBLED)
        self.assertEqual((result.returncode, result.stdout.splitlines()), (0, TROUBLED_WORDS))

    def test_tells_of_paper_near_its_end(self):
        result, _ = self.ask_over_socket({**HEALTHY, 4: b"\x1e"})
        self.assertEqual(result.stdout.splitlines()[3], "paper: near its end")

    def test_passes_over_bytes_that_are_no_real_time_status(self):
        answers = {n: b"\x00\x93\x10\x13" + answer for n, answer in TROUBLED.items()}
        result, _ = self.ask_over_socket(answers)
        self.assertEqual((result.returncode, result.stdout.splitlines()), (0, TROUBLED_WORDS))

    def test_forgets_what_came_before_the_question(self):
        result, _ = self.ask_over_socket(HEALTHY, before=b"\x1a\x1a\x1a")
        self.assertEqual(result.stdout.splitlines(), HEALTHY_WORDS)

    def test_ends_in_time_when_the_printer_is_silent(self):
        start = time.monotonic()
        result, received = self.ask_over_socket({}, "-t", "100")
        self.assertGreaterEqual(time.monotonic() - start, 0.4)
        self.assertEqual(received, bytes.fromhex("100401 100402 100403 100404"))
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stdout.splitlines(), ["printer status: no answer", "offline status: no answer",
                                                      "error status: no answer", "paper status: no answer"])

    def test_goes_on_after_one_silence(self):
        result, _ = self.ask_over_socket({**HEALTHY, 2: b""}, "-t", "200")
        self.assertEqual(result.returncode, 2)
        expected = [HEALTHY_WORDS[0], "offline status: no answer", *HEALTHY_WORDS[2:]]
        self.assertEqual(result.stdout.splitlines(), expected)

    def test_fails_when_the_printer_hangs_up(self):
        ours, theirs = socket.socketpair()
        ours.close()
        with theirs:
            result = subprocess.run([STATUS, "-"], stdin=theirs, capture_output=True, text=True, timeout=30,
                                    check=False)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("status: -: ", result.stderr)

    def test_ends_in_time_when_the_device_never_stops_talking(self):
        result = subprocess.run([STATUS, "-t", "50", "/dev/zero"], capture_output=True, text=True, timeout=30,
                                check=False)
        self.assertEqual(result.returncode, 2)

    def test_asks_a_device_by_its_path(self):
        master, slave = pty.openpty()
        path = os.ttyname(slave)
        try:
            printer = Printer(master, TROUBLED)
            printer.start()
            result = subprocess.run([STATUS, path], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                    timeout=30, check=False)
            printer.stop()
        finally:
            os.close(slave)
            os.close(master)
        self.assertEqual(printer.received, bytes.fromhex("100401 100402 100403 100404"))
        self.assertEqual((result.returncode, result.stdout.splitlines()), (0, TROUBLED_WORDS))

    def test_names_a_device_that_is_not_there(self):
        result = subprocess.run([STATUS, "/nowhere/lp0"], capture_output=True, text=True, timeout=30, check=False)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("/nowhere/lp0", result.stderr)

    def test_refuses_a_time_that_is_none(self):
        for wrong in ("", "soon", "0", "-1", "5s"):
            result = subprocess.run([STATUS, "-t", wrong, "-"], stdin=subprocess.DEVNULL, capture_output=True,
                                    text=True, timeout=30, check=False)
            self.assertEqual((result.returncode, result.stdout), (1, ""))
            self.assertIn("usage: ", result.stderr)


if __name__ == "__main__":
    unittest.main()
