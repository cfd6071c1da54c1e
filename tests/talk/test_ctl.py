"""klovctl against printers on the network, on a serial line and behind a stock backend of CUPS."""

import json
import os
import pty
import pwd
import shutil
import subprocess
import tempfile
import threading
import time
import tty
import unittest

from till import CLEAR, Till

CTL = os.environ["KLOV_CTL"]
BACKEND = "/usr/lib/cups/backend/socket"
READY, CANNOT, SILENT, WRONG = 0, 1, 2, 3


def ctl(*words, data=None, lang="C", env=None):
    return subprocess.run([CTL, *words], input=data, capture_output=True, timeout=60, check=False,
                          env={"PATH": os.environ["PATH"], "LANG": lang, **(env or {})})


class Ctl(unittest.TestCase):
    def till(self, **settings):
        till = Till(**settings).listen()
        self.addCleanup(till.close)
        return till

    def run_on(self, till, *words, status=READY, **settings):
        result = ctl("-d", till.device, *words, **settings)
        self.assertEqual(result.returncode, status, (words, result.stdout, result.stderr))
        return result.stdout.decode()

    def status(self, till, status=READY):
        return json.loads(self.run_on(till, "status", "--json", status=status))


class Status(Ctl):
    def test_a_ready_printer(self):
        till = self.till()
        self.assertEqual(self.status(till), {"device": till.device, "ready": True, "paper": "ok", "cover": "closed",
                                             "drawer": "closed", "error": None})
        self.assertEqual(self.run_on(till, "status"), "Ready\nDrawer is closed\n")

    def test_every_trouble(self):
        till = self.till()
        for moods, expected in (({"paper_low": True}, {"ready": True, "paper": "low"}),
                                ({"paper_out": True}, {"ready": False, "paper": "out"}),
                                ({"cover_open": True}, {"ready": False, "cover": "open"}),
                                ({"cutter": True}, {"ready": False, "error": "cutter"})):
            till.set(**moods)
            found = self.status(till, READY if expected["ready"] else CANNOT)
            self.assertEqual({key: found[key] for key in expected}, expected)
            till.set(**{mood: False for mood in moods})

    def test_words_in_english_and_chinese(self):
        till = self.till()
        till.set(paper_out=True, cover_open=True)
        self.assertEqual(self.run_on(till, "status", status=CANNOT),
                         "Cover is open\nOut of paper\nDrawer is closed\n")
        self.assertEqual(self.run_on(till, "status", status=CANNOT, lang="zh_CN.UTF-8"), "机盖打开\n缺纸\n钱箱已关闭\n")

    def test_wirings_of_drawers_differ(self):
        self.assertIn("Drawer is open", self.run_on(self.till(), "status", "--drawer-open", "low"))

    def test_no_answer(self):
        began = time.monotonic()
        till = self.till(mute=True)
        found = json.loads(self.run_on(till, "--timeout", "0.5", "status", "--json", status=SILENT))
        self.assertEqual((found["ready"], found["error"]), (False, "no answer"))
        self.assertLess(time.monotonic() - began, 5)
        self.assertEqual(ctl("-d", "socket://127.0.0.1:1", "status").returncode, SILENT)
        self.assertEqual(ctl("-d", "/nowhere/lp0", "status").returncode, SILENT)
        self.assertEqual(ctl("-d", "nowhere://x", "status").returncode, SILENT)

    def test_a_file_is_not_written_to(self):
        with tempfile.NamedTemporaryFile() as file:
            result = ctl("-d", file.name, "cut")
            self.assertEqual(result.returncode, SILENT)
            self.assertEqual(os.stat(file.name).st_size, 0)

    def test_the_time_out_is_the_answers(self):
        """A printer that serves somebody else accepts a connection and says nothing until it is its turn."""
        till = self.till()
        other = subprocess.Popen([CTL, "-d", till.device, "send", "-"], stdin=subprocess.PIPE)
        time.sleep(0.3)
        threading.Timer(0.7, other.stdin.close).start()
        self.assertTrue(self.status(till)["ready"])
        other.wait()

    def test_watch_tells_changes(self):
        till = self.till()
        with subprocess.Popen([CTL, "-d", till.device, "status", "--watch"], stdout=subprocess.PIPE,
                              env={"LANG": "C"}) as watch:
            self.assertEqual(watch.stdout.readline(), b"Ready\n")
            self.assertEqual(watch.stdout.readline(), b"Drawer is closed\n")
            till.set(paper_out=True)
            self.assertEqual(watch.stdout.readline(), b"Out of paper\n")
            watch.terminate()

    def test_every_pattern_of_answers_ends(self):
        """Whatever a printer says to a question, klovctl comes to an end and to a status."""
        class Babbler(Till):
            pattern = b""

            def receive(self, data):
                self.say(self.pattern)
        till = Babbler().listen()
        self.addCleanup(till.close)
        for first in range(0, 256, 5):
            till.pattern = bytes([first]) * (1 + first % 4) + bytes([255 - first])
            result = ctl("-d", till.device, "--timeout", "0.05", "status", "--json")
            self.assertIn(result.returncode, (READY, CANNOT, SILENT))
            json.loads(result.stdout)


