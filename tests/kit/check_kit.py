#!/usr/bin/python3
"""Runs the kit as its users do: unpacked on drive C:, started by verify.cmd, where no drive leads to
other programs. In a session of tests/session/wine_session.sh only.

usage: check_kit.py KIT [--whole]
"""

import fnmatch
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
import suite
from installation import APP_DATA, DRIVE, PROFILE, SETTINGS, STARTUP_SHORTCUT

WHOLE = "--whole" in sys.argv
ARCHIVE = pathlib.Path(next((word for word in sys.argv[1:] if word != "--whole"), "")).resolve()

REFUSED = 3
# Both blanks and the character that cmd takes for an end of a command.
PLACE = DRIVE / "Jack & Jill (1)"
OTHER_PLACE = DRIVE / "other"
OTHER_STARTUP_FILE = STARTUP_SHORTCUT.parent / "other program.txt"
SAVED = APP_DATA / "Local" / "Morvane-verify"
TESTS_FOLDER = APP_DATA / "Roaming" / "MorvaneTests"
CURRENT_VERSION = r"HKCU\Software\Microsoft\Windows\CurrentVersion"
THEME = rf"{CURRENT_VERSION}\Themes\Personalize", "AppsUseLightTheme"
RUN_ONCE = rf"{CURRENT_VERSION}\RunOnce", "!MorvaneVerify"
VALUES = (THEME, RUN_ONCE, *((rf"{CURRENT_VERSION}\Explorer\{key}", name)
                             for key in ("User Shell Folders", "Shell Folders")
                             for name in ("AppData", "StartUp")))
TESTS = pathlib.Path(__file__).resolve().parents[1]

# A few of every level but the last; among them some that change what is put back.
SLICE = ("ParseSettingsText.*:AllocationTest.AreCounted:ThemeTest.OnlyTheNumberZero*:"
         "DataRemovalTest.*:StartupShortcutTest.*:StartTest.FirstStart*")
# With the shipped program itself, not with one whose calls are recorded.
JUDGES = "MenuListsTest.AddRemoveChoice*:SwitchesTest.ShortcutNames*"
LONG = "AllocationTest.*"
ENDLESS = "MenuRunningTest.*:TroubledWindowsTest.*"  # takes longer than any test here waits
LISTING = "--gtest_list_tests"


class Kit:
    """The kit, unpacked anew."""

    def __init__(self, place=PLACE):
        shutil.rmtree(place, ignore_errors=True)
        with zipfile.ZipFile(ARCHIVE) as archive:
            archive.extractall(place)
        self.folder, = place.iterdir()
        self.program = self.folder / "Morvane.exe"
        self.verify = self.folder / "tests" / "morvane_verify.exe"

    def start(self, *arguments, script="verify.cmd"):
        return subprocess.Popen(["wine", "cmd", "/c", f".\\{script}", *arguments], cwd=self.folder,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)

    def run(self, *arguments, **options):
        """The exit code and what was printed; every run that has begun prints something."""
        def attempt():
            run = self.start(*arguments, **options)
            text = run.communicate()[0].decode()
            return run.returncode, text
        return installation.run_until_begun(
            attempt, lambda done: done[1] and "ShellExecuteEx failed" not in done[1], "the kit")

    def report(self):
        return (self.folder / "report.txt").read_text(encoding="utf-8")

    def cases(self):
        """{name: what became of it}, "passed" or the name of the element that says otherwise."""
        tree = xml.etree.ElementTree.parse(self.folder / "report.xml")
        return {f"{case.get('classname')}.{case.get('name')}":
                next((inside.tag for inside in case), "passed") for case in tree.iter("testcase")}


def values():
    """Those that the tests change, {(key, name): (type, data)}."""
    done = installation.run_until_begun(
        lambda: subprocess.run(["wine", "reg", "query", CURRENT_VERSION, "/s"], check=False,
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE),
        lambda done: done.returncode == 0, "reg")
    found = {}
    key = ""
    for line in done.stdout.decode().splitlines():
        row = re.fullmatch(r" {4}(.+) {4}(REG_\w+) {4}(.*)", line)
        if not row:
            key = line.replace("HKEY_CURRENT_USER", "HKCU", 1)
        elif (key, row[1]) in VALUES:
            found[key, row[1]] = row[2], row[3]
    return found


