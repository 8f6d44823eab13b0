#!/usr/bin/python3
"""Runs the kit as its users do: unpacked on drive C:, started by verify.cmd, where no drive leads to
other programs. In a session of tests/session/wine_session.sh only.

usage: check_kit.py KIT [--whole]
"""

import hashlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest
import xml.etree.ElementTree
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "package"))
import installation
from installation import DRIVE, PROFILE, SETTINGS, STARTUP_SHORTCUT

WHOLE = "--whole" in sys.argv
ARCHIVE = pathlib.Path(next((word for word in sys.argv[1:] if word != "--whole"), "")).resolve()

REFUSED = 3
# Both blanks and the character that cmd takes for an end of a command.
PLACE = DRIVE / "Jack & Jill (1)"
OTHER_STARTUP_FILE = STARTUP_SHORTCUT.parent / "other program.txt"
THEME = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize"

# A few of every level but the last; among them some that change what is put back.
SLICE = ("SettingsLineTest.*:AllocationTest.AreCounted:ThemeTest.OnlyTheNumberZero*:"
         "DataRemovalTest.*:StartupShortcutTest.*:StartTest.FirstStart*")
JUDGES = "StartTest.FirstStart*:SwitchesTest.ShortcutNames*"
LONG = "AllocationTest.*"
ENDLESS = "MenuRunningTest.*:TroubledWindowsTest.*"  # takes longer than any test here waits
LISTING = "--gtest_list_tests"


class Kit:
    """The kit, unpacked anew."""

    def __init__(self):
        shutil.rmtree(PLACE, ignore_errors=True)
        with zipfile.ZipFile(ARCHIVE) as archive:
            archive.extractall(PLACE)
        self.folder, = PLACE.iterdir()
        self.program = self.folder / "Morvane.exe"
        self.saved = self.folder / "saved"

    def start(self, *arguments, script="verify.cmd"):
        return subprocess.Popen(["wine", "cmd", "/c", f".\\{script}", *arguments], cwd=self.folder,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)

    def run(self, *arguments, **options):
        """The exit code and what was printed."""
        run = self.start(*arguments, **options)
        text = run.communicate()[0].decode()
        return run.returncode, text

    def report(self):
        return (self.folder / "report.txt").read_text(encoding="utf-8")

    def cases(self):
        """{name: what became of it}, "passed" or the name of the element that says otherwise."""
        tree = xml.etree.ElementTree.parse(self.folder / "report.xml")
        return {f"{case.get('classname')}.{case.get('name')}":
                next((inside.tag for inside in case), "passed") for case in tree.iter("testcase")}


def theme():
    done = subprocess.run(["wine", "reg", "query", THEME, "/v", "AppsUseLightTheme"],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=False)
    return done.stdout.decode().split()[-1:]


def state():
    """What a user has that the tests change."""
    return {path.name: path.read_bytes() if path.exists() else None
            for path in (SETTINGS, OTHER_STARTUP_FILE, STARTUP_SHORTCUT)}, theme()


def process_named(name):
    return next((number for number, command in installation.processes().items()
                 if command and command[0].lower().endswith(name) and LISTING not in command), None)


def wait_for_process(name):
    installation.wait_until(lambda: process_named(name), f"{name} runs")
    return process_named(name)


