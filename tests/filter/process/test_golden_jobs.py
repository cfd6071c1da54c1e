"""Whole jobs with the bytes that they must send, written out: options, pages, bands and feeds."""

import unittest

import catalogue
import oracle
from cases import (INK, JobTest, blank, choice, hexed, inked, job, page, raster_command, roll, trace_lines, white)
from ppd import Ppd, Size

DOT = b"\x80"


class Entry(JobTest):
    def test_an_empty_stream_after_a_valid_open_sends_document_start_and_end(self):
        actual = self.assert_prints(job(options="Drawer1=1 CutMode=1"), hexed("1b 70 00 50 50"), hexed("1d 56 42 00"))
        self.assertNotIn(b"PAGE:", actual.stderr)

    def test_the_page_line_carries_the_headers_copies_not_the_argument(self):
        actual = self.run_job(job(page(DOT, copies=3)))
        self.assertIn(b"PAGE: 1 3\n", actual.stderr)

    def test_a_named_file_is_read_like_standard_input(self):
        work = [job(page(DOT, b"\1"), options="CutMode=2", arguments=count) for count in (6, 7)]
        self.assertEqual(self.run_job(work[0]), self.run_job(work[1]))

    def test_messages_of_a_whole_job(self):
        work = job(page(DOT, MediaType=b"Thermal", Duplex=1, cupsRowStep=7), options="CutMode=1 x=y")
        lines = self.run_job(work).stderr.decode().splitlines()
        self.assertEqual(lines[:5], [
            "INFO: rastertoklov filter started ",
            oracle.COMPILED.decode().rstrip(),
            "DEBUG: CutMode=1 x=y ", "DEBUG: CUPS printing options ", "DEBUG: model            = 0x1001 "])
        begin = lines.index("PAGE: 1 1")
        self.assertEqual(lines[begin:begin + 42], [
            "PAGE: 1 1", "INFO: AdvanceDistance:0", "INFO: AdvanceMedia:0", "INFO: Collate:FALSE", "INFO: CutMedia:0",
            "INFO: Duplex:TRUE", "INFO: HWResolution:203203", "INFO: ImagingBoundingBox:left0, bottom0, right0, top0",
            "INFO: InsertSheet:FALSE", "INFO: cups_jog_t:0", "INFO: cups_edge_t:0", "INFO: ManualFeed:FALSE",
            "INFO: Margins:00", "INFO: MediaClass:", "INFO: MediaColor:", "INFO: MediaPosition:0",
            "INFO: MediaType:Thermal", "INFO: MediaWeight:0", "INFO: MirrorPrint:FALSE", "INFO: NegativePrint:FALSE",
            "INFO: NumCopies:1", "INFO: Orientation:0", "INFO: OutputFaceUp:FALSE", "INFO: OutputType:",
            "INFO: PageSize:00", "INFO: Separations:FALSE", "INFO: TraySwitch:FALSE", "INFO: Tumble:FALSE",
            "INFO: cupsBitsPerColor:1", "INFO: cupsBitsPerPixel:1", "INFO: cupsBytesPerLine:1",
            "INFO: cupsColorOrder:0", "INFO: cupsColorSpace:3", "INFO: cupsCompression:0", "INFO: cupsHeight:1",
            "INFO: cupsMediaType:0", "INFO: cupsRowCount:0", "INFO: cupsRowFeed:0", "INFO: cupsRowStep:7",
            "INFO: cupsWidth:8", "INFO: cupsHeight:1", "DEBUG: process_page start."])
        self.assertEqual(lines[begin + 42:], [
            " (cups:successful-ok)", "DEBUG: \tlastStripBlanksHeight:0. (cups:successful-ok)",
            "DEBUG: rastertoklov filter finished (cups:successful-ok)"])

    def test_the_trace_of_a_whole_job(self):
        actual = self.run_job(job(page(b"\x80\x01"), options="CutMode=1"))
        body = actual.trace.decode().split("-dump options finished.\n")[1]
        self.assertEqual(body, (
            "+start_doc start.\n-start_doc finished.\n\tstart_doc.\nDEBUG: process_page start.\n\n"
            "+start_page start.\n-start_page finished.\n+print_dotline(pData:*,dwWidthBytes:2,dwHeight:1) start.\n"
            "+write_bytes start(data_size:8):\n0x1d 0x76 0x30 0x0 0x2 0x0 0x1 0x0 \n-write_bytes finished(writed:1).\n"
            "+write_bytes start(data_size:2):\n0x80 0x1 \n-write_bytes finished(writed:1).\n"
            "-print_dotline finished(0) success.\n+end_page start.\n-end_page finished.\n"
            "DEBUG: \tlastStripBlanksHeight:0.\n-process_page finished(0).\n"
            "\tbefore end_doc,lastStripBlanksHeight:0,pagemode:NO.\nend_docing.\n+end_doc start.\n\tticketmode:0.\n"
            "\tticketmode:False.\n+print_blank(blank_counter:-7, save percent 0/4) start.\n"
            "+print_cut_page(printer_class:66049) start.\n+write_bytes start(data_size:4):\n0x1d 0x56 0x42 0x0 \n"
            "-write_bytes finished(writed:1).\n-print_cut_page finished(0) success.\n"
            "*end_doc cut_dots = -7, feeddistance = -1, dot_unit = 0.125123.\n-end_doc finished.\nClosing.\n"
            "DEBUG: rastertoklov filter finished\n"))


