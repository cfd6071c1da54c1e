"""Every option through lp -o: the bytes change as the option says."""

import itertools
import os
import re

import documents
import escpos
import support
from escpos import Align, Beep, Cut, Logo, NextLabel, Pulse
from support import PrintTest, dots, split_at_ink, tables

CUT = Cut(66, 0)


def setUpModule():
    global cups, folder, one_page, two_pages
    cups = support.start_scheduler()
    folder = support.work_folder()
    cups.add_queue("receipt", "qx100.ppd")
    cups.add_queue("label", "kll3220.ppd")
    page = documents.title("Receipt", 200) + documents.image(20, 100, 60) + documents.block(20, 30, 100, 10)
    one_page = documents.write_pdf(os.path.join(folder, "one.pdf"), [page])
    two_pages = documents.write_pdf(os.path.join(folder, "two.pdf"), [page, page])


def black_page(width, length):
    """A page of millimetres that is black all over."""
    return documents.write_pdf(os.path.join(folder, "black.pdf"), [documents.block(0, 0, 1000, 1000)],
                               width=(width * 8 + 0.1) * 72 / 203, height=length * 72 / 25.4)


class Options(PrintTest):
    def print(self, *options, document=None, queue="receipt"):
        return escpos.read_commands(cups.print(queue, document or one_page, *options))

    def others(self, *options):
        """What is sent before and after the print, dots and feeds aside."""
        before, after = split_at_ink(self.print(*options))
        return escpos.others(before), escpos.others(after)

    def choices(self, keyword):
        """The values of an option in the receipt printer's PPD."""
        return list(tables.Ppd(cups.ppd("receipt")).choices(keyword))

    # --- paper

    def test_labels_and_tickets_move_on_after_every_page(self):
        for value, moves in (("0", []), ("1", [NextLabel()]), ("2", [NextLabel()])):
            commands = self.print("PaperType=" + value, document=two_pages)
            self.assertEqual(escpos.others(commands), moves * 2 + [CUT])

    def test_blank_areas_shrink_by_quarters(self):
        plain = self.runs(self.print("PaperSaveMode=0"))
        self.assertGreater(sum(length > 20 for inked, length in plain if not inked), 1)
        for quarters in (1, 2, 3):
            expected = [(inked, n if inked else n - quarters * n // 4) for inked, n in plain]
            self.assertEqual(self.runs(self.print("PaperSaveMode=%d" % quarters)), expected)

    def runs(self, commands):
        rows = escpos.without_blank_end(escpos.picture(commands, 72))
        return [(inked, len(list(run))) for inked, run in itertools.groupby(map(any, rows))]

    def test_the_blank_end_of_a_page_is_fed_or_left_out(self):
        left_out = escpos.picture(self.print("PaperSaveBottom=1"), 72)
        fed = escpos.picture(self.print("PaperSaveBottom=0"), 72)
        self.assertEqual(left_out, escpos.without_blank_end(fed))
        self.assertEqual(len(fed), dots(210))

    def test_the_page_size_sets_width_and_length_and_rows_in_a_command(self):
        # A command holds 1024 bytes at most: fewer rows on wider paper.
        for size, width, length, rows in (
                ("72.07x100mm", 72, 100, 14), ("50.05x80mm", 50, 80, 20), ("30.03x80mm", 30, 80, 34)):
            commands = self.print("PageSize=%s.Fullbleed" % size, "PaperSaveBottom=0",
                                  document=black_page(width, length), queue="label")
            bands = [command for command in commands if isinstance(command, escpos.Raster)]
            self.assertEqual({band.width for band in bands if any(band.data)}, {width})
            self.assertEqual(max(band.rows for band in bands), rows)
            self.assertEqual(sum(band.rows for band in bands), dots(length))

    # --- feeding and cutting

    def test_what_happens_when_done(self):
        expected = {"0": ([], 0), "1": ([], dots(20)), "2": ([CUT], dots(15)), "3": ([CUT, CUT], dots(15))}
        for value in self.choices("PostPrintAction"):
            commands = self.print("PostPrintAction=" + value, "FormfeedLength=20", "CutPaperLength=15",
                                  document=two_pages)
            self.assertEqual((escpos.others(commands), escpos.blank_tail(commands)), expected[value])

    def test_after_every_page_each_page_is_fed_and_cut(self):
        commands = self.print("PostPrintAction=3", "CutPaperLength=15", document=two_pages)
        first_cut = commands.index(CUT)
        self.assertEqual(escpos.blank_tail(commands[:first_cut]), dots(15))
        rest = commands[first_cut:]
        self.assertTrue(any(isinstance(command, escpos.Raster) and any(command.data) for command in rest))

    def test_every_feed_length(self):
        for value in self.choices("FormfeedLength"):
            commands = self.print("PostPrintAction=1", "FormfeedLength=" + value)
            self.assertEqual(escpos.blank_tail(commands), dots(int(value)))
            self.assertEqual(escpos.others(commands), [])

    def test_every_feed_before_the_cut(self):
        for value in self.choices("CutPaperLength"):
            commands = self.print("CutPaperLength=" + value)
            self.assertEqual(escpos.blank_tail(commands), dots(int(value)))
            self.assertEqual(commands[-1], CUT)

    def test_no_partial_and_full_cut(self):
        for value, cut in (("0", []), ("1", [Cut(66, 0)]), ("2", [Cut(65, 0)])):
            self.assertEqual(escpos.others(self.print("CutMode=" + value)), cut)

    def test_the_resolution_turns_millimetres_into_dots(self):
        commands = self.print("Resolution=300dpi", "PostPrintAction=1", "FormfeedLength=20")
        self.assertEqual(escpos.blank_tail(commands), dots(20, 300))

    # --- drawers and buzzers

    def test_drawers_open_before_or_after_printing(self):
        for keyword, pin in (("Drawer1", 0), ("Drawer2", 1)):
            self.assertEqual(self.others(keyword + "=0"), ([], [CUT]))
            self.assertEqual(self.others(keyword + "=1"), ([Pulse(pin, 80, 80)], [CUT]))
            self.assertEqual(self.others(keyword + "=2"), ([], [Pulse(pin, 80, 80), CUT]))

    def test_the_buzzer_sounds_before_or_after_printing(self):
        self.assertEqual(self.others("BeepControl=0"), ([], [CUT]))
        self.assertEqual(self.others("BeepControl=1"), ([Beep(1, 1, 1)], [CUT]))
        self.assertEqual(self.others("BeepControl=2"), ([], [Beep(1, 1, 1), CUT]))

    def test_number_length_and_pause_of_beeps(self):
        self.assertEqual(self.others("BeepControl=1", "BeepRepeat=3")[0], [Beep(3, 1, 1)])
        self.assertEqual(self.others("BeepControl=1", "BeepDuration=4")[0], [Beep(1, 4, 1)])
        self.assertEqual(self.others("BeepControl=1", "BeepInterval=5")[0], [Beep(1, 1, 5)])

    def test_the_external_buzzer_sounds_before_or_after_printing(self):
        self.assertEqual(self.others("ExternalBeepControl=0"), ([], [CUT]))
        self.assertEqual(self.others("ExternalBeepControl=1"), ([Pulse(0, 50, 50)], [CUT]))
        self.assertEqual(self.others("ExternalBeepControl=2"), ([], [Pulse(0, 50, 50), CUT]))

    def test_number_length_and_pause_of_external_beeps(self):
        self.assertEqual(self.others("ExternalBeepControl=1", "ExternalBeepRepeat=3")[0], [Pulse(0, 50, 50)] * 3)
        self.assertEqual(self.others("ExternalBeepControl=1", "ExternalBeepInterval=4")[0], [Pulse(0, 50, 200)])
        # A pause shorter than the beep is raised to it.
        self.assertEqual(self.others("ExternalBeepControl=1", "ExternalBeepDuration=3")[0], [Pulse(0, 150, 150)])

    # --- logo and image data

    def test_the_stored_logo_is_printed_before_or_after_the_document(self):
        logo = [Align(1), Logo(0x30, ord("0"), 1, 1), Align(0)]
        self.assertEqual(self.others("PrintLogo=0"), ([], [CUT]))
        self.assertEqual(self.others("PrintLogo=1"), (logo, [CUT]))
        self.assertEqual(self.others("PrintLogo=2"), ([], logo + [CUT]))

    def test_number_and_place_of_the_logo(self):
        for value in ("1", "9"):
            before, _ = self.others("PrintLogo=1", "LogoIndex=" + value)
            self.assertEqual(before[1], Logo(0x30, int(value) + 47, 1, 1))
        for value in self.choices("LogoAlign"):
            before, _ = self.others("PrintLogo=1", "LogoAlign=" + value)
            self.assertEqual(before[0], Align(int(value) - 1))

    def test_compressed_image_data_is_smaller_and_differs_at_most_in_the_last_byte_of_a_row(self):
        def bands(commands):
            return [command for command in commands if isinstance(command, escpos.Raster) and any(command.data)]
        plain = bands(self.print("BitmapCompression=0"))
        packed = bands(self.print("BitmapCompression=1"))
        self.assertEqual({band.mode for band in plain}, {0})
        self.assertEqual({band.mode for band in packed}, {32})
        self.assertEqual([(band.width, band.rows) for band in plain], [(band.width, band.rows) for band in packed])
        for a, b in zip(plain, packed):
            if a.width > 1:
                for end in range(a.width, len(a.data) + 1, a.width):
                    self.assertEqual(a.data[end - a.width:end - 1], b.data[end - a.width:end - 1])
        self.assertLess(len(cups.print("receipt", one_page, "BitmapCompression=1")),
                        len(cups.print("receipt", one_page, "BitmapCompression=0")))

    # --- the whole

    def test_options_set_at_the_queue_hold_for_every_job(self):
        cups.add_queue("set", "qx100.ppd", None, "CutMode=2", "Drawer2=1")
        self.assertEqual(escpos.others(self.print(queue="set")), [Pulse(1, 80, 80), Cut(65, 0)])
        self.assertEqual(escpos.others(self.print("CutMode=1", queue="set")), [Pulse(1, 80, 80), Cut(66, 0)])

    def test_a_custom_size_set_at_the_queue_holds_for_every_job(self):
        cups.add_queue("small", "kll3220.ppd", None, "PageSize=Custom.50x30mm")
        commands = self.print("PaperSaveBottom=0", document=black_page(50, 30), queue="small")
        bands = [command for command in commands if isinstance(command, escpos.Raster)]
        self.assertEqual({band.width for band in bands}, {50})
        self.assertAlmostEqual(sum(band.rows for band in bands), dots(30), delta=1)

    def test_every_choice_of_every_option_reaches_the_filter(self):
        """The filter lists in the scheduler's log what it has understood."""
        with open(os.path.join(tables.SOURCE, "filter", "options.cpp"), encoding="utf-8") as source:
            text = source.read()
        fields = dict(re.findall(r'\.keyword = "(\w+)", \.field = &dev_options::(\w+)', text))
        fields["PostPrintAction"] = "postprintaction"
        self.assertEqual(tables.keywords() - set(fields) - tables.OTHER_OPTIONS, {"PageSize", "Resolution"})
        most = max(len(self.choices(keyword)) for keyword in fields)
        for at in range(most):
            values = {keyword: self.choices(keyword)[at % len(self.choices(keyword))] for keyword in fields}
            cups.print("receipt", one_page, *["%s=%s" % pair for pair in values.items()])
            log = cups.job_log(cups.jobs[-1])
            for keyword, value in values.items():
                self.assertRegex(log, r"\] %s +=\s*%s\b" % (fields[keyword], value), "-o %s=%s" % (keyword, value))
