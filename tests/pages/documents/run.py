"""Runs document tests in a private /tmp, with the scheduler of the end-to-end tests: run.py MODULE..."""

import os
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(os.environ["KLOV_SOURCE"], "tests", "e2e")]

import private_tmp  # noqa: E402

if __name__ == "__main__":
    folders = [os.environ[name] for name in ("KLOV_SOURCE", "KLOV_DRV_DIR", "KLOV_PAGES_DIR")]
    private_tmp.enter(folders + [os.path.dirname(os.environ[name]) for name in ("KLOV_FILTER", "KLOV_PREVIEW")])
    os.chdir(HERE)
    unittest.main(module=None, argv=["run.py"] + sys.argv[1:])