class Options(JobTest):
    def test_a_job_option_comes_before_the_ppds_default(self):
        ppd = Ppd(options=[choice("Resolution", "203dpi", "300dpi")])
        actual = self.run_job(job(options="Resolution=300dpi PostPrintAction=1 FormfeedLength=20", ppd=ppd))
        self.assertIn(b"DEBUG: dot_unit         = 0.084667 \n", actual.stderr)
        self.assertIn(b"DEBUG: motion_v        = 0.084667 \n", actual.stderr)
        self.assertEqual(actual.stdout, white(236))

    def test_the_ppds_default_comes_before_the_built_in_one(self):
        ppd = Ppd(options=[choice("CutMode", "2Partial", "0None"), choice("Drawer2", "2End")])
        self.assert_prints(job(ppd=ppd), hexed("1b 70 01 50 50"), hexed("1d 56 41 00"))

    def test_a_default_that_is_no_choice_leaves_the_built_in_one(self):
        ppd = Ppd(options=[choice("CutMode", "1", "0")])
        ppd.options[0].default = "2"
        self.assert_prints(job(ppd=ppd))

    def test_no_page_size_anywhere_keeps_the_models_width_and_14_rows(self):
        # 672 bytes of strip buffer on a model of 384 dots: rows of one byte come in strips of 672.
        for name, width, strip in (("QX-100", 72, 1008), (self.narrow_model(), 48, 672)):
            work = job(page(*blank(1, strip + 1)), options="PaperSaveBottom=0", ppd=Ppd(name))
            actual = self.run_job(work)
            self.assertIn(b"DEBUG: printer_width    = %d bytes \n" % width, actual.stderr)
            self.assertIn(b"DEBUG: max_render_height= 14 \n", actual.stderr)
            self.assertEqual(trace_lines(actual, b"print_blank.blank_counter:[0-9]"), [
                "+print_blank(blank_counter:%d, save percent 0/4) start." % count for count in (strip, 1)])

    def narrow_model(self):
        return next(m.name for m in catalogue.models() if m.width == 384 and m.dialect & 1)

    def test_a_page_size_without_a_leading_number_takes_its_width_from_the_area(self):
        actual = self.run_job(job(ppd=roll("Roll80", "204")))
        self.assertIn(b"DEBUG: printer_width    = 72 bytes \n", actual.stderr)
        self.assertIn(b"DEBUG: max_render_height= 14 \n", actual.stderr)

    def test_a_right_edge_of_204_points_at_203_dpi_is_72_bytes(self):
        work = job(page(INK * 73), ppd=roll("64x200", "204"))
        actual = self.assert_prints(work, raster_command(72, 1), INK * 72)
        self.assertIn(b"DEBUG: max_render_height= 16 \n", actual.stderr)

    def test_the_page_size_is_worth_its_number_when_the_ppd_does_not_know_it(self):
        actual = self.run_job(job(options="PageSize=100x7", ppd=roll()))
        self.assertIn(b"DEBUG: printer_width    = 100 bytes \n", actual.stderr)
        self.assertIn(b"DEBUG: max_render_height= 10 \n", actual.stderr)

    def test_a_custom_size_has_the_computed_edge(self):
        ppd = roll(variable=True, margins=(0, 0, 0, 0))
        actual = self.run_job(job(page(INK * 64), options="PageSize=Custom.64x120mm", ppd=ppd))
        self.assertIn(b"DEBUG: printer_width    = 64 bytes \n", actual.stderr)

    def test_a_size_without_an_area_is_found_and_has_no_width(self):
        ppd = Ppd(sizes=[Size("72x200", None, ("204", "600"))], default_size="72x200")
        self.assertIn(b"DEBUG: printer_width    = 0 bytes \n", self.run_job(job(ppd=ppd)).stderr)

    def test_post_print_action_3_sets_the_page_cut(self):
        self.assertIn(b"DEBUG: is_page_cut      = YES \n", self.run_job(job(options="PostPrintAction=3")).stderr)
        self.assertIn(b"DEBUG: is_page_cut      = NO \n", self.run_job(job(options="PostPrintAction=2")).stderr)

    def test_an_empty_option_string_leaves_the_defaults(self):
        actual = self.assert_prints(job(options=""))
        self.assertIn(oracle.COMPILED + b"DEBUG:  \nDEBUG: CUPS printing options \n", actual.stderr)

    def test_numbers_are_read_like_atoi_and_stay_within_32_bits(self):
        for text, number in (("", 0), ("none", 0), ("+2", 2), ("-3x", -3), ("007", 7), ("2147483648", 2147483647),
                             ("4294967297", 2147483647), ("-99999999999999999999", -2147483648), ("0x10", 0)):
            actual = self.run_job(job(options="LogoIndex=" + text))
            self.assertIn(b"DEBUG: logoindex        = %d \n" % number, actual.stderr)

    def test_option_names_ignore_case_and_the_last_one_counts(self):
        self.assert_prints(job(options="cutmode=2 CUTMODE=1"), hexed("1d 56 42 00"))

    def test_a_resolution_of_zero_makes_every_distance_nothing(self):
        actual = self.assert_prints(job(options="Resolution=0 PostPrintAction=1 FormfeedLength=20"))
        self.assertIn(b"DEBUG: dot_unit         = inf \n", actual.stderr)


