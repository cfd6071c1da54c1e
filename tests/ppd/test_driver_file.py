"""Every PPD that CUPS makes from klov.drv: correct, small, complete, in two languages."""

import glob
import os
import re
import shutil
import subprocess
import tempfile
import unittest

import tables

DRV_DIR = os.environ["KLOV_DRV_DIR"]
DRV = os.path.join(DRV_DIR, "klov.drv")
DPI = 203


def setUpModule():
    global work, ppds
    work = tempfile.mkdtemp(prefix="klov-ppd-")
    unittest.addModuleCleanup(shutil.rmtree, work)
    result = subprocess.run(["ppdc", "-d", work, DRV], capture_output=True, text=True)
    if result.returncode or result.stderr:
        raise AssertionError("ppdc: status %d, %s" % (result.returncode, result.stderr))
    ppds = [tables.Ppd(path) for path in sorted(glob.glob(work + "/*.ppd"))]


def bytes_of(points):
    """The width that the filter computes from a size's right edge."""
    return int((points / 72.0 * DPI + 7.0) / 8.0)


class EveryModel(unittest.TestCase):
    def test_each_drivable_row_of_the_catalogue_has_one_ppd(self):
        expected = sorted((model["name"], model["identity"]) for model in tables.drivable_models())
        made = sorted((ppd.value("ShortNickName"), ppd.value("NickName")) for ppd in ppds)
        self.assertEqual(expected, made)
        self.assertGreater(len(made), 100)

    def test_no_two_ppds_show_the_same_name(self):
        names = [ppd.value("NickName") for ppd in ppds]
        self.assertEqual(len(names), len(set(names)))

    def test_the_device_id_names_brand_and_model(self):
        for ppd in ppds:
            device_id = dict(field.split(":") for field in ppd.value("1284DeviceID").rstrip(";").split(";"))
            self.assertEqual(device_id["MFG"], ppd.value("Manufacturer"))
            self.assertEqual(device_id["MDL"], ppd.value("ShortNickName"))
            self.assertEqual(device_id["CMD"], "ESCPOS")

    def test_device_ids_tell_all_models_apart(self):
        ids = [ppd.value("1284DeviceID") for ppd in ppds]
        self.assertEqual(len(ids), len(set(ids)))

    def test_the_raster_goes_to_the_filter_which_makes_the_copies(self):
        for ppd in ppds:
            self.assertEqual(ppd.value("cupsFilter"), "application/vnd.cups-raster 0 rastertoklov")
            self.assertEqual(ppd.value("cupsManualCopies"), "False")
            self.assertEqual(ppd.value("cupsSNMPSupplies"), "False")

    def test_no_fonts_and_below_45_kb(self):
        for ppd in ppds:
            self.assertFalse([line for line in ppd.lines if line[0] == "Font"])
            self.assertLess(os.path.getsize(ppd.path), 45 * 1024, ppd.path)

    def test_one_bit_black_at_the_resolution_of_the_heads(self):
        for ppd in ppds:
            code = [line[3] for line in ppd.lines if line[0] == "Resolution"]
            self.assertEqual(len(code), 1)
            self.assertIn("HWResolution[203 203]/cupsBitsPerColor 1", code[0])
            self.assertIn("cupsColorSpace 3", code[0])
            self.assertEqual(ppd.value("DefaultResolution"), "203dpi")


