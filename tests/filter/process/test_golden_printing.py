"""Jobs with literal bytes for the printer operations: bands, compression, blank feeds, finishing."""

import unittest

import catalogue
from cases import INK, JobTest, blank, hexed, inked, job, page, raster_command, roll, trace_lines, white
from ppd import Ppd

DOT = b"\x80"
CUT = hexed("1d 56 42 00")


def fixed_width_printer():
    return next(m.name for m in catalogue.models() if m.id == 0x1955)


class OutputChannel(JobTest):
    def test_bytes_go_out_unchanged(self):
        row = bytes(range(1, 256)) + b"\x0d\x0a\x1a\x00\x0a"
        self.assert_prints(job(page(row), ppd=roll("300", "800")), raster_command(260, 1), row)

    def test_the_dump_has_no_leading_zeros(self):
        actual = self.run_job(job(page(DOT), ppd=Ppd(fixed_width_printer())))
        self.assertIn(b"+write_bytes start(data_size:3):\n0x1b 0x4a 0x0 \n-write_bytes finished(writed:1).\n",
                      actual.trace)

    def test_a_block_of_no_bytes_has_an_empty_line(self):
        actual = self.run_job(job(page(DOT), options="BitmapCompression=1"))
        self.assertIn(b"+write_bytes start(data_size:0):\n\n-write_bytes finished(writed:0).\n", actual.trace)


class Bands(JobTest):
    def test_three_rows_of_two_bytes(self):
        self.assert_prints(job(page(b"\x80\0", b"\1\x80", b"\2\0")),
                           hexed("1d 76 30 00 02 00 03 00 80 00 01 80 02 00"))

    def test_a_band_taller_than_a_command_takes_several(self):
        # Rows of one byte: the whole page is one strip, a command holds 14 rows.
        self.assert_prints(job(page(*inked(1, 30))), *[raster_command(1, n) + INK * n for n in (14, 14, 2)])

    def test_blank_bytes_at_the_right_are_not_sent(self):
        actual = self.assert_prints(job(page(b"\1\0\0\0", b"\0\2\0\0")), hexed("1d 76 30 00 02 00 02 00 01 00 00 02"))
        self.assertIn(b"\tone section complete.\n", actual.trace)

    def test_each_section_is_trimmed_by_itself(self):
        rows = [b"\1\0\0"] * 14 + [b"\1\2\0"] * 2 + [b"\1\2\3"] * 12
        self.assert_prints(job(page(*rows)), raster_command(1, 14), b"\1" * 14, raster_command(3, 14),
                           b"\1\2\0" * 2, b"\1\2\3" * 12)

    def test_a_page_wider_than_the_printer_loses_its_right_part(self):
        self.assert_prints(job(page(INK * 80)), raster_command(72, 1), INK * 72)

    def test_a_wider_page_is_sent_in_full_width_even_where_its_ink_ends_earlier(self):
        self.assert_prints(job(page(DOT + bytes(79))), raster_command(72, 1), DOT, bytes(71))

    def test_fixed_width_models_get_whole_rows_and_a_feed_of_nothing_after_each_section(self):
        rows = [DOT + bytes(71)] * 15
        self.assert_prints(job(page(*rows), ppd=Ppd(fixed_width_printer())),
                           raster_command(72, 14), (DOT + bytes(71)) * 14, hexed("1b 4a 00"),
                           raster_command(72, 1), DOT + bytes(71), hexed("1b 4a 00"))