class Pages(JobTest):
    def test_a_page_of_only_blank_rows_with_papersavebottom_1_sends_nothing(self):
        actual = self.assert_prints(job(page(*blank(72, 40))))
        self.assertEqual(trace_lines(actual, b"print_dotline|print_blank.blank_counter:[0-9]"), [])
        self.assertIn(b"DEBUG: \tlastStripBlanksHeight:40.\n", actual.trace)

    def test_the_same_page_with_papersavebottom_0_is_one_feed_a_strip(self):
        self.assert_prints(job(page(*blank(72, 40)), options="PaperSaveBottom=0"), white(14), white(14), white(12))

    def test_blank_inked_blank_over_strips_of_14_rows(self):
        rows = blank(72, 10) + inked(72, 10) + blank(72, 10)
        actual = self.assert_prints(job(page(*rows)), white(10), raster_command(72, 4), INK * 72 * 4,
                                    raster_command(72, 6), INK * 72 * 6)
        self.assertIn(b"DEBUG: \tlastStripBlanksHeight:10.\n", actual.trace)

    def test_a_blank_run_over_strips_is_fed_in_one_piece(self):
        rows = inked(72, 1) + blank(72, 40) + inked(72, 1)
        row = raster_command(72, 1) + INK * 72
        self.assert_prints(job(page(*rows)), row, white(40), row)

    def test_two_copies_are_the_same_bytes_twice(self):
        rows = blank(2, 3) + inked(2, 2) + blank(2, 5)
        once = white(3) + raster_command(2, 2) + INK * 4
        actual = self.assert_prints(job(page(*rows, copies=2)), once, once)
        self.assertEqual(actual.trace.count(b"+start_page start.\n"), 2)
        self.assertIn(b"dataSize (20) dHeight (10) wBytes (2).\n", actual.trace)
        self.assertIn(b"DEBUG: \tlastStripBlanksHeight:5.\n", actual.trace)

    def test_no_copies_print_nothing_and_read_no_rows(self):
        head, _ = page(*inked(2, 5), copies=0)
        actual = self.assert_prints(job((head, b""), page(DOT)), raster_command(1, 1), DOT)
        self.assertIn(b"PAGE: 1 0\n", actual.stderr)
        self.assertIn(b"PAGE: 2 1\n", actual.stderr)
        self.assertEqual(actual.trace.count(b"+start_page start.\n"), 1)

    def test_withheld_rows_of_one_page_are_not_fed_by_the_next(self):
        first, second = page(DOT, *blank(1, 9)), page(DOT)
        once = raster_command(1, 1) + DOT
        self.assert_prints(job(first, second), once, once)

    def test_a_short_read_of_several_copies_prints_the_rows_that_came(self):
        work = job(page(*inked(2, 10), copies=2))
        work.raster = work.raster[:-11]
        once = raster_command(2, 5) + INK * 9 + b"\0"
        actual = self.assert_prints(work, once, once)
        self.assertIn(b"dataSize (0) dHeight (10) wBytes (2).\n", actual.trace)

    def test_a_damaged_header_in_mid_stream_is_the_streams_end(self):
        work = job(page(DOT), page(DOT, cupsBitsPerPixel=0), page(DOT), options="CutMode=1")
        self.assert_prints(work, raster_command(1, 1), DOT, hexed("1d 56 42 00"))

    def test_every_version_and_byte_order_prints_the_same(self):
        pages = [page(*(blank(5, 3) + inked(5, 20) + [b"\1\2\0\3\0"] * 9)), page(b"\0\1")]
        outcomes = [self.run_job(job(*pages, version=version, order=order))
                    for version in (1, 2, 3) for order in "<>"]
        self.assertEqual(len({(one.stdout, one.stderr, one.trace) for one in outcomes}), 1)


if __name__ == "__main__":
    unittest.main()
