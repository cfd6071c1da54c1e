"""Reads the tables that klov.drv is made from, and PPD files."""

import os
import re

SOURCE = os.environ["KLOV_SOURCE"]
# Options that the filters before rastertoklov read.
DOCUMENT_OPTIONS = {"Dither", "Darkness"}


def rows(path):
    """The rows of a table whose columns are separated by ' | '."""
    with open(os.path.join(SOURCE, path), encoding="utf-8") as table:
        for line in table:
            line = line.rstrip()
            if line and not line.startswith("#"):
                yield [column.strip() for column in re.split(r" \| ", line)]


def models():
    keys = "id manufacturer name identity description type width flags_a flags_b unit_factor".split()
    for row in rows("model/models.txt"):
        model = dict(zip(keys, row, strict=True))
        model["type"] = int(model["type"], 0)
        model["width"] = int(model["width"])
        yield model


def drivable_models():
    return [model for model in models() if model["type"] & 1]


def printer_class(model):
    description = model["description"]
    if description.endswith("Mobile Printer"):
        return "mobile"
    if re.search(r"(Label|Label/Receipt) Printer$|Label Control Board$", description):
        return "label"
    return "receipt"


class Option:
    def __init__(self, group, keyword, defaults, text, help_text):
        self.group, self.keyword, self.text, self.help = group, keyword, text, help_text
        self.defaults = defaults
        self.choices = {}


def options():
    """The options in the order of the table, by keyword."""
    found = {}
    group = None
    for row in rows("ppd/options.txt"):
        if row[0] == "group":
            group = row[2]
        elif row[0] == "option":
            defaults = dict(pair.split("=") for pair in row[2].split())
            option = found[row[1]] = Option(group, row[1], defaults, row[3], row[4])
        elif row[0] == "choice":
            for value in row[1].split():
                option.choices[value] = row[2].replace("%d", value)
        elif row[0] == "built":
            found[row[1]] = Option(None, row[1], row[2], row[3], row[4])
    return found


def nevers():
    return [(row[1].split(), row[2].split()) for row in rows("ppd/options.txt") if row[0] == "never"]


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
