"""Reads the tables that klov.drv is made from, and PPD files."""

import os
import re

SOURCE = os.environ["KLOV_SOURCE"]
# Options that the filters before rastertoklov read.
DOCUMENT_OPTIONS = {"Dither", "Darkness"}
# And what the command filter reads.
OTHER_OPTIONS = DOCUMENT_OPTIONS | {"DrawerCommand"}


def rows(path):
    """The rows of a table whose columns are separated by ' | '."""
    with open(os.path.join(SOURCE, path), encoding="utf-8") as table:
        for line in table:
            line = line.rstrip()
            if line and not line.startswith("#"):
                yield [column.strip() for column in re.split(r" \| ", line)]


def models():
    keys = "id manufacturer name identity description type width flags_a flags_b unit_factor class file".split()
    for row in rows("model/models.txt"):
        model = dict(zip(keys, row, strict=True))
        model["type"] = int(model["type"], 0)
        model["width"] = int(model["width"])
        yield model


def drivable_models():
    return [model for model in models() if model["type"] & 1]


def keywords():
    """The options that the driver file offers: those of options.drv, and two that other parts of it write."""
    with open(os.path.join(SOURCE, "ppd", "options.drv"), encoding="utf-8") as options:
        return {"PageSize", "Resolution"} | set(re.findall(r'^ *Option "(\w+)/', options.read(), re.M))


class Ppd:
    """The lines of a PPD file as (keyword, option, text, value)."""

    LINE = re.compile(r'^\*([^\s:/]+)(?:\s+([^/:]+)(?:/([^:]*))?)?:\s*(.*)$')

    def __init__(self, path):
        self.path = path
        with open(path, encoding="utf-8") as ppd:
            self.lines = [match.groups() for match in map(self.LINE.match, ppd) if match]

    def value(self, keyword):
        values = [line[3] for line in self.lines if line[0] == keyword]
        return values[0].strip('"') if values else None

    def choices(self, keyword):
        """Choice keywords and texts in order."""
        return {line[1]: line[2] for line in self.lines if line[0] == keyword and line[1]}

    def numbers(self, keyword):
        return {line[1]: [float(n) for n in line[3].strip('"').split()] for line in self.lines if line[0] == keyword}
