#!/usr/bin/env python3
"""Writes the modules of the Python package that follow from the headers: prototypes, commands and constants.

usage: generate.py INCLUDE/klov FOLDER
"""

import pathlib
import re
import sys
import textwrap

COMMENT = re.compile(r"/\*.*?\*/", re.S)
# A description, what is declared behind it, the name and the parameters.
FUNCTION = re.compile(r"/\*\*((?:(?!\*/).)*)\*/\s*KLOV_API\s+([\w\s]*?[\s*])(\w+)\(([^)]*)\);", re.S)
ENUM = re.compile(r"/\*\*((?:(?!\*/).)*)\*/\s*enum (\w+) \{(.*?)\};", re.S)
ENUMERATOR = re.compile(r"(\w+) = (\w+),?\s*/\*\*<(.*?)\*/", re.S)
RECORD = re.compile(r"typedef struct KLOV_RECORD\((\w+)\) \{(.*?)\} (klov_\w+);", re.S)
RESULT = re.compile(r"^#define (KLOV_\w+)\s+\(?(-?\d+)\)?\s*/\*\*<(.*?)\*/", re.M)

NUMBERS = {"uint8_t": "c_uint8", "int32_t": "c_int32", "uint32_t": "c_uint32", "float": "c_float"}
LONG_FEEDS = ("print_and_feed_paper", "print_and_reverse_feed_n_line")


def plain(comment):
    """A description without its stars; its first line is the first sentence."""
    return "\n".join(re.sub(r"^\s*\* ?", "", line) for line in comment.strip().splitlines()).strip()


def ctype(declaration):
    """The ctypes type of a parameter, a field or a result."""
    constant, base, stars = re.match(r"(const )?(\w+) ?(\**)", declaration).groups()
    if not stars:
        return NUMBERS.get(base, "c_void_p" if base == "uintptr_t" else "None")
    if constant and base == "char" and stars == "*":
        return "c_char_p"
    if constant and base == "klov_model_brief":
        return "POINTER(ModelBrief)"
    return "c_void_p"


def parameters(text):
    text = " ".join(text.split())
    return [] if text in ("", "void") else [part.strip() for part in text.split(",")]


def name_of(parameter):
    return re.search(r"(\w+)$", parameter).group(1)


def camel(name):
    return "".join(word.capitalize() for word in name.removeprefix("klov_").split("_"))


class Headers:
    def __init__(self, folder):
        self.texts = [path.read_text(encoding="ascii") for path in sorted(pathlib.Path(folder).glob("*.h"))]

    def functions(self):
        for text in self.texts:
            for comment, result, name, arguments in FUNCTION.findall(text):
                yield plain(comment), " ".join(result.split()), name, parameters(arguments)

    def find(self, pattern):
        return [match for text in self.texts for match in pattern.findall(text)]


def native(headers):
    yield '"""Every function of libklov as ctypes calls it. Generated from the C headers."""\n\n# flake8: noqa\n'
    yield "from ctypes import (POINTER, PyDLL, Structure, c_char_p, c_float, c_int32, c_uint8, c_uint32,\n"
    yield "                    c_void_p)\n\n\n"
    for tag, fields, _ in headers.find(RECORD):
        yield f"class {camel(tag)}(Structure):\n    _fields_ = [\n"
        for field in COMMENT.sub("", fields).split(";")[:-1]:
            field = " ".join(field.split())
            yield f'        ("{name_of(field)}", {ctype(field)}),\n'
        yield "    ]\n\n\n"
    yield "# No function waits for anything, so that giving up Python's lock would only cost time.\n"
    yield 'library = PyDLL("libklov.so.0")\n\n'
    for _, result, name, arguments in headers.functions():
        yield f"{name} = library.{name}\n"
        yield f"{name}.restype = {ctype(result)}\n"
        kinds = ", ".join(ctype(argument) for argument in arguments)
        yield textwrap.fill(f"{name}.argtypes = [{kinds}]", 118, subsequent_indent="    ",
                            break_long_words=False) + "\n"


