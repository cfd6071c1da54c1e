"""The Python package: doctests, every command, printers, previews, speed."""

import doctest
import importlib
import importlib.util
import inspect
import os
import pathlib
import socket
import subprocess
import tempfile
import threading
import time
import unittest

import klov
from klov import _native, commands, constants

TOOL = os.environ["KLOV_PREVIEW"]
MODULES = ["", "._encode", ".models", ".printers", ".receipt", ".status"]


class Documentation(unittest.TestCase):
    def test_doctests(self):
        attempted = 0
        for name in MODULES:
            result = doctest.testmod(importlib.import_module("klov" + name))
            self.assertEqual(result.failed, 0, name)
            attempted += result.attempted
        self.assertGreater(attempted, 15)

    def test_everything_public_is_described_and_has_types(self):
        for name in [*MODULES, ".commands"]:
            module = importlib.import_module("klov" + name)
            self.assertTrue(module.__doc__, name)
            for thing in vars(module).values():
                if inspect.isfunction(thing) and thing.__module__ == module.__name__ and thing.__name__[0] != "_":
                    self.assertTrue(thing.__doc__, thing)
                    self.assertIn("return", thing.__annotations__, thing)


class Commands(unittest.TestCase):
    def test_every_encoder_is_there(self):
        encoders = [name for name in vars(_native) if name.startswith("klov_cmd_") and "_parse_" not in name]
        self.assertGreater(len(encoders), 150)
        for name in encoders:
            self.assertTrue(inspect.isfunction(getattr(commands, name.removeprefix("klov_cmd_"))), name)

    def test_every_encoder_takes_any_numbers(self):
        functions = [thing for thing in vars(commands).values()
                     if inspect.isfunction(thing) and thing.__module__ == "klov.commands"]
        self.assertGreater(len(functions), 150)
        for function in functions:
            parameters = list(inspect.signature(function).parameters)
            for number in (-2**31, -3, 0, 1, 48, 255, 70000, 2**40):
                given = [b"abcd" if name == "data" else number for name in parameters[1:]]
                try:
                    self.assertIsInstance(function(0xFFFF, *given), bytes)
                except klov.KlovError as error:
                    self.assertIn(error.code, (-1, -2, -3))

    def test_the_ones_that_trust_their_caller_get_their_room(self):
        self.assertEqual(len(commands.qr_store_the_data_in_the_symbol_storage_area(1, bytes(60000))), 60008)
        self.assertEqual(len(commands.select_character_code_table(1, 5, 1)), 36)
        self.assertEqual(sum(commands.print_and_reverse_feed_n_line(1, 40000)[2::3]), 40000)
        self.assertEqual(sum(commands.print_and_feed_paper(1, 40000)[2::3]), 40000)

    def test_a_refusal_has_code_and_text(self):
        with self.assertRaises(klov.KlovError) as caught:
            commands.initialize_printer(0x40)
        self.assertEqual(caught.exception.code, constants.E_MODEL_TYPE)
        self.assertIn("Printer model type is error.", str(caught.exception))

    def test_threads_have_buffers_of_their_own(self):
        wrong = []

        def work(n):
            for _ in range(3000):
                if commands.set_left_margin(1, n) != bytes([0x1D, 0x4C, n, 0]):
                    wrong.append(n)
        threads = [threading.Thread(target=work, args=(n,)) for n in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])

    def test_a_hundred_thousand_short_commands_a_second(self):
        count = 100000
        best = 9.0
        for _ in range(3):
            start = time.process_time()
            for _ in range(count):
                commands.set_left_margin(1, 24)
            best = min(best, time.process_time() - start)
        self.assertLess(best, 1.0)


