"""How the tests written in Python run: one that hangs is named, and one that is skipped must be
known to be skipped here."""

import faulthandler
import os
import pathlib
import sys
import unittest


class Test(unittest.TestCase):
    """After so long, prints the test's stack and ends the run."""

    longest_seconds = 150

    def run(self, result=None):
        faulthandler.dump_traceback_later(self.longest_seconds, exit=True)
        try:
            return super().run(result)
        finally:
            faulthandler.cancel_dump_traceback_later()


def known_skips():
    """The names on the session's list, which is given as a Windows program opens it."""
    path = pathlib.Path(os.environ.get("MORVANE_TEST_KNOWN_SKIPS", "").removeprefix("Z:"))
    lines = path.read_text(encoding="utf-8").splitlines() if path.is_file() else []
    return {line.partition(":")[0] for line in lines}


def main(arguments=None):
    result = unittest.main(argv=arguments, verbosity=2, exit=False).result
    known = known_skips()
    accepted = result.wasSuccessful() and result.testsRun > 0
    for test, reason in result.skipped:
        name = test.id().removeprefix("__main__.")
        print(f"skipped: {name}: {reason}")
        if name not in known:
            print(f"FAILED: {name} is not known to be skipped here")
            accepted = False
    sys.exit(not accepted)