class Commands(Ctl):
    def test_the_bytes_of_each_command(self):
        till = self.till()
        for words, expected in ((("cut",), b"\x1dVB\0"), (("cut", "--full"), b"\x1dVA\0"),
                                (("feed", "10"), b"\x1bJ\x4f"),
                                (("beep",), b"\x1b(A\5\0ad\1\1\1"), (("beep", "9"), b"\x1b(A\5\0ad\x09\1\1"),
                                (("drawer",), b"\x1bp\0\x50\x50"), (("drawer", "2"), b"\x1bp\1\x50\x50"),
                                (("logo", "print", "1"), b"\x1d(L\6\0\x30\x45\x30\x30\1\1"),
                                (("logo", "delete", "9"), b"\x1d(L\4\0\x30\x42\x30\x38")):
            till.printed.clear()
            self.assertEqual(self.run_on(till, *words), "")
            self.assertEqual(bytes(till.printed), expected, words)

    def test_reset_is_in_real_time_first(self):
        till = self.till()
        till.received.clear()
        self.run_on(till, "reset")
        self.assertTrue(bytes(till.received).startswith(CLEAR + b"\x10\x05\x02\x1b@"))

    def test_a_printer_that_cannot_print_is_sent_nothing(self):
        till = self.till()
        till.set(paper_out=True)
        for word in (("cut",), ("beep",), ("test",), ("drawer",)):
            self.run_on(till, *word, status=CANNOT)
        till.set(paper_out=False)
        self.run_on(till, "status")
        self.assertEqual(bytes(till.printed), b"")

    def test_a_mute_printer_is_told_and_the_status_says_so(self):
        till = self.till(mute=True)
        self.run_on(till, "--timeout", "0.3", "cut", status=SILENT)
        time.sleep(0.2)
        self.assertEqual(bytes(till.printed), b"\x1dVB\0")

    def test_identify(self):
        till = self.till()
        self.assertEqual(self.run_on(till, "identify"), "device: %s\nfirmware: 1.2.30\nmodel id: 0x02\ntype id: 0x03\n"
                         "rom id: 0x04\n" % till.device)
        result = ctl("find", "--ask", till.device)
        self.assertEqual((result.returncode, result.stdout.decode().splitlines()[1]), (READY, "firmware: 1.2.30"))

    def test_the_test_page_knows_the_model(self):
        till = self.till()
        self.run_on(till, "test", "--model", "Acme QX-100")
        self.assertIn(b"Acme QX-100", till.printed)
        self.run_on(till, "test", "--model", "Nobody's", status=WRONG)

    def test_send_a_file(self):
        till = self.till(speed=2e6)
        data = (b"\x1dv0\0\x48\0\x40\0" + bytes(72 * 64)) * 100
        with tempfile.NamedTemporaryFile() as file:
            file.write(data)
            file.flush()
            self.run_on(till, "send", file.name)
        self.assertEqual(bytes(till.printed), data)
        self.run_on(till, "send", "-", data=b"hello\n")
        self.assertEqual(bytes(till.printed), data + b"hello\n")
        self.run_on(till, "send", "/nowhere", status=WRONG)

    def test_logos_are_listed(self):
        till = self.till()
        self.assertEqual(self.run_on(till, "logo", "list"), "")
        till.logos = True
        self.assertEqual(self.run_on(till, "logo", "list"), "2\n4\nkey 65 66\n")

    def test_wrong_use(self):
        for words in ([], ["status"], ["-d", "x", "-p", "y", "status"], ["-d", "x", "dance"], ["-d", "x", "feed"],
                      ["-d", "x", "feed", "0"], ["-d", "x", "feed", "ten"], ["-d", "x", "beep", "10"],
                      ["-d", "x", "drawer", "3"], ["-d", "x", "cut", "now"], ["-d", "x", "logo"],
                      ["-d", "x", "logo", "print", "0"], ["-d", "x", "logo", "add", "1", "/nowhere.png"],
                      ["-d", "x", "--timeout", "0", "status"], ["-d", "x", "--timeout", "nan", "status"],
                      ["--unheard"], ["find", "x"], ["find", "--ask"], ["-d", "x", "--drawer-open", "mid", "status"]):
            result = ctl(*words)
            self.assertEqual(result.returncode, WRONG, words)
            self.assertIn(b"klovctl", result.stderr)

    def test_help_and_version(self):
        self.assertIn(b"usage: klovctl", ctl("--help").stdout)
        self.assertRegex(ctl("--version").stdout, rb"^klovctl \d+\.\d+\.\d+\n$")


