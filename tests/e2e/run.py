"""Runs end-to-end test modules in a private /tmp: run.py MODULE..."""

import os
import sys
import unittest

import private_tmp

if __name__ == "__main__":
    here = os.path.dirname(os.path.abspath(__file__))
    folders = [os.environ["KLOV_SOURCE"], here, os.path.dirname(os.environ["KLOV_FILTER"]), os.environ["KLOV_DRV_DIR"]]
    if os.environ.get("KLOV_PREVIEW"):
        folders.append(os.path.dirname(os.environ["KLOV_PREVIEW"]))
    os.environ["KLOV_PRIVATE_TMP"] = "yes" if private_tmp.enter(folders) else ""
    os.chdir(here)
    unittest.main(module=None, argv=["run.py"] + sys.argv[1:])
