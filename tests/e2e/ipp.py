"""Just enough of IPP to ask a scheduler for a job's state over its domain socket."""

import http.client
import socket
import struct

GET_JOB_ATTRIBUTES = 0x0009
CHARSET, LANGUAGE, URI, NAME, KEYWORD = 0x47, 0x48, 0x45, 0x42, 0x44
INTEGER, ENUM = 0x21, 0x23


class DomainConnection(http.client.HTTPConnection):
    def __init__(self, path):
        super().__init__("localhost")
        self.path = path

    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.connect(self.path)


def attribute(tag, name, value):
    name, value = name.encode(), value.encode()
    return struct.pack(">BH", tag, len(name)) + name + struct.pack(">H", len(value)) + value


def get_job(socket_path, job):
    """The job's attributes: numbers for integers and enums, text for all else."""
    body = struct.pack(">BBHI", 2, 0, GET_JOB_ATTRIBUTES, 1) + b"\x01"
    body += attribute(CHARSET, "attributes-charset", "utf-8")
    body += attribute(LANGUAGE, "attributes-natural-language", "en")
    body += attribute(URI, "job-uri", "ipp://localhost/jobs/%d" % job)
    body += attribute(NAME, "requesting-user-name", "root") + b"\x03"
    connection = DomainConnection(socket_path)
    try:
        connection.request("POST", "/jobs/", body, {"Content-Type": "application/ipp"})
        return parse(connection.getresponse().read())
    finally:
        connection.close()


def parse(reply):
    values = {}
    at = 8
    while at < len(reply) and reply[at] != 3:
        tag = reply[at]
        if tag < 0x10:
            at += 1
            continue
        length = struct.unpack_from(">H", reply, at + 1)[0]
        name = reply[at + 3:at + 3 + length].decode()
        at += 3 + length
        length = struct.unpack_from(">H", reply, at)[0]
        value = reply[at + 2:at + 2 + length]
        at += 2 + length
        if name:
            values[name] = struct.unpack(">i", value)[0] if tag in (INTEGER, ENUM) else value.decode("utf-8", "replace")
    return values
