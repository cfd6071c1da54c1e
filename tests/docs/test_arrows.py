"""Files include what the table in CONTRIBUTING.md allows their part to include, and no file includes itself by a
detour."""

import glob
import os
import re
import tempfile
import unittest

SOURCE = os.environ["KLOV_SOURCE"]
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|<(klov/[^>]+)>)', re.M)
TABLE = re.compile(r"^\| part \|.*\n\|[-|]+\|\n((?:\|.*\n)+)", re.M)


def read_table(text):
    """Part: the parts that it may include."""
    arrows = {}
    for row in TABLE.search(text).group(1).splitlines():
        parts, _, allowed = [cell.strip() for cell in row.strip("|").split("|")]
        for part in re.findall(r"`([^`]+)`", parts):
            arrows[part] = set(re.findall(r"`([^`]+)`", allowed)) | set(re.findall(r"`([^`]+)`", parts))
    return arrows


def part_of(path, arrows):
    return max((part for part in arrows if path.startswith(part)), key=len, default=None)


def read_includes(root, arrows):
    """File: the files of ours that it includes. Rooms that are not there yet have no files."""
    includes = {}
    for room in sorted({part.split("/")[0] for part in arrows}):
        for path in glob.glob(os.path.join(root, room, "**", "*.*"), recursive=True):
            if path.endswith((".cpp", ".c", ".h")):
                with open(path, encoding="utf-8") as file:
                    found = INCLUDE.findall(file.read())
                includes[os.path.relpath(path, root)] = [own or "include/" + public for own, public in found]
    return includes


def forbidden(includes, arrows):
    wrong = []
    for path, targets in sorted(includes.items()):
        part = part_of(path, arrows)
        if part is None:
            wrong.append("%s belongs to no part" % path)
            continue
        for target in targets:
            other = part_of(target, arrows)
            if other is None and "/" not in target:
                continue  # made while building, in the same room
            if other not in arrows[part]:
                wrong.append("%s (%s) must not include %s (%s)" % (path, part, target, other))
    return wrong


def find_circle(includes):
    """The files of a circle, or none. A header and its source file are one."""
    arrows = {}
    for path, targets in includes.items():
        name = os.path.splitext(path)[0]
        arrows.setdefault(name, set()).update({os.path.splitext(target)[0] for target in targets} - {name})
    done, way = set(), []

    def walk(name):
        if name in way:
            return way[way.index(name):] + [name]
        if name in done:
            return []
        way.append(name)
        for target in sorted(arrows.get(name, ())):
            if circle := walk(target):
                return circle
        way.pop()
        done.add(name)
        return []

    return next(filter(None, map(walk, sorted(arrows))), [])


class Arrows(unittest.TestCase):
    def setUp(self):
        with open(os.path.join(SOURCE, "CONTRIBUTING.md"), encoding="utf-8") as file:
            self.arrows = read_table(file.read())
        self.includes = read_includes(SOURCE, self.arrows)

    def test_the_table_names_parts_only(self):
        named = set().union(*self.arrows.values())
        self.assertEqual(named - set(self.arrows), set())

    def test_every_named_file_is_there(self):
        for part in self.arrows:
            if not part.endswith("/"):
                self.assertTrue(any(path.startswith(part + ".") for path in self.includes), part)

    def test_files_include_what_the_table_allows(self):
        self.assertGreater(len(self.includes), 80)
        wrong = forbidden(self.includes, self.arrows)
        self.assertEqual(wrong, [], "\n" + "\n".join(wrong) + "\nthe table is in CONTRIBUTING.md, The rooms")

    def test_no_circle_of_files(self):
        self.assertEqual(find_circle(self.includes), [])


class TheChecksThemselves(unittest.TestCase):
    """On a small tree with one fault of each kind."""

    TEXT = "| part | what | may include |\n|---|---|---|\n| `low/` | | |\n| `low/log` | | `low/`, `high/` |\n" \
           "| `high/` | | `low/` |\n"

    def look_at(self, files):
        arrows = read_table(self.TEXT)
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                    file.write(text)
            includes = read_includes(root, arrows)
        return forbidden(includes, arrows), find_circle(includes)

    def test_a_sound_tree(self):
        files = {"low/a.h": "", "low/log.cpp": '#include "low/a.h"\n#include "high/b.h"\n',
                 "high/b.h": "#include <x.h>\n"}
        self.assertEqual(self.look_at(files), ([], []))

    def test_an_arrow_that_falls_up(self):
        wrong, circle = self.look_at({"low/a.h": '#include "high/b.h"\n', "high/b.h": ""})
        self.assertEqual(wrong, ["low/a.h (low/) must not include high/b.h (high/)"])
        self.assertEqual(circle, [])

    def test_a_part_of_a_room_is_not_the_room(self):
        wrong, _ = self.look_at({"high/b.cpp": '#include "low/log.h"\n', "low/log.h": ""})
        self.assertEqual(wrong, ["high/b.cpp (high/) must not include low/log.h (low/log)"])

    def test_a_circle_over_a_source_file(self):
        files = {"low/a.h": "", "low/a.cpp": '#include "low/b.h"\n', "low/b.h": '#include "low/a.h"\n'}
        _, circle = self.look_at(files)
        self.assertEqual(circle, ["low/a", "low/b", "low/a"])


if __name__ == "__main__":
    unittest.main()
