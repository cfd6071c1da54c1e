"""klov-preview --listen as a printer that lives: health, speed, buffer, replies, connections."""

import os
import re
import select
import signal
import socket
import struct
import subprocess
import tempfile
import time
import unittest

TOOL = os.environ["KLOV_PREVIEW"]

EOT = [bytes([0x10, 0x04, n]) for n in range(5)]
ASB_ALL = b"\x1d\x61\xff"
ASB_OFF = b"\x1d\x61\x00"
ORDERED = b"\x1d\x72\x01"
CLEAR = b"\x10\x14\x08\x01\x03\x14\x01\x06\x02\x08"
CUT = b"\x1d\x56\x00"
PAPER_OUT_STATUS = b"\x14\x00\x0f\x00"
READY_STATUS = b"\x10\x00\x00\x00"


def raster(rows, width=8):
    """An image of black rows."""
    return b"\x1d\x76\x30\x00" + struct.pack("<HH", width, rows) + b"\xff" * (rows * width)


def feed(rows):
    return b"\x1b\x4a" + bytes([rows])


class Printer:
    """A running klov-preview. Pictures are bare: one row of the picture is one row of paper."""

    def __init__(self, folder, *options):
        self.health_path = os.path.join(folder, "health")
        self.log_path = os.path.join(folder, "log")
        self.picture = os.path.join(folder, "paper.png")
        self.process = subprocess.Popen(
            [TOOL, "--listen", "127.0.0.1:0", "--width", "64", "--bare", "-o", self.picture, "--health",
             self.health_path, "--log", self.log_path] + list(options), stderr=subprocess.PIPE, text=True)
        self.port = int(re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)\n", self.process.stderr.readline())[1])

    def connect(self):
        return Client(self.port)

    def health(self, words):
        """Returns once the printer has taken the words, and says how long that took."""
        start = time.monotonic()
        seen = len(self.log())
        with open(self.health_path, "w") as file:
            file.write(words)
        while not any(" health " in line for line in self.log()[seen:]):
            if time.monotonic() - start > 10:
                raise AssertionError("the printer does not notice its health")
            time.sleep(0.002)
        return time.monotonic() - start

    def log(self):
        if not os.path.exists(self.log_path):
            return []
        with open(self.log_path) as file:
            return file.read().splitlines()

    def time_of(self, event):
        """When the first event of this kind happened."""
        for line in self.log():
            moment, text = line.split(" ", 1)
            if text.startswith(event):
                return float(moment)
        raise AssertionError("%s is not in the log: %s" % (event, self.log()))

    def wait_for(self, event, seconds=10):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if any(line.split(" ", 1)[1].startswith(event) for line in self.log()):
                return
            time.sleep(0.005)
        raise AssertionError("no %s in %s" % (event, self.log()))

    def finish(self):
        """Waits for the end; the status and what was said."""
        said = self.process.communicate(timeout=30)[1]
        return self.process.returncode, said

    def kill(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        self.process.stderr.close()


class Client:
    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=20)

    def send(self, data):
        self.socket.sendall(data)

    def receive(self, count, seconds=10):
        """So many bytes, or fewer when the time is up or the printer has closed."""
        got = b""
        end = time.monotonic() + seconds
        while len(got) < count and select.select([self.socket], [], [], max(0, end - time.monotonic()))[0]:
            piece = self.socket.recv(count - len(got))
            if not piece:
                break
            got += piece
        return got

    def close(self):
        self.socket.close()

    def reset(self):
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()


class Life(unittest.TestCase):
    def start(self, *options):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        printer = Printer(folder.name, *options)
        self.addCleanup(printer.kill)
        return printer

    def client(self, printer):
        client = printer.connect()
        self.addCleanup(client.close)
        return client