def files():
    return {str(path): path.is_file() and path.read_bytes()
            for folder in (SETTINGS.parent, STARTUP_SHORTCUT.parent, TESTS_FOLDER)
            for path in (folder, *folder.rglob("*")) if path.exists()}


def state():
    """What a user has that the tests change."""
    return files(), values()


def process_named(name):
    return next((number for number, command in installation.processes().items()
                 if command and command[0].lower().endswith(name) and LISTING not in command), None)


def wait_for_process(name):
    installation.wait_until(lambda: process_named(name), f"{name} runs")
    return process_named(name)


def slow(test):
    """Left out, unless the kit is checked as a whole."""
    if WHOLE:
        return test
    print(f"skipped: KitTest.{test.__name__}: takes long; ./dev kit --check runs it")
    return None


@unittest.skipUnless(installation.is_disposable(), "the profile is not disposable")
class KitTest(suite.Test):
    longest_seconds = 1200 if WHOLE else suite.LONGEST_SECONDS

    @classmethod
    def setUpClass(cls):
        (PROFILE / "dosdevices" / "z:").unlink(missing_ok=True)
        # Not on drive Z:, which is gone.
        os.chdir(DRIVE)

    def setUp(self):
        self.kit = Kit()
        SETTINGS.parent.mkdir(parents=True, exist_ok=True)
        SETTINGS.write_text("@pinning=0\nmine\n", encoding="utf-8")
        OTHER_STARTUP_FILE.write_text("mine, too", encoding="utf-8")
        STARTUP_SHORTCUT.write_bytes(b"a shortcut")
        installation.wine("reg", "add", THEME[0], "/v", THEME[1], "/t", "REG_DWORD", "/d", "0",
                          "/f")
        # What a failed test may have left behind.
        for folder in (SAVED, TESTS_FOLDER):
            shutil.rmtree(folder, ignore_errors=True)
        if RUN_ONCE in values():
            installation.wine("reg", "delete", RUN_ONCE[0], "/v", RUN_ONCE[1], "/f")
        self.before = state()
        self.assertEqual(self.before[1].keys(), {*VALUES} - {RUN_ONCE})
        self.assertEqual(self.before[1][THEME], ("REG_DWORD", "0x0"))

    def assert_put_back(self):
        self.assertEqual(state(), self.before)
        self.assertFalse(SAVED.exists())

    def assert_refused(self, why, *arguments):
        code, text = self.kit.run(*arguments)
        self.assertEqual(code, REFUSED, text)
        self.assertIn(why, text)

    def kill(self, run, tests):
        os.kill(process_named("morvane_verify.exe"), signal.SIGKILL)
        installation.wait_until(lambda: not process_named(tests), "the tests end with the run")
        run.communicate()

    def run_and_kill(self):
        run = self.kit.start("/here", f"/only:ParseSettingsText.*:{LONG}")
        wait_for_process("morvane_cost_tests.exe")
        self.kill(run, "morvane_cost_tests.exe")
        self.assertTrue(SAVED.exists())

    def test_where_nothing_is_thrown_away_it_only_tells_what_it_would_change(self):
        code, text = self.kit.run()
        self.assertEqual(code, REFUSED)
        for item in (r"%APPDATA%\Morvane", "MorvaneTests", "Startup", "User Shell Folders",
                     r"Explorer\Shell Folders", "AppsUseLightTheme", "RunOnce", "Notepad",
                     "work area", r"%LOCALAPPDATA%\Morvane-verify"):
            self.assertIn(item, text)
        self.assertFalse((self.kit.folder / "report.txt").exists())
        self.assert_put_back()

    def test_it_does_not_disturb_a_running_morvane(self):
        shutil.rmtree(SETTINGS.parent)
        morvane = installation.start(installation.windows_path(self.kit.program))
        self.addCleanup(morvane.wait)
        self.addCleanup(installation.clean)
        installation.wait_until(SETTINGS.exists, "it has begun")
        self.before = state()
        self.assert_refused("Morvane is running")
        self.assert_refused("Morvane is running", "/here")
        self.assertEqual(len(installation.running()), 1)
        self.assert_put_back()

    def test_it_does_not_end_the_users_notepad(self):
        notepad = installation.start("notepad")
        self.addCleanup(notepad.wait)
        process = wait_for_process("notepad.exe")
        self.addCleanup(os.kill, process, signal.SIGKILL)
        self.assert_refused("Notepad is running", "/here", f"/only:{SLICE}")
        self.assertEqual(process_named("notepad.exe"), process)
        self.assert_put_back()

    def test_it_does_not_remove_a_folder_that_is_not_the_tests(self):
        TESTS_FOLDER.mkdir()
        self.addCleanup(TESTS_FOLDER.rmdir)
        self.assert_refused("MorvaneTests is in the way", "/here", f"/only:{SLICE}")
        self.assertTrue(TESTS_FOLDER.exists())

    def test_second_run_changes_nothing(self):
        run = self.kit.start("/here", f"/only:{LONG}")
        wait_for_process("morvane_cost_tests.exe")
        self.assert_refused("running already", "/here", f"/only:{SLICE}")
        self.assertTrue(SAVED.exists())
        run.communicate()
        self.assertEqual(run.returncode, 0)
        self.assert_put_back()

    def test_tests_run_are_reported_and_leave_the_user_everything(self):
        code, text = self.kit.run("/here", f"/only:{SLICE}")
        self.assertEqual(code, 0, text)
        cases = self.kit.cases()
        self.assertGreater(len(cases), 20)
        levels = re.findall(r"(?m)^passed +(\w+)", self.kit.report())
        self.assertEqual(list(dict.fromkeys(levels)), ["unit", "cost", "desktop", "program"])
        self.assertEqual(set(cases.values()), {"passed"})
        self.assertIn(f"{len(cases)} passed, 0 failed", self.kit.report())
        self.assertIn(hashlib.sha256(self.kit.program.read_bytes()).hexdigest(), self.kit.report())
        for fact in (r"System: +Wine as .*Windows.* build [1-9]\d+\.\d+",
                     r"Place: +not a disposable machine", "Display language: +en-US",
                     "Scaling: +100 %, main screen 1280 x 800, screens 1",
                     "Theme: +applications dark, taskbar light",
                     r"Morvane\.exe: +version \d+\.\d+"):
            self.assertRegex(self.kit.report(), f"(?m)^{fact}")
        self.assertNotIn("Steps", self.kit.report(), "which need all tests")
        self.assertFalse((PROFILE / "dosdevices" / "z:").exists())
        self.assert_put_back()

    def test_what_was_absent_is_absent_again(self):
        installation.wine("reg", "delete", THEME[0], "/v", THEME[1], "/f")
        shutil.rmtree(SETTINGS.parent)
        self.before = state()
        self.run_and_kill()
        installation.wine("reg", "add", THEME[0], "/v", THEME[1], "/t", "REG_DWORD", "/d", "1",
                          "/f")
        for folder in (SETTINGS.parent, TESTS_FOLDER):
            (folder / "folder").mkdir(parents=True)
        self.assert_refused("has been put back")
        self.assert_put_back()

    def test_steps_and_these_checks_name_tests_that_there_are(self):
        sources = [path.read_text(encoding="utf-8") for path in TESTS.rglob("*_test.cpp")]
        there = [".".join(name) for text in sources
                 for name in re.findall(r"(?m)^TEST(?:_[FP])?\((\w+),\s+(\w+)\)", text)]
        named = re.findall(r'"\*?(\w+Test\.[\w*]+)"',
                           (TESTS / "kit" / "step.cpp").read_text(encoding="utf-8"))
        self.assertGreater(len(named), 15)
        for name in (*named, *":".join((SLICE, JUDGES, LONG, ENDLESS)).split(":")):
            self.assertTrue(fnmatch.filter(there, name), name)

    def test_scripts_without_the_rest_say_so(self):
        shutil.rmtree(self.kit.folder / "tests")
        for script in ("verify.cmd", "sandbox.cmd"):
            code, text = self.kit.run(script=script)
            self.assertEqual(code, 1)
            self.assertIn("Unpack the whole archive first.", text)

    def test_missing_file_is_named(self):
        (self.kit.folder / "tests" / "window_actor.exe").unlink()
        self.assert_refused(r"\tests\window_actor.exe is missing")

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

    @slow
    def test_wrong_program_is_found(self):
        shutil.copy(self.kit.folder / "tests" / "window_actor.exe", self.kit.program)
        self.assert_found_broken()

    @slow
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

    def test_command_of_the_sandbox_starts_the_kit(self):
        self.kit.run(script="sandbox.cmd")
        tree = xml.etree.ElementTree.parse(self.kit.folder / "verify.wsb")
        place = DRIVE / tree.findtext(".//SandboxFolder").removeprefix("C:\\")
        place.symlink_to(self.kit.folder)
        self.addCleanup(place.unlink)
        # What a killed run has left is put back by any start.
        self.run_and_kill()
        installation.start(*tree.findtext(".//Command").split()).wait()
        installation.wait_until(lambda: not SAVED.exists(), "the run begins")
        process = process_named("morvane_verify.exe")
        if process:
            os.kill(process, signal.SIGKILL)
        self.assert_put_back()

    def test_killed_run_is_reported_as_such(self):
        self.run_and_kill()
        self.assertIn("the run did not finish", self.kit.report())
        self.assertEqual(set(self.kit.cases().values()), {"passed", "error"})
        self.kit.run()

    def test_killed_run_is_put_back_at_the_next_sign_in(self):
        self.run_and_kill()
        command = values()[RUN_ONCE][1]
        self.assertEqual(command, f'"{installation.windows_path(self.kit.verify)}"')
        installation.wine(command.strip('"'))
        self.assert_put_back()

    def test_killed_run_is_put_back_by_any_kit(self):
        self.run_and_kill()
        shutil.rmtree(PLACE)
        self.kit = Kit(OTHER_PLACE)
        self.addCleanup(shutil.rmtree, OTHER_PLACE)
        self.assert_refused("has been put back")
        self.assert_put_back()

    def test_nothing_is_put_back_from_a_damaged_copy(self):
        self.run_and_kill()
        OTHER_STARTUP_FILE.write_text("newer", encoding="utf-8")
        for name, damage in (("Startup", shutil.rmtree), ("Morvane", shutil.rmtree),
                             ("user AppData.value", pathlib.Path.unlink),
                             ("user AppData.value", lambda path: path.write_bytes(b"\1"))):
            with self.subTest(name):
                shutil.copytree(SAVED, DRIVE / "aside")
                damage(SAVED / name)
                self.assert_refused("cannot be put back")
                self.assertEqual(OTHER_STARTUP_FILE.read_text(encoding="utf-8"), "newer")
                shutil.rmtree(SAVED)
                shutil.move(DRIVE / "aside", SAVED)
        self.assert_refused("has been put back")
        self.assert_put_back()

    @slow
    def test_changes_of_a_killed_run_are_put_back(self):
        run = self.kit.start("/here", f"/only:{ENDLESS}")
        wait_for_process("morvane_program_tests.exe")
        installation.wait_until(lambda: files() != self.before[0], "a test changes something")
        self.kill(run, "morvane_program_tests.exe")
        self.assert_refused("has been put back")
        self.assert_put_back()

    @slow
    def test_interrupted_run_puts_back_and_reports(self):
        run = self.kit.start("/here", f"/only:{LONG}")
        wait_for_process("morvane_cost_tests.exe")
        # Wine passes it to the program as Ctrl+C.
        os.kill(process_named("morvane_verify.exe"), signal.SIGINT)
        run.communicate(timeout=installation.PATIENCE)
        self.assertEqual(run.returncode, 1)
        self.assertIn("stopped by the user", self.kit.report())
        self.assertIn("error", self.kit.cases().values())
        self.assert_put_back()

    @slow
    def test_tests_after_one_that_kills_its_program_are_run(self):
        run = self.kit.start("/here", "/only:DataFolderTest.*")
        victim = wait_for_process("morvane_program_tests.exe")
        # A program that ends before any test is not started again.
        installation.wait_until(installation.running, "a test has begun")
        os.kill(victim, signal.SIGKILL)
        run.communicate()
        self.assertEqual(run.returncode, 1)
        self.assertEqual(sorted(self.kit.cases().values()).count("error"), 1, self.kit.report())
        self.assertEqual(set(self.kit.cases().values()), {"error", "passed"})
        self.assert_put_back()

    @slow
    def test_everything_passes(self):
        start = time.monotonic()
        code, text = self.kit.run("/here")
        seconds = time.monotonic() - start
        print(f"\n{text.splitlines()[-2]}, {seconds:.0f} s", file=sys.stderr)
        self.assertEqual(code, 0, self.kit.report())
        self.assertRegex(self.kit.report(), r"(?s)Steps they do not cover\s+none")
        self.assertTrue(re.search(r"(?m)^passed +fuzz", self.kit.report()))
        self.assert_put_back()


if __name__ == "__main__":
    if not ARCHIVE.is_file():
        sys.exit(__doc__)
    suite.main(sys.argv[:1])
