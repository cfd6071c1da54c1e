"""The reference: made without a word from Doxygen, complete, and refused when a description is missing."""

import html
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import headers


def make_reference(root, out):
    command = ["sh", root / "docs" / "make-reference.sh", out]
    return subprocess.run(command, capture_output=True, text=True, timeout=120, check=False)


def plain(page):
    return " ".join(html.unescape(re.sub(r"<[^>]+>", " ", page.read_text(encoding="utf-8"))).split())


@unittest.skipIf(shutil.which("doxygen") is None, "needs doxygen")
class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.out = pathlib.Path(folder.name) / "out"
        cls.result = make_reference(headers.SOURCE, cls.out)

    def test_is_made_without_a_word_of_warning(self):
        self.assertEqual((self.result.returncode, self.result.stderr), (0, ""))
        self.assertEqual(self.result.stdout.strip(), str(self.out / "index.html"))

    def test_has_every_name_with_its_description(self):
        pages = {path.name: plain(path) for path in self.out.glob("*_8h.html")}
        for header in headers.HEADERS:
            page = pages[header.name.replace(".", "_8") + ".html"]
            for name, mark in headers.declared(header):
                # The heading of its description.
                self.assertIn(f"\u25c6 {name}{'()' if mark == '(' else ''} ", page)

    def test_commands_are_links(self):
        # Doxygen has changed how it writes the folder's slash in a name.
        (path,) = self.out.glob("md_docs_*commands.html")
        page = path.read_text(encoding="utf-8")
        linked = re.findall(r'href="\w+_8h\.html#\w+"[^>]*>(klov_cmds?_\w+)\(\)</a>', page)
        self.assertEqual(sorted(linked), sorted(headers.command_functions()))

    def test_version_is_that_of_the_header(self):
        text = (headers.INCLUDE / "klov" / "version.h").read_text(encoding="ascii")
        version = ".".join(re.findall(r"#define KLOV_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", text))
        self.assertRegex(version, r"^\d+\.\d+\.\d+$")
        self.assertIn(f"libklov {version} ", plain(self.out / "index.html"))


@unittest.skipIf(shutil.which("doxygen") is None, "needs doxygen")
class MissingDescription(unittest.TestCase):
    def refused(self, header, old, new):
        """What is said about a copy of the headers in which one place reads otherwise."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        root = pathlib.Path(folder.name)
        for part in ("docs", "include"):
            shutil.copytree(headers.SOURCE / part, root / part)
        path = root / "include" / "klov" / header
        text = path.read_text(encoding="ascii")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new, 1), encoding="ascii")
        result = make_reference(root, root / "out")
        self.assertEqual(result.returncode, 1)
        return result.stderr

    def test_of_a_function_is_refused(self):
        said = self.refused("trace.h", "#endif\n", "KLOV_API int32_t klov_nothing(void);\n#endif\n")
        self.assertIn("klov_nothing", said)

    def test_of_a_field_is_refused(self):
        text = (headers.INCLUDE / "klov" / "status.h").read_text(encoding="ascii")
        described = re.search(r"uint8_t cover_open; +/\*\*<.*", text).group(0)
        self.assertIn("cover_open", self.refused("status.h", described, "uint8_t cover_open;"))

    def test_of_a_constant_is_refused(self):
        said = self.refused("model.h", "#define MODEL_BRIEF_ROWS", "#define MODEL_NEW 1\n#define MODEL_BRIEF_ROWS")
        self.assertIn("MODEL_BRIEF_ROWS", said)


if __name__ == "__main__":
    unittest.main()