@unittest.skipUnless(installation.is_disposable(), "the profile is not disposable")
class KitTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        (PROFILE / "dosdevices" / "z:").unlink(missing_ok=True)
        # Where Wine's programs can be, too.
        os.chdir(DRIVE)

    def setUp(self):
        self.kit = Kit()
        SETTINGS.parent.mkdir(parents=True, exist_ok=True)
        SETTINGS.write_text("@pinning=0\nmine\n", encoding="utf-8")
        OTHER_STARTUP_FILE.write_text("mine, too", encoding="utf-8")
        STARTUP_SHORTCUT.write_bytes(b"a shortcut")
        installation.wine("reg", "add", THEME, "/v", "AppsUseLightTheme", "/t", "REG_DWORD",
                          "/d", "0", "/f")
        self.before = state()
        self.assertEqual(theme(), ["0x0"])

    def assert_put_back(self):
        self.assertEqual(state(), self.before)
        self.assertFalse(self.kit.saved.exists())

    def test_where_nothing_is_thrown_away_it_only_tells_what_it_would_change(self):
        code, text = self.kit.run()
        self.assertEqual(code, REFUSED)
        for item in (r"%APPDATA%\Morvane", "Startup", "User Shell Folders", "AppsUseLightTheme"):
            self.assertIn(item, text)
        self.assertFalse((self.kit.folder / "report.txt").exists())
        self.assert_put_back()

    def test_it_does_not_disturb_a_running_morvane(self):
        morvane = installation.start(installation.windows_path(self.kit.program))
        self.addCleanup(morvane.wait)
        self.addCleanup(installation.clean)
        installation.wait_until(lambda: "Morvane is running" in self.kit.run()[1], "it is noticed")
        self.assertEqual(self.kit.run("/here")[0], REFUSED)
        self.assertEqual(len(installation.running()), 1)
        self.assert_put_back()

    def test_tests_run_are_reported_and_leave_the_user_everything(self):
        code, text = self.kit.run("/here", f"/only:{SLICE}")
        self.assertEqual(code, 0, text)
        cases = self.kit.cases()
        self.assertGreater(len(cases), 20)
        self.assertEqual(set(cases.values()), {"passed"})
        self.assertIn(f"{len(cases)} passed, 0 failed", self.kit.report())
        self.assertIn(hashlib.sha256(self.kit.program.read_bytes()).hexdigest(), self.kit.report())
        self.assertIn("- Read-only files and folders go",
                      self.kit.report().split("Steps that are not")[0])
        self.assertFalse((PROFILE / "dosdevices" / "z:").exists())
        self.assert_put_back()

    def test_scripts_without_the_rest_say_so(self):
        shutil.rmtree(self.kit.folder / "tests")
        for script in ("verify.cmd", "sandbox.cmd"):
            code, text = self.kit.run(script=script)
            self.assertEqual(code, 1)
            self.assertIn("Unpack the whole archive first.", text)

    def assert_found_broken(self):
        code, _ = self.kit.run("/here", f"/only:{JUDGES}")
        self.assertEqual(code, 1)
        self.assertIn("failure", self.kit.cases().values())
        self.assertRegex(self.kit.report(), r"(?m)^FAILED +program")
        self.assert_put_back()

    def test_damaged_program_is_found(self):
        data = self.kit.program.read_bytes()
        self.kit.program.write_bytes(data[:len(data) // 2])
        self.assert_found_broken()

    @unittest.skipUnless(WHOLE, "slow")
    def test_wrong_program_is_found(self):
        shutil.copy(self.kit.folder / "tests" / "window_actor.exe", self.kit.program)
        self.assert_found_broken()

    @unittest.skipUnless(WHOLE, "slow")
    def test_program_that_does_something_else_is_found(self):
        data = self.kit.program.read_bytes()
        text = b"# Morvane config"
        self.assertEqual(data.count(text), 1)
        self.kit.program.write_bytes(data.replace(text, text.swapcase()))
        self.assert_found_broken()

    def test_sandbox_gets_the_folder_and_the_script(self):
        code, text = self.kit.run(script="sandbox.cmd")
        self.assertEqual(code, 1)
        self.assertIn("Enable-WindowsOptionalFeature", text)
        tree = xml.etree.ElementTree.parse(self.kit.folder / "verify.wsb")
        self.assertEqual(tree.findtext(".//HostFolder"),
                         installation.windows_path(self.kit.folder))
        self.assertEqual(tree.findtext(".//ReadOnly"), "false")
        self.assertEqual(tree.findtext(".//Networking"), "Disable")
        self.assertTrue(tree.findtext(".//Command").endswith(
            tree.findtext(".//SandboxFolder") + r"\verify.cmd"))

    @unittest.skipUnless(WHOLE, "slow")
    def test_killed_run_is_put_back_by_the_next_start(self):
        run = self.kit.start("/here", f"/only:{ENDLESS}")
        wait_for_process("morvane_program_tests.exe")
        installation.wait_until(lambda: state() != self.before, "a test changes something")
        os.kill(process_named("morvane_verify.exe"), signal.SIGKILL)
        installation.wait_until(lambda: not process_named("morvane_program_tests.exe"),
                                "the tests end with the run")
        run.communicate()
        code, text = self.kit.run()
        self.assertEqual(code, REFUSED)
        self.assertIn("has been put back", text)
        self.assert_put_back()

    @unittest.skipUnless(WHOLE, "slow")
    def test_interrupted_run_puts_back_and_reports(self):
        run = self.kit.start("/here", f"/only:{LONG}")
        wait_for_process("morvane_cost_tests.exe")
        # To Wine's programs, Ctrl+C.
        os.kill(process_named("morvane_verify.exe"), signal.SIGINT)
        run.communicate(timeout=installation.PATIENCE)
        self.assertEqual(run.returncode, 1)
        self.assertIn("stopped by the user", self.kit.report())
        self.assertIn("error", self.kit.cases().values())
        self.assert_put_back()

    @unittest.skipUnless(WHOLE, "slow")
    def test_tests_after_one_that_kills_its_program_are_run(self):
        run = self.kit.start("/here", f"/only:{LONG}")
        victim = wait_for_process("morvane_cost_tests.exe")
        os.kill(victim, signal.SIGKILL)
        run.communicate()
        self.assertEqual(run.returncode, 1)
        self.assertEqual(sorted(self.kit.cases().values()).count("error"), 1, self.kit.report())
        self.assertEqual(set(self.kit.cases().values()), {"error", "passed"})
        self.assert_put_back()

    @unittest.skipUnless(WHOLE, "slow")
    def test_everything_passes(self):
        start = time.monotonic()
        code, text = self.kit.run("/here")
        seconds = time.monotonic() - start
        print(f"\n{text.splitlines()[-2]}, {seconds:.0f} s", file=sys.stderr)
        self.assertEqual(code, 0, self.kit.report())
        self.assertRegex(self.kit.report(), r"(?s)Steps that are not\s+none")
        self.assertTrue(re.search(r"(?m)^passed +fuzz", self.kit.report()))
        self.assert_put_back()


if __name__ == "__main__":
    if not ARCHIVE.is_file():
        sys.exit(__doc__)
    unittest.main(argv=sys.argv[:1], verbosity=2)