def command(description, name, arguments):
    """The Python function of one command: class word and parameters in, bytes out."""
    short = name.removeprefix("klov_cmd_")
    given = [name_of(argument) for argument in arguments[1:-3]]
    kinds = [ctype(argument) for argument in arguments[1:-3]]
    has_data = "c_void_p" in kinds
    counted = has_data and given[-1] == "k"
    names = given[:-1] if counted else given
    hints = [f"{one}: {'bytes' if kind == 'c_void_p' else 'int'}" for one, kind in zip(names, kinds)]
    call = ", ".join(["printer_class", *names] + (["len(data)"] if counted else []))
    lines = [f"def {short}(", *[f"        {hint}," for hint in ["printer_class: int", *hints]]]
    head = " ".join(line.strip() for line in lines).replace("( ", "(").rstrip(",") + ") -> bytes:"
    if len(head) > 118:
        head = "\n".join([lines[0], *lines[1:]]).rstrip(",") + ") -> bytes:"
    yield head + "\n"
    body = textwrap.indent('"""' + description.replace("\\", "\\\\") + '\n"""', "    ")
    yield body + "\n"
    if has_data:
        yield "    data = bytes(data)\n"
    if short == "print_raster_bit_image":
        yield "    if len(data) != xBytes * yDots:\n        raise KlovError(-1)\n"
    if short in LONG_FEEDS:
        yield f"    return feed(_{short}, printer_class, n)\n\n\n"
    elif has_data:
        yield f"    return encode_data(_{short}, len(data), {call})\n\n\n"
    else:
        yield f"    return encode(_{short}, {call})\n\n\n"


def commands(headers):
    found = [(description, name, arguments) for description, _, name, arguments in headers.functions()
             if name.startswith("klov_cmd_") and arguments[-1].endswith("*len")]
    yield '"""Every command of libklov: class word and parameters in, bytes out. Generated from the C headers."""\n\n'
    yield "from . import _native\nfrom ._encode import KlovError, encode, encode_data, feed\n\n"
    yield "# flake8: noqa: E501\n"
    for _, name, _ in found:
        yield f"_{name.removeprefix('klov_cmd_')} = _native.{name}\n"
    yield "\n\n"
    for description, name, arguments in found:
        yield from command(description, name, arguments)


def constants(headers):
    yield '"""The named values of libklov\'s parameters, and its result codes. Generated from the C headers."""\n\n'
    yield "from enum import IntEnum\n\n"
    for comment, tag, body in headers.find(ENUM):
        members = ENUMERATOR.findall(body)
        prefix = "KLOV_" if len(members) < 2 else common_prefix([name for name, _, _ in members])
        yield f'\nclass {camel(tag)}(IntEnum):\n    """{" ".join(plain(comment).split())}"""\n\n'
        for name, value, words in members:
            short = name.removeprefix(prefix)
            short = short if short[0].isalpha() else prefix.rstrip("_").rsplit("_", 1)[1] + "_" + short
            yield f"    {short} = {value}  # {' '.join(words.split())}\n"
        yield "\n"
    yield "\n# Result codes.\n"
    for name, value, words in headers.find(RESULT):
        if name == "KLOV_OK" or name.startswith(("KLOV_E_", "KLOV_LIBUSB_")):
            yield f"{name.removeprefix('KLOV_')} = {value}  # {words.strip()}\n"


def common_prefix(names):
    """As many whole words as all names begin with."""
    words = [name.split("_") for name in names]
    same = 0
    while all(len(word) > same + 1 and word[same] == words[0][same] for word in words):
        same += 1
    return "".join(word + "_" for word in words[0][:same])


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.splitlines()[2])
    headers = Headers(sys.argv[1])
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    for module, write in (("_native", native), ("commands", commands), ("constants", constants)):
        text = "".join(write(headers)).rstrip("\n") + "\n"
        (folder / f"{module}.py").write_text(text, encoding="ascii")


if __name__ == "__main__":
    main()
