"""How the tests written in Python run: one that hangs is named, and one that is skipped must be
known to be skipped here."""

import faulthandler
import fnmatch
import os
import pathlib
import sys
import unittest


LONGEST_SECONDS = 150


def watch(seconds):
    """After so long without another call, prints the stack and ends the run."""
    faulthandler.dump_traceback_later(seconds, exit=True)


class Test(unittest.TestCase):
    longest_seconds = LONGEST_SECONDS

    def run(self, result=None):
        watch(self.longest_seconds)
        try:
            return super().run(result)
        finally:
            watch(LONGEST_SECONDS)


def known_skips():
    """The names on the session's list, which is given as a Windows program opens it."""
    path = pathlib.Path(os.environ.get("MORVANE_TEST_KNOWN_SKIPS", "").removeprefix("Z:"))
    lines = path.read_text(encoding="utf-8").splitlines() if path.is_file() else []
    return {line.partition(":")[0] for line in lines}


class Loader(unittest.TestLoader):
    """GTEST_FILTER, which chooses tests everywhere, does so here too."""

    chosen, _, left_out = os.environ.pop("GTEST_FILTER", "").partition("-")

    def getTestCaseNames(self, case):
        def named(name, patterns):
            return any(fnmatch.fnmatchcase(f"{case.__name__}.{name}", pattern)
                       for pattern in patterns.split(":"))
        return [name for name in super().getTestCaseNames(case)
                if named(name, self.chosen or "*") and not named(name, self.left_out)]


def main(arguments=None):
    watch(LONGEST_SECONDS)  # what the tests of a class share takes time, too
    result = unittest.main(argv=arguments, testLoader=Loader(), verbosity=2, exit=False).result
    known = known_skips()
    accepted = result.wasSuccessful() and (result.testsRun > 0 or
                                          bool(Loader.chosen or Loader.left_out))
    for test, reason in result.skipped:
        name = test.id().removeprefix("__main__.")
        print(f"skipped: {name}: {reason}")
        if name not in known:
            print(f"FAILED: {name} is not known to be skipped here")
            accepted = False
    sys.exit(not accepted)
