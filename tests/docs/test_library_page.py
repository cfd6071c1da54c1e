"""The programs of docs/library.md build without a warning and print the bytes that the page promises."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import headers

PAGE = (headers.SOURCE / "docs" / "library.md").read_text(encoding="utf-8")
LIBRARY = pathlib.Path(os.environ["KLOV_LIBRARY"])
STATIC_LIBRARY = os.environ["KLOV_STATIC_LIBRARY"]
SANITIZE = os.environ["KLOV_SANITIZE"]
# Samples run under the sanitizers in every build.
SANITIZED = ["-fsanitize=" + (SANITIZE or "address,undefined"), "-fno-sanitize-recover=all"]
PYTHON = os.environ.get("KLOV_PYTHON", "")
PROMISED = bytes.fromhex(re.search(r"write\s+the\s+bytes\s+`([0-9A-F\s]+)`", PAGE).group(1))
COMPILER = {"c": [os.environ["CC"], "-std=c11"], "cpp": [os.environ["CXX"], "-std=c++17"]}
WARNINGS = ["-Wall", "-Wextra", "-pedantic", "-Werror", "-Wno-unused-function"]


def blocks(language):
    return re.findall(rf"^```{language}\n(.*?)^```$", PAGE, re.M | re.S)


def programs(language):
    return [text for text in blocks(language) if "int main(" in text]


def fragments(language):
    return [text for text in blocks(language) if "int main(" not in text]


def sample_of(header):
    """The job in the comment at the top of a header."""
    text = (headers.INCLUDE / "klov" / header).read_text(encoding="ascii")
    body = re.search(r"\\code\n(.*?)\\endcode", text, re.S).group(1)
    return re.sub(r"^ \* ?", "", body, flags=re.M).removesuffix(" * ")


def run(*command, **options):
    return subprocess.run(command, capture_output=True, timeout=60, check=False, **options)


class LibraryPage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def build(self, language, text, *arguments):
        source = self.folder / f"page.{language}"
        source.write_text(text, encoding="utf-8")
        result = run(*COMPILER[language], *WARNINGS, *SANITIZED, f"-I{headers.INCLUDE}", source, *arguments)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""))

    def test_the_page_has_a_program_in_each_language(self):
        self.assertEqual([len(programs("c")), len(programs("cpp")), len(blocks("python"))], [1, 1, 1])
        self.assertGreater(len(PROMISED), 10)

    def test_c_and_cpp_programs_write_the_promised_bytes(self):
        for language in COMPILER:
            with self.subTest(language=language):
                program = self.folder / "program"
                self.build(language, programs(language)[0], STATIC_LIBRARY, "-o", program)
                result = run(program)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (0, PROMISED, b""))

    @unittest.skipIf(SANITIZE, "a sanitized library can only be loaded into a program that brought the sanitizer along")
    @unittest.skipUnless(PYTHON, "needs the Python package")
    def test_python_program_writes_the_promised_bytes(self):
        environment = {**os.environ, "LD_LIBRARY_PATH": str(LIBRARY.parent), "PYTHONPATH": PYTHON}
        result = run(sys.executable, "-c", blocks("python")[0], env=environment)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, PROMISED, b""))

    def test_the_jobs_at_the_top_of_the_headers_run(self):
        jobs = {"c": sample_of("klov.h"), "cpp": sample_of("klov.hpp")}
        jobs["cpp"] = f"#include <klov/klov.hpp>\n#include <cstdio>\nint main()\n{{\n{jobs['cpp']}}}\n"
        wanted = {"c": b"\x1b@Hello\n\x1dVB(", "cpp": b"\x1b@\x1ba\x01Hello\n\x1dkI\x06{B4711\x1dVB("}
        for language, text in jobs.items():
            with self.subTest(language=language):
                self.build(language, text, STATIC_LIBRARY, "-o", self.folder / "job")
                result = run(self.folder / "job")
                self.assertEqual((result.returncode, result.stdout, result.stderr), (0, wanted[language], b""))

    def test_the_job_of_the_readme_runs(self):
        text = (headers.SOURCE / "README.md").read_text(encoding="utf-8")
        body = re.search(r"^```c\n(.*?)^```$", text, re.M | re.S).group(1)
        include, body = body.split("\n", 1)
        program = f"{include}\n#include <unistd.h>\nint main(void)\n{{\nconst int printer = 1;\n{body}return 0;\n}}\n"
        self.build("c", program.replace("write(printer", "return (int)length != write(printer"), STATIC_LIBRARY, "-o",
                   self.folder / "job")
        self.assertEqual(run(self.folder / "job").stdout, b"\x1b@\x1ba\x01\x1dVB\x03")

    def test_the_cpp_sample_holds_with_absurd_arguments(self):
        sample = programs("cpp")[0]
        for before, after in (
                ("klov_cmd_print_and_feed_n_line, 3", "klov_cmd_print_and_reverse_feed_n_line, 40000"),
                ("klov_cmd_print_and_feed_n_line, 3", "klov_cmd_print_and_feed_paper, 2000000000"),
                ("klov_cmd_print_and_feed_n_line, 3", "klov_cmd_select_character_code_table, 5, 1"),
                ("klov_cmd_print_and_feed_n_line, 3", "klov_cmd_qr_store_the_data_in_the_symbol_storage_area, "
                                                      "klov::data(std::string(70000, 'x'))"),
        ):
            with self.subTest(command=after):
                self.assertIn(before, sample)
                self.build("cpp", sample.replace(before, after), STATIC_LIBRARY, "-o", self.folder / "absurd")
                result = run(self.folder / "absurd")
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                self.assertGreater(len(result.stdout), len(PROMISED))

    def test_the_c_sample_holds_with_a_buffer_of_any_size(self):
        sample = programs("c")[0]
        for size in (1, 4, 5, 8, 11, 13, 14, 17, len(PROMISED) - 1, len(PROMISED), len(PROMISED) + 2):
            with self.subTest(size=size):
                text = sample.replace("uint8_t bytes[256];", f"uint8_t bytes[{size}];")
                self.build("c", text, STATIC_LIBRARY, "-o", self.folder / "small")
                result = run(self.folder / "small")
                self.assertEqual(result.stderr, b"")
                self.assertEqual(result.returncode, 0 if size >= len(PROMISED) else 1)

    def test_fragments_compile(self):
        self.assertGreater(len(fragments("c")), 3)
        for fragment in fragments("c"):
            with self.subTest(fragment=fragment.splitlines()[0]):
                text = f"#include <klov/klov.h>\n#include <stdio.h>\n{fragment}"
                self.build("c", text, "-c", "-o", self.folder / "fragment.o")

    def test_fragments_do_what_the_page_says(self):
        uses = r"""