class Compression(JobTest):
    ROWS = (
        ("41 42 43 44", "03 41 42 43 44"), ("41 41 41 41", "fd 41"), ("41 41", "ff 41"), ("41 42", "01 41 42"),
        ("41 42 42 42", "00 41 fe 42"), ("41 41 42 42 43 43", "ff 41 ff 42 ff 43"),
        ("41 42 43 43 43 44 45", "01 41 42 fe 43 01 44 45"), ("41 41 42 41", "ff 41 01 42 41"),
        ("41 42 42 43 44", "00 41 ff 42 01 43 44"), ("41 41 41 42", "00 41 fe 41"),
        ("41 42 42 43", "00 41 00 42 ff 42"),
        ("41 " * 200, "81 41 b8 41"), ("41 " * 129, "81 41 ff 41"), ("41 " * 128, "81 41"), ("41", ""),
    )

    def test_rows_as_the_printers_know_them(self):
        for row, packed in self.ROWS:
            with self.subTest(row=row):
                data = hexed(row)
                self.assert_prints(job(page(data), options="BitmapCompression=1", ppd=roll("200", "600")),
                                   raster_command(len(data), 1, 0x20), hexed(packed))

    def test_150_different_bytes(self):
        data = bytes(range(1, 151))
        self.assert_prints(job(page(data), options="BitmapCompression=1", ppd=roll("200", "600")),
                           raster_command(150, 1, 0x20), b"\x7f", data[:128], b"\x15", data[128:])

    def test_more_than_256_literal_bytes_are_counted_modulo_256(self):
        # 258 literals are written as 2; the rest is folded into the run, 259 bytes long, in pieces of 128.
        data = bytes(i % 251 + 1 for i in range(258)) + hexed("ff ff ff")
        self.assert_prints(job(page(data), options="BitmapCompression=1", ppd=roll("300", "900")),
                           raster_command(261, 1, 0x20), hexed("01 01 02 81 ff 81 ff fc ff"))

    def test_rows_follow_each_other_without_a_mark(self):
        self.assert_prints(job(page(b"AAAA", b"ABCD"), options="BitmapCompression=1"),
                           raster_command(4, 2, 0x20), hexed("fd 41 03 41 42 43 44"))

    def test_a_trimmed_section_is_compressed_at_its_own_width(self):
        self.assert_prints(job(page(b"AAAA\0\0", b"ABCD\0\0"), options="BitmapCompression=1"),
                           raster_command(4, 2, 0x20), hexed("fd 41 03 41 42 43 44"))

    def test_white_feeds_are_never_compressed(self):
        self.assert_prints(job(page(*blank(4, 3), b"AAAA"), options="BitmapCompression=1"),
                           hexed("1d 76 30 00 01 00 03 00 00 00 00"), raster_command(4, 1, 0x20), hexed("fd 41"))


class BlankFeeds(JobTest):
    def feed(self, rows, options, *pieces, ppd=None):
        work = job(page(*blank(1, rows), DOT), options=options, ppd=ppd)
        return self.assert_prints(work, *pieces, raster_command(1, 1), DOT)

    def test_600_rows_are_fed_as_255_255_and_90(self):
        self.feed(600, "", white(255), white(255), white(90))

    def test_paper_saving_takes_quarters_of_100_rows(self):
        for mode, left in (("0", 100), ("1", 75), ("2", 50), ("3", 25), ("4", 100), ("-1", 100)):
            quarters = mode if mode in "123" else "0"
            actual = self.feed(100, "PaperSaveMode=" + mode, white(left))
            self.assertEqual(trace_lines(actual, b"print_blank.blank_counter:100"),
                             ["+print_blank(blank_counter:100, save percent %s/4) start." % quarters])

    def test_paper_saving_rounds_in_favour_of_feeding(self):
        self.feed(1, "PaperSaveMode=3", white(1))
        self.feed(2, "PaperSaveMode=3", white(1))

    def test_three_rows_on_a_raster_fed_model(self):
        self.feed(3, "", hexed("1d 76 30 00 01 00 03 00 00 00 00"))

    def test_fixed_width_models_feed_by_command(self):
        work = job(page(*blank(1, 600), DOT), ppd=Ppd(fixed_width_printer()))
        self.assert_prints(work, hexed("1b 4a ff 1b 4a ff 1b 4a 5a"), raster_command(1, 1), DOT, hexed("1b 4a 00"))

    def test_a_feed_of_less_than_one_row_only_shows_in_the_trace(self):
        actual = self.assert_prints(job(options="CutMode=1"), CUT)
        self.assertEqual(trace_lines(actual, b"print_blank"),
                         ["+print_blank(blank_counter:-7, save percent 0/4) start."])

    def test_paper_saving_also_shortens_the_feed_before_the_cut(self):
        self.assert_prints(job(options="CutMode=1 CutPaperLength=10 PaperSaveMode=2"), white(40), CUT)


