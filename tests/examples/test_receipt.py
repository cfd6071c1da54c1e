"""The receipt examples: the C program's commands in their order, and the Python program's equal bytes."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

RECEIPT = [os.environ["KLOV_RECEIPT"]]
RECEIPT_PY = [sys.executable, "-B", os.environ["KLOV_RECEIPT_PY"], "-l", os.environ["KLOV_LIBRARY"]]

# A sanitized library can only be loaded into a program that brought the sanitizer along.
PYTHON_CAN_LOAD = os.environ["KLOV_SANITIZE"] == ""


MODELS = pathlib.Path(__file__).resolve().parents[2] / "model" / "models.txt"


def model_without_escpos():
    """The name of a model whose class lacks bit 0, so that every encoder refuses it."""
    rows = [line.split(" | ") for line in MODELS.read_text(encoding="ascii").splitlines() if " | " in line]
    return next(row[2] for row in rows if not row[0].startswith("#") and int(row[5], 0) % 2 == 0)


def run(command, *arguments):
    return subprocess.run([*command, *arguments], capture_output=True, timeout=30, check=False)


COMMANDS = [
    bytes.fromhex("1b40"),
    bytes.fromhex("1b6101 1b4501 1d2111"),
    b"CORNER CAFE\n",
    bytes.fromhex("1d2100 1b4500 1b6100"),
    b"Coffee                      2.80\n",
    b"Cheese cake                 4.20\n",
    bytes.fromhex("1b4501"),
    b"Total                       7.00\n",
    bytes.fromhex("1b4500 1b6401"),
    bytes.fromhex("1b6101 1d4802 1d6850 1d7702"),
    bytes.fromhex("1d6b49 0c") + b"{B2024000117",
    bytes.fromhex("1b6401"),
    bytes.fromhex("1d286b0400314132 00 1d286b0300314306 1d286b0300314531"),
    bytes.fromhex("1d286b 2300 315030") + b"https://example.com/r/2024000117",
    bytes.fromhex("1d286b0300315130"),
    bytes.fromhex("1d564228"),
]


class Receipt(unittest.TestCase):
    def test_holds_its_commands_in_order_and_nothing_else(self):
        result = run(RECEIPT)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(result.stdout, b"".join(COMMANDS))

    def test_goes_to_a_file(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "receipt.bin")
            result = run(RECEIPT, path)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
            with open(path, "rb") as written:
                self.assertEqual(written.read(), b"".join(COMMANDS))

    def check_refusal(self, command, arguments, *words):
        result = run(command, *arguments)
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        for word in words:
            self.assertIn(word, result.stderr)

    def test_of_an_unknown_model_is_refused(self):
        self.check_refusal(RECEIPT, ["-m", "no such model"], b"receipt: no such model: ", b"(-8)")

    def test_is_refused_whole_when_an_encoder_fails(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "receipt.bin")
            self.check_refusal(RECEIPT, ["-m", model_without_escpos(), path], b"receipt: initialize: ", b"(-3)")
            self.assertFalse(os.path.exists(path))

    def test_to_a_place_that_cannot_be_written_is_refused(self):
        self.check_refusal(RECEIPT, ["/nowhere/receipt.bin"], b"/nowhere/receipt.bin")

    @unittest.skipUnless(os.path.exists("/dev/full"), "no full device")
    def test_to_a_full_device_is_refused(self):
        self.check_refusal(RECEIPT, ["/dev/full"], b"/dev/full")

    def test_takes_one_file_only(self):
        self.check_refusal(RECEIPT, ["one", "two"], b"usage: ")


@unittest.skipUnless(PYTHON_CAN_LOAD, "the library is sanitized")
class ReceiptInPython(unittest.TestCase):
    def test_equals_the_one_in_c(self):
        result = run(RECEIPT_PY)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(result.stdout, run(RECEIPT).stdout)

    def test_goes_to_a_file(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "receipt.bin")
            self.assertEqual(run(RECEIPT_PY, path).returncode, 0)
            with open(path, "rb") as written:
                self.assertEqual(written.read(), run(RECEIPT).stdout)

    def test_of_an_unknown_model_is_refused(self):
        result = run(RECEIPT_PY, "-m", "no such model")
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assertIn(b"receipt.py: no such model: ", result.stderr)

    def test_is_refused_whole_when_an_encoder_fails(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "receipt.bin")
            result = run(RECEIPT_PY, "-m", model_without_escpos(), path)
            self.assertEqual((result.returncode, result.stdout), (1, b""))
            self.assertIn(b"receipt.py: initialize_printer: ", result.stderr)
            self.assertFalse(os.path.exists(path))


if __name__ == "__main__":
    unittest.main()
