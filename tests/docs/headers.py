"""What the public headers declare, read from their text."""

import os
import pathlib
import re

SOURCE = pathlib.Path(os.environ["KLOV_SOURCE"])
INCLUDE = SOURCE / "include"
HEADERS = sorted((INCLUDE / "klov").glob("*.h"))

COMMENT = re.compile(r"/\*.*?\*/", re.S)
# KLOV_API, the type, the name, and what follows the name: "(" for a function, "[" or ";" for data.
DECLARATION = re.compile(r"^\s*KLOV_API\b[^;(\[]*?(\w+)\s*([(\[;])", re.M)
DESCRIBED = re.compile(r"/\*\*((?:(?!\*/).)*)\*/\s*KLOV_API\b[^;(\[]*?(\w+)\s*[(\[;]", re.S)


def declared(header):
    """Names that the header declares for export, with the mark behind each."""
    return DECLARATION.findall(COMMENT.sub("", header.read_text(encoding="ascii")))


def exported_names():
    return [name for header in HEADERS for name, _ in declared(header)]


def command_functions():
    """Every command function and the header that declares it."""
    return {
        name: header.name
        for header in HEADERS
        for name, mark in declared(header)
        if mark == "(" and re.match(r"klov_cmds?_", name)
    }


def described_bytes():
    """The bytes of every command function, as its comment gives them; a function has as many as it has forms."""
    found = {}
    for header in HEADERS:
        for comment, name in DESCRIBED.findall(header.read_text(encoding="ascii")):
            text = re.sub(r"\n \*(   | (?=- )|$| )", r"\n", comment)
            items = re.split(r"\n- ", text)
            found[name] = [" ".join(item.split()).split(": ", 1)[1] for item in items if item.startswith("Bytes")]
    return found