class Printers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_a_file_has_the_receipt(self):
        path = self.folder / "out.bin"
        with klov.FilePrinter(path) as printer, klov.Receipt(printer) as receipt:
            receipt.text("Tea")
        self.assertEqual(path.read_bytes(), b"\x1b@Tea\n")

    def test_half_a_receipt_is_none(self):
        path = self.folder / "out.bin"
        with self.assertRaises(ZeroDivisionError), klov.FilePrinter(path) as printer:
            with klov.Receipt(printer) as receipt:
                receipt.text(f"{1 / 0}")
        self.assertEqual(path.read_bytes(), b"")

    def test_a_socket_is_sent_to_and_asked(self):
        with socket.create_server(("127.0.0.1", 0)) as server:
            received = []

            def play():
                client, _ = server.accept()
                with client:
                    received.append(client.recv(5))
                    for answer in (b"\x00\x12", b"\x16", b"\x1e"):
                        received.append(client.recv(3))
                        client.sendall(answer)
            player = threading.Thread(target=play)
            player.start()
            with klov.SocketPrinter("127.0.0.1", server.getsockname()[1]) as printer:
                printer.send(b"hello")
                self.assertEqual(printer.status(), klov.Status(cover_open=True, paper_near_end=True))
            player.join()
        self.assertEqual(received, [b"hello", b"\x10\x04\x01", b"\x10\x04\x02", b"\x10\x04\x04"])

    def test_a_silent_printer_is_told(self):
        with socket.create_server(("127.0.0.1", 0)) as server:
            with klov.SocketPrinter("127.0.0.1", server.getsockname()[1]) as printer:
                with self.assertRaises(TimeoutError):
                    printer.status(seconds=0.1)

    def test_a_queue_gets_a_raw_job(self):
        lp = self.folder / "lp"
        lp.write_text(f'#!/bin/sh\necho "$*" >{self.folder}/words\ncat >{self.folder}/job\n', encoding="ascii")
        lp.chmod(0o755)
        with klov.QueuePrinter("till", str(lp)) as printer:
            printer.send(b"\x1b@x")
        self.assertEqual((self.folder / "words").read_text(encoding="ascii"), "-d till -o raw -\n")
        self.assertEqual((self.folder / "job").read_bytes(), b"\x1b@x")
        lp.write_text("#!/bin/sh\nexit 1\n", encoding="ascii")
        with self.assertRaises(subprocess.CalledProcessError):
            klov.QueuePrinter("till", str(lp)).send(b"x")

    def test_the_virtual_printer_answers_and_has_a_paper(self):
        with klov.VirtualPrinter(tool=TOOL) as printer:
            with klov.Receipt(printer) as receipt:
                receipt.text("Tea").cut()
            self.assertTrue(printer.status().ready)
            self.assertEqual(printer.picture()[:8], b"\x89PNG\r\n\x1a\n")

    def test_a_receipt_without_a_printer_is_not_printed(self):
        with self.assertRaises(klov.KlovError):
            klov.Receipt().print()


class Receipts(unittest.TestCase):
    def test_a_preview_is_a_picture(self):
        preview = klov.Receipt().text("Tea").cut().preview(TOOL)
        self.assertEqual(preview.png[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(preview._repr_png_(), preview.png)
        with tempfile.TemporaryDirectory() as folder:
            preview.save(folder + "/tea.png")
            self.assertEqual(pathlib.Path(folder, "tea.png").read_bytes(), preview.png)

    def test_columns_fill_the_line(self):
        receipt = klov.Receipt()
        for cells in (("a",), ("a", "b"), ("a", "b", "c"), ("x" * 100, "9.99"), ("a", "b", "c", "d")):
            for size in ((1, 1), (2, 1)):
                before = len(bytes(receipt))
                receipt.columns(*cells, size=size)
                lines = bytes(receipt)[before:].replace(b"\x1d!\x10", b"").replace(b"\x1d!\x00", b"").split(b"\n")[:-1]
                for line in lines[:-1]:
                    self.assertLessEqual(len(line), 48 // size[0])
                self.assertEqual(len(lines[-1]), 48 // size[0], (cells, lines))

    def test_texts_never_steer_the_printer(self):
        every = "".join(map(chr, range(256))) + "\u2028\ufeff😀"
        body = bytes(klov.Receipt().text(every))[2:]
        for table in range(256):
            body = body.replace(bytes([0x1B, 0x74, table]), b"")
        self.assertEqual({byte for byte in body if byte < 32 or byte == 127}, {10})

    def test_bounds_are_held(self):
        receipt = klov.Receipt()
        for wrong in (lambda: receipt.bar_code(""), lambda: receipt.bar_code("x" * 300), lambda: receipt.qr(""),
                      lambda: receipt.qr("x" * 8000), lambda: receipt.logo("x"), lambda: receipt.text("x", size=(9, 1)),
                      lambda: receipt.picture((8, b"")), lambda: receipt.picture((9, b"123"))):
            with self.assertRaises(klov.KlovError):
                wrong()

    def test_a_picture_has_all_its_rows_in_bands(self):
        dots = bytes(range(256)) * 10
        body = bytes(klov.Receipt().picture((8, dots)))
        self.assertEqual(body.count(b"\x1dv0\x00\x01\x00"), 3)
        self.assertEqual(len(body), 2 + 3 + 3 * 8 + len(dots) + 3)

    @unittest.skipIf(importlib.util.find_spec("PIL") is None, "needs Pillow")
    def test_a_picture_of_pillow_is_black_where_it_is_dark(self):
        from PIL import Image
        image = Image.new("L", (16, 2), 255)
        for x in range(8):
            image.putpixel((x, 0), 0)
        self.assertIn(b"\x1dv0\x00\x02\x00\x02\x00\xff\x00\x00\x00", bytes(klov.Receipt().picture(image)))
        wide = bytes(klov.Receipt().picture(Image.new("RGBA", (2000, 10))))
        self.assertIn(b"\x1dv0\x00\x48\x00\x02\x00" + bytes(144), wide)


if __name__ == "__main__":
    unittest.main()
