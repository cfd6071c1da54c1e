"""The installed files as their users meet them."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

SOURCE = os.environ["KLOV_SOURCE"]
BUILD = os.environ["KLOV_BUILD"]
LIBRARY = os.environ["KLOV_LIBRARY"]
FILTER = os.environ["KLOV_FILTER"]
CMAKE = os.environ["CMAKE"]
CC = os.environ["CC"]
CONSUMER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "consumer")
ANSWER = "Acme QX-100 0 1d 56 42 00\n"


def run(*command, **more):
    result = subprocess.run(command, capture_output=True, text=True, **more)
    if result.returncode:
        raise AssertionError("%s\n%s%s" % (" ".join(command), result.stdout, result.stderr))
    return result.stdout


def setUpModule():
    global work, stage
    work = tempfile.mkdtemp(prefix="klov-install-")
    unittest.addModuleCleanup(shutil.rmtree, work)
    stage = os.path.join(work, "stage")
    for component in ("library", "development"):
        run(CMAKE, "--install", BUILD, "--component", component, "--prefix", stage)


def needed(path):
    return set(re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", path)))


def find(folder, name):
    for parent, _, files in os.walk(folder):
        if name in files:
            return os.path.join(parent, name)
    raise AssertionError("no %s below %s" % (name, folder))


class BinaryInterface(unittest.TestCase):
    def test_the_library_exports_the_listed_names_and_no_others(self):
        with open(os.path.join(SOURCE, "packaging", "libklov.symbols"), encoding="ascii") as text:
            listed = [line.strip() for line in text if not line.startswith("#")]
        exported = [line.split()[-1].split("@")[0] for line in run("nm", "-D", "--defined-only", LIBRARY).splitlines()]
        self.assertEqual(sorted(exported), listed)
        self.assertEqual(listed, sorted(set(listed)))
        self.assertGreater(len(listed), 150)

    def test_the_library_needs_libc_only(self):
        self.assertEqual({name for name in needed(LIBRARY) if not name.startswith("ld-linux")}, {"libc.so.6"})

    def test_the_filter_needs_libcups_and_libc_only(self):
        names = {name for name in needed(FILTER) if not name.startswith("ld-linux")}
        self.assertEqual(names - {"libcupsimage.so.2"}, {"libcups.so.2", "libc.so.6"})

    def test_only_the_pdf_filter_loads_poppler(self):
        """Its licence is the GPL; nothing else of the project is to come under it."""
        loads = {"pdftoroll": True, "imagetoroll": False, "texttoroll": False}
        for name, poppler in loads.items():
            path = os.path.join(BUILD, "pages", name)
            if os.path.exists(path):
                self.assertEqual(any("poppler" in library for library in needed(path)), poppler, name)
        for path in (FILTER, LIBRARY):
            self.assertFalse(any("poppler" in library for library in needed(path)), path)
        path = os.path.join(BUILD, "pages", "pdftoroll")
        if os.path.exists(path):
            self.assertFalse(any("pango" in library for library in needed(path)))

    def test_the_library_is_versioned(self):
        self.assertIn("Library soname: [libklov.so.0]", run("readelf", "-d", LIBRARY))


class Consumers(unittest.TestCase):
    def setUp(self):
        libraries = os.path.dirname(find(stage, "libklov.so.0.1.0"))
        self.environment = dict(os.environ, LD_LIBRARY_PATH=libraries,
                                PKG_CONFIG_PATH=os.path.join(libraries, "pkgconfig"))

    def test_a_program_finds_the_library_by_pkg_config(self):
        # The file names the final prefix; here that is the stage.
        flags = run("pkg-config", "--define-variable=prefix=" + stage, "--cflags", "--libs", "klov", env=self.environment).split()
        program = os.path.join(work, "consumer")
        run(CC, "-std=c11", "-Wall", "-Wextra", "-pedantic", "-Werror", os.path.join(CONSUMER, "consumer.c"),
            "-o", program, *flags)
        self.assertEqual(run(program, env=self.environment), ANSWER)

    def test_programs_find_the_library_by_cmake_shared_and_static(self):
        build = os.path.join(work, "consumer-build")
        run(CMAKE, "-S", CONSUMER, "-B", build, "-DCMAKE_PREFIX_PATH=" + stage, "-DCMAKE_C_COMPILER=" + CC)
        run(CMAKE, "--build", build)
        self.assertEqual(run(build + "/shared"), ANSWER)
        self.assertEqual(run(build + "/static"), ANSWER)
        self.assertNotIn("libklov", " ".join(needed(build + "/static")))


class Places(unittest.TestCase):
    def test_filter_and_driver_file_go_where_cups_looks(self):
        root = os.path.join(work, "root")
        run(CMAKE, "--install", BUILD, "--component", "driver", env=dict(os.environ, DESTDIR=root))
        cups = {"serverbin": "/usr/lib/cups", "datadir": "/usr/share/cups"}
        if shutil.which("cups-config"):
            cups = {name: run("cups-config", "--" + name).strip() for name in cups}
        self.assertTrue(os.access(root + cups["serverbin"] + "/filter/rastertoklov", os.X_OK))
        for name in ("klov.drv", "klov-zh_CN.po"):
            self.assertTrue(os.path.getsize(root + cups["datadir"] + "/drv/" + name))
        self.assertTrue(os.path.exists(root + cups["datadir"] + "/ppd-updaters/printer-driver-klov.ppd-updater"))
        find(root, "rastertoklov.8")

    def test_document_filters_and_mime_files_go_where_cups_looks(self):
        if not os.path.exists(os.path.join(BUILD, "pages", "pdftoroll")):
            self.skipTest("the document filters are not built")
        root = os.path.join(work, "documents")
        run(CMAKE, "--install", BUILD, "--component", "documents", env=dict(os.environ, DESTDIR=root))
        for name in ("pdftoroll", "imagetoroll", "texttoroll"):
            self.assertTrue(os.access(find(root, name), os.X_OK))
            self.assertTrue(os.path.getsize(find(root, name + ".8")))
        for name in ("klov.types", "klov.convs"):
            self.assertIn("/mime/", find(root, name))

    def test_all_public_headers_are_installed(self):
        there = set(os.listdir(os.path.dirname(find(stage, "klov.h"))))
        self.assertEqual(there, {name for name in os.listdir(os.path.join(SOURCE, "include", "klov"))
                                 if name.endswith(".h")})


if __name__ == "__main__":
    unittest.main()