class Health(Life):
    def test_each_word_shows_in_the_real_time_status(self):
        printer = self.start()
        client = self.client(printer)
        for words, expected in [("ready", b"\x12\x12\x12\x12"),
                                ("paper-low", b"\x12\x12\x12\x1e"),
                                ("paper-out", b"\x16\x32\x12\x7e"),
                                ("cover-open", b"\x16\x16\x12\x12"),
                                ("cutter-error", b"\x16\x52\x1a\x12"),
                                ("recoverable-error", b"\x16\x52\x52\x12"),
                                ("unrecoverable-error", b"\x16\x52\x32\x12"),
                                ("offline", b"\x16\x12\x12\x12"),
                                ("drawer-open", b"\x1a\x12\x12\x12"),
                                ("paper-out cover-open", b"\x16\x36\x12\x7e")]:
            if words != "ready":
                printer.health(words)
            client.send(EOT[1] + EOT[2] + EOT[3] + EOT[4])
            self.assertEqual(client.receive(4), expected, words)

    def test_a_change_is_noticed_within_50_ms(self):
        printer = self.start()
        times = sorted(printer.health(words) for words in ["paper-out", "ready"] * 10)
        self.assertLess(times[len(times) // 2], 0.05)

    def test_a_word_that_means_nothing_is_named_in_the_log(self):
        printer = self.start()
        with open(printer.health_path, "w") as file:
            file.write("paper-gone")
        printer.wait_for("unknown health word paper-gone")

    def test_automatic_status_tells_every_change_while_it_is_enabled(self):
        printer = self.start()
        client = self.client(printer)
        client.send(ASB_ALL)
        self.assertEqual(client.receive(4), READY_STATUS)
        printer.health("paper-out")
        self.assertEqual(client.receive(4), PAPER_OUT_STATUS)
        printer.health("ready")
        self.assertEqual(client.receive(4), READY_STATUS)
        client.send(ASB_OFF + ORDERED)
        self.assertEqual(client.receive(1), b"\x00")
        printer.health("paper-out")
        self.assertEqual(client.receive(1, 0.3), b"")

    def test_only_the_chosen_kinds_of_change_are_told(self):
        printer = self.start()
        client = self.client(printer)
        client.send(b"\x1d\x61\x08")
        client.receive(4)
        printer.health("drawer-open")
        self.assertEqual(client.receive(1, 0.3), b"")
        printer.health("drawer-open paper-low")
        self.assertEqual(client.receive(4), b"\x18\x00\x03\x00")


class Printing(Life):
    def test_without_paper_only_real_time_commands_are_executed(self):
        printer = self.start("--jobs", "1", "--state", "ready")
        printer.health("paper-out")
        client = self.client(printer)
        client.send(ORDERED + feed(10))
        self.assertEqual(client.receive(1, 0.3), b"")
        client.send(EOT[4])
        self.assertEqual(client.receive(1), b"\x7e")
        printer.health("ready")
        self.assertEqual(client.receive(1), b"\x00")
        client.close()
        self.assertEqual(printer.finish(), (0, "job 1: 6 bytes, 10 rows, 0 cuts\n"))

    def test_bytes_wait_in_the_client_when_the_buffer_and_the_network_are_full(self):
        printer = self.start("--buffer", "1024")
        printer.health("cover-open")
        client = self.client(printer)
        client.socket.setblocking(False)
        sent = 0
        try:
            while sent < 64 << 20:
                sent += client.socket.send(raster(1000))
        except BlockingIOError:
            pass
        self.assertLess(sent, 64 << 20)

    def test_a_printer_with_a_speed_answers_behind_its_paper(self):
        # 100 mm at 203 dpi are 799 rows.
        printer = self.start("--speed", "200", "--jobs", "1")
        client = self.client(printer)
        start = time.monotonic()
        client.send(raster(799) + ORDERED)
        self.assertEqual(client.receive(1), b"\x00")
        self.assertGreater(time.monotonic() - start, 0.45)
        client.close()
        status, said = printer.finish()
        self.assertEqual((status, said.split(", ")[1]), (0, "799 rows"))

    def test_paper_out_in_the_middle_loses_and_repeats_nothing(self):
        printer = self.start("--speed", "400", "--jobs", "1")
        client = self.client(printer)
        client.send(ASB_ALL)
        client.receive(4)
        client.send(b"".join(raster(200) + CUT for _ in range(10)) + ORDERED)
        time.sleep(0.15)
        printer.health("paper-out")
        self.assertEqual(client.receive(4), PAPER_OUT_STATUS)
        self.assertEqual(client.receive(1, 0.4), b"")
        printer.health("ready")
        self.assertEqual(client.receive(5), READY_STATUS + b"\x00")
        client.close()
        status, said = printer.finish()
        self.assertEqual((status, said.split(", ", 1)[1]), (0, "2000 rows, 10 cuts\n"))
        self.assertLess(printer.time_of("cut 1 "), printer.time_of("health paper-out"))
        self.assertGreater(printer.time_of("cut 10 "), printer.time_of("health ready"))

    def test_an_error_is_cleared_by_a_real_time_request(self):
        printer = self.start("--jobs", "1")
        printer.health("cutter-error")
        client = self.client(printer)
        client.send(ORDERED)
        self.assertEqual(client.receive(1, 0.2), b"")
        client.send(b"\x10\x05\x01")
        self.assertEqual(client.receive(1), b"\x00")

    def test_clearing_the_buffer_drops_what_waits(self):
        printer = self.start("--jobs", "1")
        printer.health("paper-out")
        client = self.client(printer)
        client.send(feed(100) + CLEAR)
        printer.wait_for("clear 3 bytes")
        printer.health("ready")
        client.send(feed(7))
        client.close()
        self.assertIn("7 rows", printer.finish()[1])


class Voice(Life):
    def test_a_mute_printer_prints_and_says_nothing(self):
        printer = self.start("--state", "mute", "--jobs", "1")
        client = self.client(printer)
        client.send(EOT[1] + ASB_ALL + ORDERED + feed(5))
        self.assertEqual(client.receive(1, 0.3), b"")
        client.close()
        self.assertIn("5 rows", printer.finish()[1])

    def test_a_half_mute_printer_answers_real_time_requests_only(self):
        printer = self.start("--state", "half-mute")
        client = self.client(printer)
        client.send(ORDERED + EOT[1])
        self.assertEqual(client.receive(2, 0.3), b"\x12")


class Connections(Life):
    def test_the_second_is_served_when_the_first_has_closed(self):
        printer = self.start()
        first, second = self.client(printer), self.client(printer)
        first.send(EOT[1])
        self.assertEqual(first.receive(1), b"\x12")
        second.send(EOT[1])
        self.assertEqual(second.receive(1, 0.3), b"")
        first.close()
        self.assertEqual(second.receive(1), b"\x12")

    def test_a_silent_one_does_not_keep_the_others_out(self):
        printer = self.start("--jobs", "2")
        self.client(printer)
        for rows in (1, 2):
            client = self.client(printer)
            client.send(feed(rows))
            client.close()
        self.assertEqual(printer.finish()[0], 0)

    def test_a_probe_without_bytes_and_a_question_are_no_jobs(self):
        printer = self.start("--jobs", "1")
        self.client(printer).close()
        client = self.client(printer)
        client.send(EOT[1])
        self.assertEqual(client.receive(1), b"\x12")
        client.close()
        client = self.client(printer)
        client.send(feed(3))
        client.close()
        self.assertEqual(printer.finish(), (0, "job 1: 3 bytes, 3 rows, 0 cuts\n"))

    def test_a_reset_is_no_complete_job(self):
        printer = self.start("--jobs", "1")
        client = self.client(printer)
        client.send(feed(3))
        printer.wait_for("job 1 begins")
        client.reset()
        status, said = printer.finish()
        self.assertEqual(status, 1)
        self.assertIn("job 1 is not complete: the connection was broken", said)

    def test_silence_in_mid_job_is_no_complete_job(self):
        printer = self.start("--jobs", "1", "--idle", "0.5")
        client = self.client(printer)
        client.send(feed(3))
        status, said = printer.finish()
        self.assertEqual(status, 1)
        self.assertIn("job 1 is not complete: nothing came for too long", said)

    def test_silence_does_not_count_while_the_printer_can_not_go_on(self):
        printer = self.start("--jobs", "1", "--idle", "0.5")
        printer.health("paper-out")
        client = self.client(printer)
        client.send(feed(3))
        time.sleep(1.2)
        printer.health("ready")
        client.send(feed(4))
        client.close()
        self.assertEqual(printer.finish(), (0, "job 1: 6 bytes, 7 rows, 0 cuts\n"))

    def test_the_connection_is_dropped_on_request(self):
        printer = self.start("--jobs", "1")
        client = self.client(printer)
        client.send(feed(3))
        printer.wait_for("job 1 begins")
        with open(printer.health_path, "w") as file:
            file.write("drop")
        with self.assertRaises(ConnectionResetError):
            client.socket.recv(1)
        status, said = printer.finish()
        self.assertEqual(status, 1)
        self.assertIn("the connection was dropped", said)

    def test_the_connection_is_dropped_after_so_many_bytes_once(self):
        printer = self.start("--jobs", "2", "--drop-after", "100")
        client = self.client(printer)
        client.send(raster(100))
        with self.assertRaises(ConnectionResetError):
            client.socket.recv(1)
        printer.wait_for("job 1 ends")
        client = self.client(printer)
        client.send(CLEAR + raster(100))
        client.close()
        status, said = printer.finish()
        self.assertEqual(status, 1)
        self.assertIn("job 2: 808 bytes, 100 rows", said)

    def test_the_connection_is_dropped_after_so_much_paper(self):
        printer = self.start("--jobs", "1", "--speed", "100", "--drop-after", "10mm")
        client = self.client(printer)
        client.send(raster(400))
        with self.assertRaises(ConnectionResetError):
            client.socket.recv(1)
        printer.finish()

    def test_a_command_broken_off_swallows_the_next_job(self):
        printer = self.start("--jobs", "2")
        for data in (raster(10)[:-8], b"\x55" * 8 + feed(5)):
            client = self.client(printer)
            client.send(data)
            client.close()
            time.sleep(0.1)
        status, said = printer.finish()
        self.assertEqual(status, 1)
        self.assertIn("job 1: 80 bytes, 9 rows", said)
        self.assertIn("job 2: 11 bytes, 6 rows", said)

    def test_clearing_the_buffer_ends_a_command_broken_off(self):
        printer = self.start("--jobs", "2")
        for data in (raster(10)[:-8], CLEAR + feed(5)):
            client = self.client(printer)
            client.send(data)
            client.close()
            time.sleep(0.1)
        self.assertIn("job 2: 3 bytes, 5 rows", printer.finish()[1])

    def test_a_half_closed_connection_still_gets_its_replies(self):
        printer = self.start("--speed", "200")
        client = self.client(printer)
        client.send(raster(100) + ORDERED)
        client.socket.shutdown(socket.SHUT_WR)
        self.assertEqual(client.receive(1), b"\x00")
        self.assertEqual(client.socket.recv(1), b"")

    def test_the_next_is_served_while_the_last_ones_bytes_wait(self):
        printer = self.start("--jobs", "2")
        printer.health("paper-out")
        first = self.client(printer)
        first.send(feed(9))
        first.close()
        second = self.client(printer)
        second.send(EOT[4] + feed(4))
        self.assertEqual(second.receive(1), b"\x7e")
        printer.health("ready")
        second.close()
        status, said = printer.finish()
        self.assertEqual((status, said), (0, "job 1: 3 bytes, 9 rows, 0 cuts\njob 2: 3 bytes, 4 rows, 0 cuts\n"))


if __name__ == "__main__":
    unittest.main()
