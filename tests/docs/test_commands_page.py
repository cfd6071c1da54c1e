"""docs/commands.md has every command function once, with its header and its bytes, and no other."""

import re
import unittest

import headers

PAGE = (headers.SOURCE / "docs" / "commands.md").read_text(encoding="utf-8")
ROW = re.compile(r"^\| (\w+)\(\) \| (.*?) \| (.*?) \| (\w+\.h) \|$", re.M)
READS = "none: it reads"


# Their bytes depend on how far the paper goes, so that the page gives the group that is repeated.
REPEATED = {
    "klov_cmd_print_and_feed_paper": (
        "1B 4A n, once for every started 255 units", "1B 4A FF while more than 255 units remain"),
    "klov_cmd_print_and_reverse_feed_n_line": (
        "1B 65 n, once for every started 255 lines", "1B 65 FF while more than 255 lines remain"),
}
SAME_AS = {"klov_cmd_clearbuffer": "klov_cmd_clear_buffer"}


def forms(described):
    """The forms of a command as the page writes them, out of what the header says about its bytes."""
    text = re.sub(r",? then (k|xBytes \* yDots) bytes of data", " data", described)
    text = re.sub(r"\bd1\.\.\.d\w+", "data", text).replace(", then ", " ")
    parts = [re.sub(r"^[^:]*: ", "", part.strip()) for part in text.split(";")]
    return [re.split(r"[,(.]", part)[0].strip() for part in parts]


class CommandsPage(unittest.TestCase):
    def test_every_command_function_stands_there_once_and_no_other(self):
        named = re.findall(r"\bklov_cmds?_\w+", PAGE)
        declared = headers.command_functions()
        self.assertEqual(set(declared) - set(named), set(), "docs/commands.md lacks a row for each of these")
        self.assertEqual(sorted(named), sorted(declared))

    def test_every_function_is_a_row_with_its_header(self):
        rows = {name: header for name, _, _, header in ROW.findall(PAGE)}
        declared = headers.command_functions()
        wrong = {name: header for name, header in rows.items() if declared.get(name) != header}
        self.assertEqual(wrong, {}, "no function of that header")

    def test_every_row_says_what_it_does(self):
        for name, words, _, _ in ROW.findall(PAGE):
            self.assertTrue(words.strip(), name)

    def test_bytes_are_those_of_the_header(self):
        described = headers.described_bytes()
        for name, _, stated, _ in ROW.findall(PAGE):
            in_header = described[SAME_AS.get(name, name)]
            with self.subTest(function=name):
                if stated == READS:
                    self.assertEqual(in_header, [])
                elif name in REPEATED:
                    row, beginning = REPEATED[name]
                    self.assertEqual(stated, row)
                    self.assertTrue(in_header[0].startswith(beginning), in_header)
                else:
                    known = [form for text in in_header for form in forms(text)]
                    for form in stated.removesuffix(", twice").split(", or "):
                        self.assertIn(form, known)

    def test_the_long_form_of_graphics_has_the_prefixes_of_the_headers(self):
        described = headers.described_bytes()
        long_forms = {name: text for name, texts in described.items() for text in texts if "p1 p2 p3 p4 30" in text}
        self.assertEqual(len(long_forms), 6)
        rows = "klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode"
        for name, text in long_forms.items():
            self.assertIn("1D 38 4C" if name == rows else "1D 28 4C p1", text)
        self.assertIn("rows that go to the print buffer then begin with 1D 38 4C, all others keep 1D 28 4C", PAGE)

    def test_symbols_are_set_up_before_their_data(self):
        for symbol in ("qr", "pdf417"):
            names = re.findall(rf"^\| klov_cmd_{symbol}_(\w+)\(\)", PAGE, re.M)
            kinds = [name.split("_")[0] for name in names]
            self.assertEqual(kinds[-3:], ["store", "print", "transmit"])
            self.assertTrue({"select", "set"} >= set(kinds[:-3]), kinds)

    def test_every_link_has_its_target(self):
        targets = re.findall(r'<a name="(\w+)"></a>', PAGE)
        self.assertEqual(re.findall(r"\(#(\w+)\)", PAGE), targets)
        self.assertEqual(len(targets), len(re.findall(r"^## ", PAGE, re.M)))

    def test_readme_leads_to_the_page(self):
        self.assertIn("docs/commands.md", (headers.SOURCE / "README.md").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
