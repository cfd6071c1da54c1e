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
            filters = [line[3].strip('"') for line in ppd.lines if line[0] == "cupsFilter"]
            self.assertEqual(filters, ["application/vnd.cups-raster 0 rastertoklov",
                                       "application/vnd.klov-roll 0 rastertoklov",
                                       "application/vnd.cups-command 0 commandtoklov"])
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
        complaints = [line for line in result.stdout.splitlines() if "WARN" in line or "FAIL" in line]
        self.assertEqual(complaints[:5], [])
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stdout.count(": PASS"), len(ppds))
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
                self.assertTrue(length == width or length * DPI / 72 > model["width"] + 8,
                                "%s: %s x %s points; give the width its own row in ppd/sizes.txt" % (
                                    ppd.path, width, length))

    def test_custom_sizes_reach_the_length_of_a_roll(self):
        for ppd, _ in self.each():
            self.assertGreaterEqual(float(ppd.value("MaxMediaHeight")) / 72 * 25.4, 29999)
            self.assertTrue([line for line in ppd.lines if line[0] == "CustomPageSize"])

    def test_label_printers_have_label_sizes_and_all_have_several_roll_lengths(self):
        for ppd, model in self.each():
            sizes = ppd.numbers("PaperDimension").values()
            narrow = [width for width, _ in sizes if int(width * DPI / 72) < model["width"]]
            self.assertEqual(bool(narrow), model["class"] == "label", ppd.path)
            self.assertGreaterEqual(len([width for width, length in sizes if length > 700]), 4)


class Options(unittest.TestCase):
    # What the classes of printers do not share.
    DEFAULTS = {"receipt": {"PaperType": "0", "PostPrintAction": "2", "FormfeedLength": "10", "CutMode": "1"},
                "label": {"PaperType": "1", "PostPrintAction": "0", "FormfeedLength": "0", "CutMode": "1"},
                "mobile": {"PaperType": "0", "PostPrintAction": "1", "FormfeedLength": "10", "CutMode": None}}

    def of_class(self, kind):
        names = {model["identity"] for model in tables.drivable_models() if model["class"] == kind}
        return [ppd for ppd in ppds if ppd.value("NickName") in names]

    def test_each_class_has_its_defaults(self):
        for kind, defaults in self.DEFAULTS.items():
            self.assertTrue(self.of_class(kind), kind)
            for ppd in self.of_class(kind):
                for keyword, value in defaults.items():
                    self.assertEqual(ppd.value("Default" + keyword), value, "%s %s" % (ppd.path, keyword))

    def test_every_option_has_a_default_that_is_one_of_its_choices(self):
        for ppd in ppds:
            offered = [line[1].lstrip("*") for line in ppd.lines if line[0] == "OpenUI"]
            self.assertEqual(set(offered) - tables.keywords() - {"PageRegion"}, set())
            for keyword in offered:
                self.assertIn(ppd.value("Default" + keyword), ppd.choices(keyword), "%s %s" % (ppd.path, keyword))

    def test_receipt_and_label_printers_have_every_option_with_the_same_choices(self):
        first = self.of_class("receipt")[0]
        for ppd in self.of_class("receipt") + self.of_class("label"):
            for keyword in tables.keywords() - {"PageSize"}:
                self.assertTrue(ppd.choices(keyword), "%s lacks the option %s of ppd/options.drv" % (ppd.path, keyword))
                self.assertEqual(ppd.choices(keyword), first.choices(keyword))

    def test_a_choice_is_a_number_that_the_filter_reads(self):
        for ppd in ppds:
            for keyword in tables.keywords() - {"PageSize", "Resolution"} - tables.DOCUMENT_OPTIONS:
                for value in ppd.choices(keyword):
                    self.assertRegex(value, r"^\d+$", keyword)

    def test_a_mobile_printer_has_neither_cutter_nor_drawer(self):
        lacking = {"CutMode", "CutPaperLength", "Drawer1", "Drawer2", "DrawerCommand"}
        lacking |= {"ExternalBeep" + word for word in ("Control", "Repeat", "Duration", "Interval")}
        for ppd in self.of_class("mobile"):
            for keyword in tables.keywords():
                self.assertEqual(bool(ppd.choices(keyword)), keyword not in lacking, keyword)
            self.assertEqual(set(ppd.choices("PostPrintAction")), {"0", "1"})

    def test_contradicting_choices_exclude_each_other_in_both_directions(self):
        for ppd in ppds:
            written = {tuple(sides) for sides in self.constraints(ppd)}
            self.assertTrue(written)
            self.assertEqual(written, {(right, left) for left, right in written})

    def constraints(self, ppd):
        for line in ppd.lines:
            if line[0] == "UIConstraints":
                words = line[3].replace("*", "").split()
                yield (words[0], words[1]), (words[2], words[3])

    def test_contradictions_name_choices_that_are_there_and_no_defaults(self):
        for ppd in ppds:
            for left, right in self.constraints(ppd):
                for keyword, value in (left, right):
                    self.assertIn(value, ppd.choices(keyword), "%s %s" % (ppd.path, keyword))
                self.assertFalse(all(ppd.value("Default" + keyword) == value for keyword, value in (left, right)))

    def test_the_driver_offers_the_keywords_that_the_filter_reads(self):
        """The filter's table of keywords, taken from its source, is the driver's; one is the command filter's."""
        with open(os.path.join(tables.SOURCE, "filter", "options.cpp"), encoding="utf-8") as source:
            read = set(re.findall(r'\.keyword = "(\w+)"', source.read())) | tables.OTHER_OPTIONS
        self.assertEqual(read - tables.keywords(), set(), "add these options to ppd/options.drv")
        self.assertEqual(tables.keywords() - read, set(), "add these options to option_table in filter/options.cpp")

    def test_the_document_filters_read_every_choice_that_is_theirs(self):
        with open(os.path.join(tables.SOURCE, "pages", "job.cpp"), encoding="utf-8") as source:
            text = source.read()
        self.assertEqual(set(re.findall(r'choice\(ppd, options, "(Dither|Darkness)"\)', text)), tables.DOCUMENT_OPTIONS)
        for ppd in ppds:
            for value in ppd.choices("Dither"):
                self.assertIn('"%s"' % value, text)
            self.assertEqual(sorted(map(int, ppd.choices("Darkness"))), list(range(-3, 4)))

    def test_the_table_in_the_documentation_is_the_current_one(self):
        with open(os.path.join(tables.SOURCE, "docs", "printers.md"), encoding="utf-8") as page:
            written = page.read().split("<!-- options: begin")[1].split("-->\n", 1)[1].split("<!-- options: end")[0]
        folder = os.path.join(tables.SOURCE, "ppd")
        current = subprocess.run(["awk", "-f", "options-table.awk", "options.drv"], cwd=folder, capture_output=True,
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
                self.assertRegex(text, "[\u4e00-\u9fff]", "ppd/klov-zh_CN.po has no Chinese text for this: %s %s" % (
                    keyword, option))

    def test_every_option_choice_and_group_of_a_ppd_has_a_translation_line(self):
        for ppd in ppds:
            translated = {(keyword[6:], option) for keyword, option, _, _ in ppd.lines if keyword.startswith("zh_CN.")}
            for keyword in tables.keywords():
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
        self.assertEqual([entry for entry in entries if entry not in used], [], "nothing uses these texts any more")


if __name__ == "__main__":
    unittest.main()
