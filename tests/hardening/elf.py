"""What readelf says about a program or a library, and which of the protections it lacks."""

import os
import re
import subprocess

READELF = os.environ["KLOV_READELF"]


def readelf(option, path):
    return subprocess.run([READELF, "-W", option, path], check=True, stdout=subprocess.PIPE, text=True,
                          env={**os.environ, "LC_ALL": "C"}).stdout


def is_elf(path):
    with open(path, "rb") as file:
        return file.read(4) == b"\x7fELF"


def undefined_symbols(path):
    """Names that the file asks other libraries for, without their versions."""
    return {line.split()[7].split("@")[0] for line in readelf("--dyn-syms", path).splitlines()
            if len(line.split()) > 7 and line.split()[6] == "UND"}


def segments(path):
    """(type, flags) of each segment, the flags as "R", "RW", "R E", "RWE" without the blanks."""
    rows = re.findall(r"^\s+([A-Z_]+)\s+0x\S+ 0x\S+ 0x\S+ 0x\S+ 0x\S+ ([RWE ]{3}) 0x",
                      readelf("--program-headers", path),
                      re.M)
    return [(kind, flags.replace(" ", "")) for kind, flags in rows]


def dynamic_tags(path):
    """tag: value, as "FLAGS_1": "Flags: NOW PIE"."""
    return dict(re.findall(r"^\s+0x[0-9a-f]+ \((\w+)\)\s+(.*?)\s*$", readelf("--dynamic", path), re.M))


def run_path(path):
    tags = dynamic_tags(path)
    return tags.get("RPATH", "") + tags.get("RUNPATH", "")


def lacks(path, is_program):
    """The protections that the file does not have."""
    found = []
    file_type = re.search(r"^\s+Type:\s+(\w+)", readelf("--file-header", path), re.M).group(1)
    parts, tags = segments(path), dynamic_tags(path)
    symbols = undefined_symbols(path)
    if file_type != "DYN":
        found.append("any place in memory")
    if is_program and "PIE" not in tags.get("FLAGS_1", "").split():
        found.append("PIE")
    if "GNU_RELRO" not in [kind for kind, _ in parts]:
        found.append("RELRO")
    if "BIND_NOW" not in tags and "NOW" not in tags.get("FLAGS_1", "").split():
        found.append("BIND_NOW")
    if [flags for kind, flags in parts if kind == "GNU_STACK"] != ["RW"]:
        found.append("a stack that is not executable")
    if any(kind == "LOAD" and "W" in flags and "E" in flags for kind, flags in parts):
        found.append("memory that is never writable and executable")
    if "TEXTREL" in tags:
        found.append("code without relocations")
    if "__stack_chk_fail" not in symbols:
        found.append("the stack protector")
    if not any(re.fullmatch(r"__\w+_chk", name) for name in symbols):
        found.append("fortified calls")
    return found