class Conformance(unittest.TestCase):
    def test_cupstestppd_passes_every_ppd_without_a_failure_or_a_warning(self):
        filters = os.path.join(work, "filters")
        result = subprocess.run(["cupstestppd", "-I", "filters"] + [ppd.path for ppd in ppds],
                                capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(result.stdout.count(": PASS"), len(ppds))
        self.assertNotIn("WARN", result.stdout)
        self.assertNotIn("FAIL", result.stdout)
        self.assertFalse(os.path.exists(filters))


class Sizes(unittest.TestCase):
    def each(self):
        by_name = {model["identity"]: model for model in tables.drivable_models()}
        for ppd in ppds:
            yield ppd, by_name[ppd.value("NickName")]

    def test_the_keyword_begins_with_the_width_in_bytes(self):
        for ppd, _ in self.each():
            for keyword, area in ppd.numbers("ImageableArea").items():
                self.assertEqual(int(re.match(r"\d+", keyword)[0]), bytes_of(area[2]), keyword)

    def test_a_size_has_exactly_the_dots_of_its_bytes(self):
        for ppd, _ in self.each():
            for keyword, (width, _) in ppd.numbers("PaperDimension").items():
                dots = int(re.match(r"\d+", keyword)[0]) * 8
                self.assertTrue(dots <= width * DPI / 72 < dots + 1, keyword)

    def test_the_default_size_is_as_wide_as_the_head(self):
        for ppd, model in self.each():
            width = ppd.numbers("PaperDimension")[ppd.value("DefaultPageSize")][0]
            self.assertEqual(int(width * DPI / 72), model["width"])

    def test_no_size_is_wider_than_the_head(self):
        for ppd, model in self.each():
            widest = max(width for width, _ in ppd.numbers("PaperDimension").values())
            self.assertEqual(int(widest * DPI / 72), model["width"])
            self.assertEqual(int(float(ppd.value("MaxMediaWidth")) * DPI / 72), model["width"])

    def test_the_whole_page_is_printable(self):
        for ppd, _ in self.each():
            self.assertEqual(ppd.value("HWMargins"), "0 0 0 0")
            for keyword, (width, length) in ppd.numbers("PaperDimension").items():
                self.assertEqual(ppd.numbers("ImageableArea")[keyword], [0, 0, width, length])

    def test_no_size_is_another_label_turned_around(self):
        """CUPS would turn a custom label of 50 x 30 if the list held 30 x 50."""
        for ppd, model in self.each():
            for width, length in ppd.numbers("PaperDimension").values():
                self.assertTrue(length == width or length * DPI / 72 > model["width"] + 8)

    def test_custom_sizes_reach_the_length_of_a_roll(self):
        for ppd, _ in self.each():
            self.assertGreaterEqual(float(ppd.value("MaxMediaHeight")) / 72 * 25.4, 29999)
            self.assertTrue([line for line in ppd.lines if line[0] == "CustomPageSize"])

    def test_label_printers_have_label_sizes_and_all_have_several_roll_lengths(self):
        for ppd, model in self.each():
            sizes = ppd.numbers("PaperDimension").values()
            narrow = [width for width, _ in sizes if int(width * DPI / 72) < model["width"]]
            self.assertEqual(bool(narrow), tables.printer_class(model) == "label", ppd.path)
            self.assertGreaterEqual(len([width for width, length in sizes if length > 700]), 4)


class Options(unittest.TestCase):
    def test_each_class_has_its_options_choices_and_defaults(self):
        classes = {model["identity"]: tables.printer_class(model) for model in tables.drivable_models()}
        self.assertEqual(set(classes.values()), {"receipt", "label", "mobile"})
        for ppd in ppds:
            kind = classes[ppd.value("NickName")]
            for option in tables.options().values():
                if not option.choices:
                    continue
                choices = ppd.choices(option.keyword)
                if kind not in option.defaults:
                    self.assertEqual(choices, {}, option.keyword)
                    continue
                self.assertEqual(ppd.value("Default" + option.keyword), option.defaults[kind])
                self.assertIn(option.defaults[kind], choices)
                missing = set(option.choices) - set(choices)
                self.assertEqual(missing, {"2", "3"} if (kind, option.keyword) == ("mobile", "PostPrintAction") else set())

    def test_a_choice_is_a_number_that_the_filter_reads(self):
        for option in tables.options().values():
            for value in option.choices:
                self.assertRegex(value, r"^\d+$")

    def test_a_mobile_printer_has_neither_cutter_nor_drawer(self):
        mobile = [model["identity"] for model in tables.drivable_models() if tables.printer_class(model) == "mobile"]
        for ppd in ppds:
            if ppd.value("NickName") in mobile:
                for keyword in ("CutMode", "CutPaperLength", "Drawer1", "Drawer2"):
                    self.assertEqual(ppd.choices(keyword), {})
                self.assertNotIn("2", ppd.choices("PostPrintAction"))

    def test_contradicting_choices_exclude_each_other_in_both_directions(self):
        receipt = next(ppd for ppd in ppds if ppd.value("ShortNickName") == "QX-100")
        written = {line[3].strip() for line in receipt.lines if line[0] == "UIConstraints"}
        expected = set()
        for left, right in tables.nevers():
            for a in left[1:]:
                for b in right[1:]:
                    expected.add("*%s %s *%s %s" % (left[0], a, right[0], b))
                    expected.add("*%s %s *%s %s" % (right[0], b, left[0], a))
        self.assertEqual(written, expected)

    def test_the_defaults_contradict_nothing(self):
        for left, right in tables.nevers():
            for kind in ("receipt", "label", "mobile"):
                a = tables.options()[left[0]].defaults.get(kind)
                b = tables.options()[right[0]].defaults.get(kind)
                self.assertFalse(a in left[1:] and b in right[1:], (kind, left, right))

    def test_the_driver_offers_the_keywords_that_the_filter_reads(self):
        """The filter's table of keywords, taken from its source, is the table of the driver; one is the command filter's."""
        with open(os.path.join(tables.SOURCE, "filter", "options.cpp"), encoding="utf-8") as source:
            keywords = set(re.findall(r'\.keyword = "(\w+)"', source.read()))
        self.assertEqual(keywords | {"DrawerCommand"}, set(tables.options()))

    def test_the_table_in_the_documentation_is_the_current_one(self):
        with open(os.path.join(tables.SOURCE, "docs", "printers.md"), encoding="utf-8") as page:
            written = page.read().split("<!-- options: begin")[1].split("-->\n", 1)[1].split("<!-- options: end")[0]
        folder = os.path.join(tables.SOURCE, "ppd")
        current = subprocess.run(["awk", "-f", "options-table.awk", "options.txt"], cwd=folder, capture_output=True,
                                 text=True, check=True).stdout
        self.assertEqual(written, current, "run ppd/update-docs.sh")


class Chinese(unittest.TestCase):
    # Names of brands and models stay as they are.
    NAMES = {"Manufacturer", "ModelName", "ShortNickName", "NickName"}

    def test_every_visible_text_is_translated(self):
        for ppd in ppds:
            for keyword, option, text, _ in ppd.lines:
                if not keyword.startswith("zh_CN.") or keyword == "zh_CN.Translation" and option in self.NAMES:
                    continue
                self.assertRegex(text, "[\u4e00-\u9fff]", "%s %s %s" % (ppd.path, keyword, option))

    def test_every_option_choice_and_group_of_a_ppd_has_a_translation_line(self):
        for ppd in ppds:
            translated = {(keyword[6:], option) for keyword, option, _, _ in ppd.lines if keyword.startswith("zh_CN.")}
            for keyword in ["PageSize", "Resolution"] + [option for option in tables.options()]:
                for choice in ppd.choices(keyword):
                    self.assertIn((keyword, choice), translated, ppd.path)
                if ppd.choices(keyword):
                    self.assertIn(("Translation", keyword), translated)
            for line in ppd.lines:
                if line[0] == "OpenGroup":
                    self.assertIn(("Translation", line[3].split("/")[0]), translated)

    def test_no_translation_is_left_over(self):
        used = set()
        with open(DRV, encoding="utf-8") as drv:
            for text in re.findall(r'/([^"/]*)"', drv.read()):
                used |= {text, re.sub(r"\d+", "%d", text)}
        with open(os.path.join(tables.SOURCE, "ppd", "klov-zh_CN.po"), encoding="utf-8") as po:
            entries = re.findall(r'^msgid "(.+)"$', po.read(), re.M)
        self.assertGreater(len(entries), 50)
        self.assertEqual([entry for entry in entries if entry not in used], [])


if __name__ == "__main__":
    unittest.main()
