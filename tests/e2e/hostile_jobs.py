"""Jobs as a program may send them that does not care for rules: any attribute with any bytes."""

import struct

import ipp

PRINT_JOB, GET_PRINTER_ATTRIBUTES = 0x0002, 0x000B
OPERATION_GROUP, JOB_GROUP, END = b"\x01", b"\x02", b"\x03"
TEXT, MIME_TYPE = 0x41, 0x49
USER = "mallory"


def _attribute(tag, name, value):
    name = name.encode()
    return struct.pack(">BH", tag, len(name)) + name + struct.pack(">H", len(value)) + value


def _request(socket_path, path, operation, queue, more):
    body = struct.pack(">BBHI", 2, 0, operation, 1) + OPERATION_GROUP
    body += _attribute(ipp.CHARSET, "attributes-charset", b"utf-8")
    body += _attribute(ipp.LANGUAGE, "attributes-natural-language", b"en")
    body += _attribute(ipp.URI, "printer-uri", b"ipp://localhost/printers/" + queue.encode())
    body += _attribute(ipp.NAME, "requesting-user-name", USER.encode())
    connection = ipp.DomainConnection(socket_path)
    try:
        connection.request("POST", path, body + more, {"Content-Type": "application/ipp"})
        return connection.getresponse().read()
    finally:
        connection.close()


def get_printer(socket_path, queue):
    """The queue's attributes."""
    return ipp.parse(_request(socket_path, "/", GET_PRINTER_ATTRIBUTES, queue, END))


def print_job(socket_path, queue, document, kind, options):
    """Prints a document with (name, bytes) attributes; gives the job's number."""
    more = _attribute(MIME_TYPE, "document-format", kind.encode()) + JOB_GROUP
    more += b"".join(_attribute(TEXT, name, value) for name, value in options)
    reply = _request(socket_path, "/printers/" + queue, PRINT_JOB, queue, more + END + document)
    values = ipp.parse(reply)
    if "job-id" not in values:
        raise RuntimeError("no job: %r %s" % (reply[:8], values))
    return values["job-id"]