class Finishing(JobTest):
    def test_defaults_end_every_job_with_a_cut_and_no_feed(self):
        self.assert_prints(job(page(DOT), page(DOT), options="CutMode=1"), *[raster_command(1, 1), DOT] * 2, CUT)

    def test_the_cut_setting_selects_the_cut(self):
        for setting, sent in (("0", ""), ("1", "1d 56 42 00"), ("2", "1d 56 41 00"), ("3", ""), ("66", "1d 56 42 00"),
                              ("67", "1d 56 41 00"), ("68", ""), ("257", "1d 56 42 00"), ("-1", "")):
            actual = self.assert_prints(job(options="CutMode=" + setting), hexed(sent))
            line = "-print_cut_page finished(0) success." if sent else "-print_cut_page finished(-1) fail!"
            self.assertEqual(trace_lines(actual, b"-print_cut_page"), [line])

    def test_action_1_feeds_20_mm_as_159_dots_and_does_not_cut(self):
        actual = self.assert_prints(job(options="PostPrintAction=1 FormfeedLength=20 CutMode=1"), white(159))
        self.assertIn(b"*end_doc feed_dots = 159, feeddistance = 20, dot_unit = 0.125123.\n", actual.trace)

    def test_action_3_feeds_and_cuts_after_every_copy_and_not_at_the_end(self):
        once = raster_command(1, 1) + DOT + white(79) + CUT
        self.assert_prints(job(page(DOT, copies=3), options="PostPrintAction=3 CutPaperLength=10 CutMode=1"),
                           once, once, once)

    def test_paper_type_1_moves_to_the_next_ticket_before_the_page_cut(self):
        once = raster_command(1, 1) + DOT + b"\x0c" + CUT
        for kind in ("1", "2"):
            work = job(page(DOT, copies=2), options="PaperType=%s PostPrintAction=3 CutMode=1" % kind)
            self.assert_prints(work, once, once)
        self.assert_prints(job(page(DOT), options="PaperType=3"), raster_command(1, 1), DOT)

    def test_beep_at_the_start_and_drawer_2_at_the_end(self):
        work = job(page(DOT), options="BeepControl=1 BeepRepeat=3 BeepDuration=4 BeepInterval=5 Drawer2=2")
        beep, drawer = hexed("1b 28 41 05 00 61 64 03 04 05"), hexed("1b 70 01 50 50")
        self.assert_prints(work, beep, raster_command(1, 1), DOT, drawer)

    def test_the_order_at_the_start_and_at_the_end(self):
        everything = hexed("1b 28 41 05 00 61 64 01 00 00  1b 70 00 00 00  1b 70 00 50 50  1b 70 01 50 50"
                           "1b 61 01  1d 28 4c 06 00 30 45 30 30 01 01 1b 61 00")
        for moment in "12":
            work = job(page(DOT), options=" ".join(
                name + "=" + moment for name in ("BeepControl", "ExternalBeepControl", "Drawer1", "Drawer2",
                                                 "PrintLogo")) + " LogoIndex=1 LogoAlign=2 CutMode=1")
            ink = raster_command(1, 1) + DOT
            self.assert_prints(work, *([everything, ink, CUT] if moment == "1" else [ink, everything, CUT]))

    def test_alignment_1_2_3_and_what_is_none(self):
        logo = hexed("1d 28 4c 06 00 30 45 30 31 01 01 1b 61 00")
        for align, sent in (("1", "1b 61 00"), ("2", "1b 61 01"), ("3", "1b 61 02"), ("0", ""), ("4", ""),
                            ("49", "1b 61 30"), ("51", "1b 61 32"), ("52", "")):
            actual = self.assert_prints(job(options="PrintLogo=1 LogoIndex=2 LogoAlign=" + align), hexed(sent), logo)
            line = "-print_set_logo_align finished(0) success." if sent else "-print_set_logo_align finished(-1) fail!"
            self.assertEqual(trace_lines(actual, b"set_logo_align"), [line])

    def test_a_logo_key_that_is_no_character_sends_nothing(self):
        for index, key in (("0", "2f"), ("79", "7e"), ("80", None), ("-15", "20"), ("-16", None)):
            sent = b"" if key is None else hexed("1d 28 4c 06 00 30 45 30 %s 01 01 1b 61 00" % key)
            self.assert_prints(job(options="PrintLogo=2 LogoIndex=" + index), sent)

    def test_the_external_buzzer_repeats_one_pulse(self):
        base = "ExternalBeepControl=1 ExternalBeepDuration=%s ExternalBeepInterval=%s ExternalBeepRepeat=%s"
        for values, pulse, times in ((("2", "1", "3"), "1b 70 00 64 64", 3), (("1", "2", "1"), "1b 70 00 32 64", 1),
                                     (("6", "0", "2"), "1b 70 00 2c 2c", 2), (("1", "1", "0"), "", 0),
                                     (("1", "1", "-1"), "", 0)):
            actual = self.assert_prints(job(options=base % values), hexed(pulse) * times)
            self.assertEqual(trace_lines(actual, b"external_beep"), [
                "-print_external_beep start(%s)" % values[2], "-print_external_beep finished(0) success."])

    def test_more_than_63_beeps_are_refused(self):
        self.assert_prints(job(options="BeepControl=1 BeepRepeat=63"), hexed("1b 28 41 05 00 61 64 3f 00 00"))
        actual = self.assert_prints(job(options="BeepControl=1 BeepRepeat=64"))
        self.assertIn(b"-print_beep finished(-1) fail!\n", actual.trace)

    def test_operations_without_a_start_line(self):
        actual = self.run_job(job(options="BeepControl=1 Drawer1=1 PrintLogo=1"))
        self.assertEqual(trace_lines(actual, rb"^\+.*(beep|drawer|logo|align)"), [])

    def test_a_printer_without_the_command_set_refuses_and_the_job_goes_on(self):
        name = next(m.name for m in catalogue.models() if not m.dialect & 1)
        actual = self.assert_prints(job(options="Drawer1=1 CutMode=1", ppd=Ppd(name)))
        self.assertIn(b"-print_open_drawer finished(-3) fail!\n", actual.trace)
        self.assertIn(b"-print_cut_page finished(-3) fail!\n", actual.trace)


