"""Runs the test modules that need a scheduler in a private /tmp: run.py MODULE..."""

import os
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(os.environ["KLOV_SOURCE"], "tests", "e2e")]

import private_tmp  # noqa: E402

if __name__ == "__main__":
    folders = [os.environ["KLOV_SOURCE"], HERE, os.environ["KLOV_DRV_DIR"]]
    for program in ("KLOV_FILTER", "KLOV_STATUS", "KLOV_PREVIEW", "KLOV_COMMANDS", "KLOV_CTL"):
        if os.environ.get(program):
            folders.append(os.path.dirname(os.environ[program]))
    os.environ["KLOV_PRIVATE_TMP"] = "yes" if private_tmp.enter(folders) else ""
    os.chdir(HERE)
    unittest.main(module=None, argv=["run.py"] + sys.argv[1:])
