"""The protections of the built and of the installed files."""

import os
import pathlib
import subprocess
import tempfile
import unittest

import elf

PROGRAMS = [path for path in os.environ["KLOV_PROGRAMS"].split(":") if path]
LIBRARIES = os.environ["KLOV_LIBRARIES"].split(":")

WEAK_PROGRAM = """
#include <stdio.h>
int main(int argc, char **argv)
{
    char text[20];
    sprintf(text, "%.*s", argc, argv[0]);
    return text[0];
}
"""
WEAK_FLAGS = ["-O0", "-U_FORTIFY_SOURCE", "-fno-stack-protector", "-fno-pie", "-no-pie", "-Wl,-z,execstack",
              "-Wl,-z,norelro", "-Wl,-z,lazy", "-Wl,-rpath,/nowhere"]


class BuiltFiles(unittest.TestCase):
    def test_programs(self):
        for path in PROGRAMS:
            with self.subTest(path=path):
                self.assertEqual(elf.lacks(path, is_program=True), [])

    def test_libraries(self):
        for path in LIBRARIES:
            with self.subTest(path=path):
                self.assertEqual(elf.lacks(path, is_program=False), [])

    def test_a_weak_program_is_seen_to_be_weak(self):
        with tempfile.TemporaryDirectory() as folder:
            program = os.path.join(folder, "weak")
            subprocess.run([os.environ["KLOV_CC"], "-x", "c", "-", "-o", program] + WEAK_FLAGS, input=WEAK_PROGRAM,
                           text=True, stderr=subprocess.DEVNULL, check=True)
            self.assertEqual(elf.lacks(program, is_program=True), [
                "any place in memory", "PIE", "RELRO", "BIND_NOW", "a stack that is not executable",
                "the stack protector", "fortified calls"])
            self.assertEqual(elf.run_path(program), "Library runpath: [/nowhere]")


class InstalledFiles(unittest.TestCase):
    def test_none_names_a_folder_to_look_for_libraries(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([os.environ["CMAKE"], "--install", os.environ["KLOV_BUILD"]], check=True,
                           stdout=subprocess.DEVNULL, env={**os.environ, "DESTDIR": folder})
            files = [path for path in pathlib.Path(folder).rglob("*")
                     if path.is_file() and not path.is_symlink() and elf.is_elf(path)]
            self.assertEqual(len(files), len(PROGRAMS) + len(LIBRARIES), files)
            for path in files:
                with self.subTest(path=path.name):
                    self.assertEqual(elf.run_path(str(path)), "")


if __name__ == "__main__":
    unittest.main()