int main(void)
{
    int out = 0;
    complain(KLOV_E_UNKNOWN_MODEL);
    list_printers_of_80_mm();
    if (show_fonts("QX-100") != KLOV_OK || show_fonts("no such model") != KLOV_E_UNKNOWN_MODEL) {
        return 2;
    }
    if (is_paper_out(1, 0x72, &out) != KLOV_OK || out != 1 || is_paper_out(1, 0x12, &out) != KLOV_OK || out != 0) {
        return 3;
    }
    return is_paper_out(1, 0x13, &out) == KLOV_E_PARAMETER ? 0 : 4;
}
"""
        trace = self.folder / "commands.trace"
        text = "#include <klov/klov.h>\n#include <stdio.h>\n" + "".join(fragments("c"))
        text = text.replace("/tmp/commands.trace", str(trace))
        uses = uses.replace("int out = 0;", "int out = 0;\n    keep((const uint8_t *)\"\\x1b\\x40\", 2);")
        self.build("c", text + uses, STATIC_LIBRARY, "-o", self.folder / "uses")
        result = run(self.folder / "uses")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr,
                         b"Unable to identify the printer model. Please correct the printer model. (-8)\n")
        lines = result.stdout.decode().splitlines()
        self.assertIn("Acme QX-100: class word 0x00000201, 576 dots", lines)
        self.assertTrue(lines[-1].startswith("Acme QX-100: 203 dpi, fonts A,12,24,"), lines[-1])
        self.assertEqual(trace.read_bytes(), b"receipt [DUMP(2):0x1b 0x40 ].\r\n")

    def test_every_function_named_there_is_declared(self):
        declared = set(headers.exported_names())
        prose = re.sub(r"^```.*?^```$", "", PAGE, flags=re.M | re.S)
        named = set(re.findall(r"\b(\w+)\(\)", prose))
        self.assertGreater(len(named), 20)
        self.assertEqual(named - declared, set())

    def test_every_header_is_introduced(self):
        for header in [*headers.HEADERS, headers.INCLUDE / "klov" / "klov.hpp"]:
            self.assertRegex(PAGE, rf"(?m)^\| [^|]*\b{re.escape(header.name)}\b[^|]* \|")


if __name__ == "__main__":
    unittest.main()
