"""A command function has its places outside the library too: its test, and its row in the virtual printer."""

import re
import unittest

import headers

TABLE = headers.SOURCE / "preview" / "table_rows.h"
# Names under which the virtual printer lists a command that has another function as well.
LISTED_AS = {"klov_cmd_clearbuffer": "clear_buffer", "klov_cmd_print_raster_img_cmd_header": "print_raster_bit_image"}


def encoders():
    return [name for name in headers.command_functions() if not re.match("klov_cmds_|klov_cmd_parse_", name)]


def leading_bytes(words):
    """The hexadecimal bytes that a form begins with, up to its first parameter."""
    return re.match(r"(?:[0-9A-F]{2}(?: |$))*", words)[0].strip()


class Places(unittest.TestCase):
    def test_every_command_function_is_tested(self):
        tests = "".join(file.read_text(encoding="utf-8") for file in (headers.SOURCE / "tests" / "cmds").glob("*.cpp"))
        for name in headers.command_functions():
            self.assertIsNotNone(re.search(r"\b%s\b" % name, tests), "%s: add its test to tests/cmds" % name)

    def test_the_virtual_printer_knows_every_command_by_its_bytes(self):
        patterns = {}
        for pattern, name in re.findall(r'^    \{"([^"]+)",\s*"(\w+)"', TABLE.read_text(encoding="ascii"), re.M):
            patterns.setdefault(name, []).append(leading_bytes(pattern))
        described = headers.described_bytes()
        for encoder in encoders():
            name = LISTED_AS.get(encoder, encoder.removeprefix("klov_cmd_"))
            self.assertTrue(name in patterns, "add a row for %s to preview/table_rows.h" % encoder)
            for text in described[encoder]:
                for part in text.split(";"):
                    stated = leading_bytes(re.sub(r"^[^:]*: ", "", part.strip()))
                    agree = [known for known in patterns[name] if stated.startswith(known) or known.startswith(stated)]
                    self.assertTrue(agree, "%s begins with %s in its header and with %s in preview/table_rows.h" % (
                        encoder, stated, " or ".join(patterns[name])))


if __name__ == "__main__":
    unittest.main()
