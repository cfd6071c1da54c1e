"""Every public header compiles alone, as C11 and as C++17, without a warning, whatever the compiler."""

import os
import shutil
import subprocess
import unittest

import headers

LANGUAGES = {
    "C11": (["gcc", "clang", os.environ["CC"]], ["-x", "c", "-std=c11"]),
    "C++17": (["g++", "clang++", os.environ["CXX"]], ["-x", "c++", "-std=c++17"]),
}


def compile_text(compiler, language, text):
    command = [compiler, *language, "-Wall", "-Wextra", "-pedantic", "-Werror", "-fsyntax-only"]
    command += [f"-I{headers.INCLUDE}", "-"]
    return subprocess.run(command, input=text, text=True, capture_output=True, timeout=60, check=False)


def compilers(names):
    return sorted({path for path in map(shutil.which, names) if path is not None})


class Headers(unittest.TestCase):
    def test_each_compiles_alone(self):
        for title, (names, language) in LANGUAGES.items():
            self.assertNotEqual(compilers(names), [], title)
            for compiler in compilers(names):
                for header in headers.HEADERS:
                    with self.subTest(language=title, compiler=compiler, header=header.name):
                        # A file of nothing but macros is no translation unit in C, so that one declaration follows.
                        text = f"#include <klov/{header.name}>\n#include <klov/{header.name}>\ntypedef int alone;\n"
                        result = compile_text(compiler, language, text)
                        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_the_buffer_for_cpp_compiles_alone(self):
        names, language = LANGUAGES["C++17"]
        for compiler in compilers(names):
            with self.subTest(compiler=compiler):
                text = "#include <klov/klov.hpp>\n#include <klov/klov.hpp>\n"
                text += "int f() { klov::buffer b(1); return b.try_add(klov_cmd_select_justification, 1); }\n"
                result = compile_text(compiler, language, text)
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_the_compilers_find_what_is_wrong(self):
        for names, language in LANGUAGES.values():
            for compiler in compilers(names):
                with self.subTest(compiler=compiler):
                    result = compile_text(compiler, language, "#include <klov/card.h>\nFILE *undeclared;\n")
                    self.assertNotEqual(result.returncode, 0)

    def test_klov_h_includes_all_the_others(self):
        text = (headers.INCLUDE / "klov" / "klov.h").read_text(encoding="ascii")
        for header in headers.HEADERS:
            if header.name not in ("klov.h", "export.h"):
                self.assertIn(f"#include <klov/{header.name}>\n", text)


if __name__ == "__main__":
    unittest.main()