class EveryModel(JobTest):
    def test_every_model_of_the_catalogue_prints_as_its_family_does(self):
        rows = blank(3, 300) + [b"\1\2\0"] * 20
        for name in sorted({m.name for m in catalogue.models()}):
            with self.subTest(model=name):
                for options in ("", "PageSize=72x200 CutMode=1 Drawer1=1 PaperType=1"):
                    self.run_job(job(page(*rows), options=options, ppd=Ppd(name)))


class Distances(JobTest):
    """Millimetres become dots in single precision, cut toward zero."""

    def feed(self, options, dots):
        actual = self.run_job(job(options="PostPrintAction=1 " + options))
        self.assertEqual(actual.status, 0)
        self.assertEqual(trace_lines(actual, b"end_doc feed_dots")[0].split(",")[0], "*end_doc feed_dots = %d" % dots)

    def test_common_distances(self):
        for millimetres, dots in ((1, 7), (10, 79), (20, 159), (100, 799), (0, 0), (-10, -79)):
            self.feed("FormfeedLength=%d" % millimetres, dots)

    def test_single_precision_decides(self):
        # 254 dpi: the unit is a little more than 0.1, and only single precision rounds the quotient back up to 70.
        self.feed("Resolution=254 FormfeedLength=7", 70)
        # A length beyond 24 bits is itself rounded; in double precision this would be one dot less.
        self.feed("Resolution=1 FormfeedLength=16777258 PaperSaveMode=3", 660522)

    def test_a_negative_resolution_turns_the_sign(self):
        self.feed("Resolution=-203 FormfeedLength=-10", 79)
        self.feed("Resolution=-203 FormfeedLength=10", -79)

    def test_what_32_bits_cannot_hold_is_nothing_to_feed(self):
        for length in ("2147483647", "99999999999", "-2147483648"):
            self.feed("FormfeedLength=" + length, -(1 << 31))
        self.feed("Resolution=2147483647 FormfeedLength=1000", -(1 << 31))


if __name__ == "__main__":
    unittest.main()
