"""What cannot be printed ends with status 1 and one line in words; nothing else of the queue is harmed."""

import os
import subprocess
import unittest

from makers import Page
from paper import DocumentTest

PDFTOROLL = os.path.join(os.environ["KLOV_PAGES_DIR"], "pdftoroll")


class BadDocuments(DocumentTest):
    def refused(self, document, stdin=None):
        """Runs the filter itself: its one ERROR line and what it wrote."""
        environment = dict(os.environ, PPD=self.cups.ppd("receipt"))
        with open(stdin or os.devnull, "rb") as source:
            result = subprocess.run([PDFTOROLL, "1", "user", "title", "1", ""] + ([document] if document else []),
                                    capture_output=True, env=environment, stdin=source, timeout=120)
        errors = [line for line in result.stderr.decode().splitlines() if line.startswith("ERROR:")]
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual(len(errors), 1, errors)
        return errors[0], result.stdout

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)
        return self.path(name)

    def test_nothing_at_all(self):
        self.assertIn("empty", self.refused(self.write("empty.pdf", b""))[0])
        self.assertIn("empty", self.refused(None)[0])

    def test_no_pdf(self):
        self.assertIn("damaged", self.refused(self.write("noise.pdf", b"%PDF-1.7\n" + bytes(range(256)) * 100))[0])

    def test_no_file(self):
        self.assertIn("cannot be read", self.refused(self.path("nowhere.pdf"))[0])

    def test_encrypted(self):
        document = Page(self.path("secret.pdf"), 72, 40, encrypt="password").text(5, 10, "secret").save()
        self.assertIn("password", self.refused(document)[0])

    def test_five_kilometres(self):
        document = Page(self.path("far.pdf"), 72, 5000000).rule(6, 10).save()
        self.assertIn("Page 1", self.refused(document)[0])

    def test_a_good_page_before_a_bad_one_is_printed_whole(self):
        page = Page(self.path("half.pdf"), 72, 30).rule(6, 10).next_page(height=5000000).rule(6, 10)
        error, written = self.refused(page.save())
        self.assertIn("Page 2", error)
        self.assertEqual(len(written), 4 + 1796 + 240 * 72)

    def test_every_shortened_file_ends_in_order(self):
        document = Page(self.path("whole.pdf"), 72, 30).rule(6, 10).text(5, 20, "Words").save()
        with open(document, "rb") as file:
            data = file.read()
        environment = dict(os.environ, PPD=self.cups.ppd("receipt"))
        for size in range(1, len(data), 97):
            path = self.write("short.pdf", data[:size])
            result = subprocess.run([PDFTOROLL, "1", "user", "title", "1", "", path], capture_output=True,
                                    env=environment)
            self.assertIn(result.returncode, (0, 1), result.stderr)
            errors = [line for line in result.stderr.splitlines() if line.startswith(b"ERROR:")]
            self.assertEqual(len(errors), result.returncode)

    def test_standard_input_is_printed_like_a_file(self):
        document = Page(self.path("pipe.pdf"), 72, 30).rule(6, 10).save()
        environment = dict(os.environ, PPD=self.cups.ppd("receipt"))
        command = [PDFTOROLL, "1", "user", "title", "1", ""]
        with open(document, "rb") as source:
            piped = subprocess.run(command, capture_output=True, env=environment, stdin=source, check=True).stdout
        named = subprocess.run(command + [document], capture_output=True, env=environment, check=True).stdout
        self.assertEqual(piped, named)

    def test_the_scheduler_shows_the_reason(self):
        document = Page(self.path("far2.pdf"), 72, 5000000).rule(6, 10).save()
        self.assertTrue(any("longer than 100 m" in line for line in self.fails("receipt", document)))


if __name__ == "__main__":
    unittest.main()
