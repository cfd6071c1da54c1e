"""A private scheduler whose queues listen to their printers, and what such tests ask it."""

import os
import shutil
import struct
import time

import ipp
from scheduler import Scheduler

GET_PRINTER_ATTRIBUTES = 0x000B
PATIENCE = int(os.environ.get("KLOV_PATIENCE", "60"))


class TalkingScheduler(Scheduler):
    def build_folders(self):
        super().build_folders()
        self.install("monitor", os.environ["KLOV_STATUS"])
        if os.environ.get("KLOV_COMMANDS"):
            shutil.copy(os.environ["KLOV_COMMANDS"], os.path.join(self.root, "bin/filter"))

    def install(self, kind, program):
        """A folder of its own instead of the link to the system's."""
        folder = os.path.join(self.root, "bin", kind)
        if os.path.islink(folder):
            os.unlink(folder)
        os.makedirs(folder, exist_ok=True)
        shutil.copy(program, folder)

    def write_configuration(self):
        super().write_configuration()
        # A job that failed is to be tried again while somebody looks.
        with open(self.root + "/etc/cupsd.conf", "a", encoding="utf-8") as conf:
            conf.write("JobRetryInterval 1\n")

    def add_talking_queue(self, name, device, policy=None):
        self.add_queue(name, "qx100.ppd", device)
        words = ["-o", "port-monitor=klovstatus"]
        if policy:
            words += ["-o", "printer-error-policy=" + policy]
        self.run("lpadmin", "-p", name, *words)
        return name

    def printer(self, name):
        """All attributes of a queue, a list of values each."""
        body = struct.pack(">BBHI", 2, 0, GET_PRINTER_ATTRIBUTES, 1) + b"\x01"
        body += ipp.attribute(ipp.CHARSET, "attributes-charset", "utf-8")
        body += ipp.attribute(ipp.LANGUAGE, "attributes-natural-language", "en")
        body += ipp.attribute(ipp.URI, "printer-uri", "ipp://localhost/printers/" + name) + b"\x03"
        connection = ipp.DomainConnection(self.socket)
        try:
            connection.request("POST", "/", body, {"Content-Type": "application/ipp"})
            return parse(connection.getresponse().read())
        finally:
            connection.close()

    def reasons(self, name):
        return self.printer(name)["printer-state-reasons"]

    def state(self, job):
        return self.job(job)["job-state"]


def parse(reply):
    values, name, at = {}, None, 8
    while at < len(reply) and reply[at] != 3:
        tag = reply[at]
        if tag < 0x10:
            at += 1
            continue
        length = struct.unpack_from(">H", reply, at + 1)[0]
        name = reply[at + 3:at + 3 + length].decode() or name
        at += 3 + length
        length = struct.unpack_from(">H", reply, at)[0]
        value = reply[at + 2:at + 2 + length]
        at += 2 + length
        number = tag in (ipp.INTEGER, ipp.ENUM)
        values.setdefault(name, []).append(struct.unpack(">i", value)[0] if number else value.decode(errors="replace"))
    return values


def wait_until(condition, what, patience=PATIENCE):
    """Returns when it came true."""
    end = time.monotonic() + patience
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("waited in vain for " + what)
        time.sleep(0.02)
    return time.monotonic()