class Ways(Ctl):
    def test_an_unprivileged_account(self):
        if os.geteuid() != 0:
            self.skipTest("it is one already")
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755)
            program = shutil.copy(CTL, folder)
            till = self.till()
            account = pwd.getpwnam("nobody")
            result = subprocess.run([program, "-d", till.device, "cut"], capture_output=True, check=False, env={},
                                    user=account.pw_uid, group=account.pw_gid, extra_groups=[])
            self.assertEqual(result.returncode, READY, result.stderr)
            self.assertEqual(bytes(till.printed), b"\x1dVB\0")

    def serial(self):
        """A pty with a printer behind it."""
        ours, line = pty.openpty()
        tty.setraw(line)
        till = Till()
        threading.Thread(target=till.serve, args=(ours, ours), daemon=True).start()
        self.addCleanup(lambda: setattr(till, "closing", True))
        return till, os.ttyname(line), line

    def test_a_serial_line(self):
        till, path, line = self.serial()
        for address in (path, "serial:" + path, "serial:%s?baud=115200+bits=8+parity=none+flow=rtscts" % path):
            till.printed.clear()
            result = ctl("-d", address, "feed", "10")
            self.assertEqual((result.returncode, result.stderr), (READY, b""), address)
            self.assertEqual(bytes(till.printed), b"\x1bJ\x4f")
        for settings in ("baud=1", "parity=mark", "flow=maybe", "bits=9", "speed=9600", "baud"):
            self.assertEqual(ctl("-d", "serial:%s?%s" % (path, settings), "status").returncode, SILENT, settings)
        os.close(line)

    @unittest.skipUnless(os.access(BACKEND, os.X_OK), "no backend of CUPS")
    def test_a_stock_backend(self):
        till = self.till()
        with tempfile.TemporaryDirectory() as folder:
            os.mkdir(folder + "/backend")
            os.symlink(BACKEND, folder + "/backend/other")
            address = till.device.replace("socket", "other")
            result = ctl("-d", address, "status", "--json", env={"CUPS_SERVERBIN": folder})
            self.assertEqual(result.returncode, READY, result.stderr)
            self.assertEqual(json.loads(result.stdout)["paper"], "ok")
            self.assertEqual(ctl("-d", address, "cut", env={"CUPS_SERVERBIN": folder}).returncode, READY)
            self.assertEqual(bytes(till.printed), b"\x1dVB\0")

    def test_no_address_leads_out_of_the_folder_of_backends(self):
        for address in ("../filter/x://y", "a/b:c", "://x", "", "BAD://x"):
            self.assertIn(ctl("-d", address, "status").returncode, (SILENT, WRONG), address)


if __name__ == "__main__":
    unittest.main()
