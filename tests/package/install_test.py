#!/usr/bin/python3
"""Installs, upgrades and removes the program in a disposable Wine session.

usage: install_test.py BUILD_FOLDER PACKAGE_FOLDER [UNITTEST-ARGUMENT...]
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import installation
from installation import (
    EXIT_DATA_KEPT, EXIT_NOT_WRITTEN, EXIT_OLD_WINDOWS, EXIT_SERVICE_ACCOUNT, EXIT_STARTUP_FAILED,
    EXIT_STILL_RUNNING, INSTALLED, SETTINGS, STARTUP_SHORTCUT, START_MENU_ENTRY, digest)

import package
import suite
from signing import is_signed, make_certificate

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PACKAGE = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = installation.ROOT

OLD_VERSION = "26.9.11.1"
NEEDS_MOUNT = "no file system can be mounted here"
# For all pages of one program; while it writes files, a press does nothing.
MAX_PRESSES = 20
FILES = ["LICENSE.txt", "Morvane.exe", "Uninstall.exe"]


@unittest.skipUnless(installation.is_disposable(), "the profile is not disposable")
class InstallerTest(suite.Test):
    @classmethod
    def setUpClass(cls):
        # Wine 8.0 takes itself for Windows 7, where the installer refuses to work.
        installation.wine("reg", "add", r"HKCU\Software\Wine", "/v", "Version", "/d", "win10", "/f")
        cls.setup, = PACKAGE.glob("*-setup.exe")
        cls.report = installation.WindowReport(BUILD)
        cls.version = package.read_version(BUILD)
        cls.stage = tempfile.TemporaryDirectory()
        stage = pathlib.Path(cls.stage.name)
        # One more byte, after everything that Windows loads, tells it from the new program file.
        old_program = stage / "Morvane.exe"
        old_program.write_bytes((BUILD / "Morvane.exe").read_bytes() + b"\0")
        cls.old_setup = stage / "old-setup.exe"
        package.make_installer(stage, old_program, OLD_VERSION, None, cls.old_setup)

    @classmethod
    def tearDownClass(cls):
        cls.stage.cleanup()
        installation.clean()

    def setUp(self):
        # What the previous test left behind.
        installation.clean()

    def install(self, *arguments, setup=None):
        self.assertEqual(installation.run_silently(setup or self.setup, *arguments), 0)

    def open_notepad(self):
        notepad = installation.start("notepad")
        self.addCleanup(notepad.wait)
        self.addCleanup(notepad.kill)
        self.report.expect("ordinary:Notepad")

    def pin_notepad(self):
        SETTINGS.parent.mkdir(parents=True, exist_ok=True)
        SETTINGS.write_text("@pinning=1\r\nNotepad\r\n", encoding="utf-8")

    def assert_installed(self, version):
        self.assertEqual(installation.files_below(INSTALLED), FILES)
        self.assertTrue(START_MENU_ENTRY.exists())
        self.assertEqual(installation.registered().get("DisplayVersion"), version)

    def assert_gone(self, folder_too=True):
        """Run in place, the uninstaller leaves its own file and folder to a copy."""
        if folder_too:
            self.assertFalse(INSTALLED.exists())
        else:
            self.assertLessEqual(set(installation.files_below(INSTALLED)), {"Uninstall.exe"})
            installation.wait_until(lambda: not INSTALLED.exists(), "the folder is deleted")
        self.assertFalse(START_MENU_ENTRY.exists())
        self.assertFalse(STARTUP_SHORTCUT.exists())
        self.assertEqual(installation.registered(), {})
        installation.expect_nothing_running()

    def test_fresh_install_registers_the_program_without_starting_it(self):
        self.install()
        self.assert_installed(self.version)
        self.assertEqual(digest(INSTALLED / "Morvane.exe"), digest(BUILD / "Morvane.exe"))
        self.assertFalse(STARTUP_SHORTCUT.exists())
        installation.expect_nothing_running()
        values = installation.registered()
        folder = installation.windows_path(INSTALLED)
        self.assertEqual(values["DisplayName"], "Morvane")
        self.assertEqual(values["Publisher"], "the Morvane authors")
        self.assertEqual(values["DisplayIcon"], folder + "\\Morvane.exe,0")
        self.assertEqual(values["InstallLocation"], folder)
        self.assertEqual(values["UninstallString"], f'"{folder}\\Uninstall.exe"')
        self.assertEqual(values["QuietUninstallString"],
                         f'"{folder}\\Uninstall.exe" /S _?={folder}')
        self.assertEqual(values["URLInfoAbout"], os.environ["MORVANE_HOMEPAGE"])
        self.assertEqual(values["HelpLink"], os.environ["MORVANE_HOMEPAGE"] + "/issues")
        size = sum((INSTALLED / name).stat().st_size for name in FILES)
        self.assertAlmostEqual(int(values["EstimatedSize"], 16), size / 1024, delta=3)

    def test_command_line_sets_the_choices(self):
        self.install("/STARTUP=1", "/START=1")
        self.assertTrue(STARTUP_SHORTCUT.exists())
        installation.wait_until(installation.running, "the program is started")
        self.install("/STARTUP=0", "/START=0")
        self.assertFalse(STARTUP_SHORTCUT.exists())
        installation.expect_nothing_running()

    def test_failed_startup_shortcut_is_reported_and_the_program_is_installed(self):
        STARTUP_SHORTCUT.mkdir(parents=True)
        self.addCleanup(STARTUP_SHORTCUT.rmdir)
        self.assertEqual(installation.wine(self.setup, "/S", "/STARTUP=1"), EXIT_STARTUP_FAILED)
        self.assert_installed(self.version)

    def test_install_upgrade_and_removal_with_a_pinned_window(self):
        self.open_notepad()
        before_all = installation.users_files()
        self.pin_notepad()
        self.install("/STARTUP=1", "/START=1", setup=self.old_setup)
        self.assert_installed(OLD_VERSION)
        self.report.expect("topmost:Notepad")
        before = installation.running()
        settings = SETTINGS.read_bytes()

        self.install()
        self.assert_installed(self.version)
        self.assertEqual(digest(INSTALLED / "Morvane.exe"), digest(BUILD / "Morvane.exe"))
        installation.wait_until(installation.running, "the new version runs")
        installation.wait_until(lambda: set(before).isdisjoint(installation.running()),
                                "the old one has ended")
        self.assertEqual(SETTINGS.read_bytes(), settings)
        self.assertTrue(STARTUP_SHORTCUT.exists())
        self.report.expect("topmost:Notepad")

        installation.uninstall()
        self.report.expect("ordinary:Notepad")
        self.assert_gone()
        self.assertEqual(SETTINGS.read_bytes(), settings)

        self.install("/STARTUP=1", "/START=1")
        self.report.expect("topmost:Notepad")
        installation.uninstall("/REMOVEDATA")
        self.report.expect("ordinary:Notepad")
        self.assert_gone()
        # The system keeps the folder of per-user programs for itself.
        self.assertLessEqual(installation.users_files() - before_all,
                             {str(installation.PROGRAMS.relative_to(installation.DRIVE / "users"))})

    def test_upgrade_releases_windows(self):
        self.open_notepad()
        self.pin_notepad()
        self.install("/START=1", setup=self.old_setup)
        self.report.expect("topmost:Notepad")
        self.install("/START=0")
        self.report.expect("ordinary:Notepad")
        installation.expect_nothing_running()

    def test_copy_that_is_just_starting_is_closed(self):
        for _ in range(3):
            self.install("/START=1")
            installation.wait_until(installation.running, "the program is started")
            self.install("/START=0")
            installation.expect_nothing_running()

    def test_second_install_changes_nothing(self):
        self.install("/STARTUP=1")
        first = {name: digest(INSTALLED / name) for name in FILES}
        values = installation.registered()
        self.install()
        self.assertEqual({name: digest(INSTALLED / name) for name in FILES}, first)
        self.assertEqual(installation.registered(), values)
        self.assertTrue(STARTUP_SHORTCUT.exists())

    def assert_refused(self, code):
        self.assertEqual(installation.wine(self.setup, "/S", "/START=1"), code)
        self.assert_gone()

    def test_service_accounts_are_refused(self):
        folder = r"C:\windows\system32\config\systemprofile\AppData\Local"
        key = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders"
        with installation.RegistryValue(key, "Local AppData", folder):
            self.assert_refused(EXIT_SERVICE_ACCOUNT)
        self.assertFalse(list((installation.DRIVE / "windows").rglob("Morvane*")))

    def test_windows_before_10_is_refused(self):
        key = rf"HKCU\Software\Wine\AppDefaults\{self.setup.name}"
        for version in ("win7", "win81"):
            with installation.RegistryValue(key, "Version", version):
                self.assert_refused(EXIT_OLD_WINDOWS)

    def test_registered_silent_removal_waits_until_the_program_is_gone(self):
        self.install("/STARTUP=1", "/START=1")
        installation.wait_until(SETTINGS.exists, "the program is started")
        program, options = re.fullmatch('"(.*)" (.*)',
                                        installation.registered()["QuietUninstallString"]).groups()
        self.assertEqual(installation.wine_unquoted(program, options), 0)
        self.assert_gone(folder_too=False)
        self.assertTrue(SETTINGS.exists())

    def test_documented_silent_removal_waits_and_returns_the_exit_code(self):
        text = (ROOT / "docs" / "deployment.md").read_text(encoding="utf-8")
        line, = set(re.findall(r"cmd /d /c if exist [^`\n]*", text))
        script = installation.DRIVE / "remove.cmd"
        script.write_text(line + "\r\n", encoding="ascii")
        self.addCleanup(script.unlink)
        self.install("/START=1")
        installation.wait_until(SETTINGS.exists, "the program is started")
        with installation.Paused():
            self.assertEqual(installation.wine("cmd", "/c", installation.windows_path(script)),
                             EXIT_STILL_RUNNING)
        self.assert_installed(self.version)
        for _ in range(2):
            self.assertEqual(installation.wine("cmd", "/c", installation.windows_path(script)), 0)
            self.assert_gone(folder_too=False)

    def test_second_uninstall_has_nothing_to_do(self):
        self.install()
        uninstaller = INSTALLED / "Uninstall.exe"
        kept = uninstaller.read_bytes()
        self.assertEqual(installation.uninstall_in_place(), 0)
        for options in ((), ("/REMOVEDATA",)):
            self.assert_gone(folder_too=False)
            INSTALLED.mkdir()
            uninstaller.write_bytes(kept)
            self.assertEqual(installation.uninstall_in_place(*options), 0)
        self.assert_gone(folder_too=False)

    def test_settings_stay_unless_their_removal_is_requested(self):
        self.pin_notepad()
        for option in ("", "/REMOVEDATA=0", "/REMOVEDATAX"):
            self.install()
            installation.uninstall(*[option] if option else [])
            self.assertTrue(SETTINGS.exists(), option)

    def test_uninstall_leaves_the_users_own_files(self):
        self.install()
        (INSTALLED / "notes.txt").write_text("mine")
        installation.uninstall()
        self.assertEqual(installation.files_below(INSTALLED), ["notes.txt"])

    def test_settings_that_cannot_be_deleted_are_reported(self):
        self.install()
        SETTINGS.parent.mkdir()
        holder = subprocess.Popen(
            ["wine", "cmd", "/c", f"pause >{installation.windows_path(SETTINGS)}"],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(holder.wait)
        self.addCleanup(holder.stdin.close)
        installation.wait_until(SETTINGS.exists, "the file is held open")
        self.assertEqual(installation.uninstall_in_place("/REMOVEDATA"), EXIT_DATA_KEPT)
        self.assertEqual(installation.registered(), {})

    def test_folder_with_spaces_and_non_ascii_letters(self):
        folder = installation.DRIVE / "Ünser Ordner 東京" / "O'Brien's b"
        self.assertEqual(
            installation.wine_unquoted(self.setup, f"/S /D={installation.windows_path(folder)}"), 0)
        self.assertEqual(installation.files_below(folder), FILES)
        self.assertFalse(INSTALLED.exists())
        # An upgrade finds the folder on its own.
        self.install("/STARTUP=1", "/START=1")
        self.assertFalse(INSTALLED.exists())
        installation.wait_until(SETTINGS.exists, "the program is started")
        installation.uninstall(folder=folder)
        self.assert_gone()
        self.assertFalse(folder.exists())
        folder.parent.rmdir()

    def test_another_folder_leaves_nothing_in_the_old_one(self):
        self.install("/STARTUP=1", setup=self.old_setup)
        shortcut = STARTUP_SHORTCUT.read_bytes()
        folder = installation.DRIVE / "other"
        self.assertEqual(
            installation.wine_unquoted(self.setup, f"/S /D={installation.windows_path(folder)}"), 0)
        self.assertEqual(installation.files_below(folder), FILES)
        self.assertFalse(INSTALLED.exists())
        self.assertEqual(installation.registered()["InstallLocation"],
                         installation.windows_path(folder))
        self.assertNotEqual(STARTUP_SHORTCUT.read_bytes(), shortcut)
        installation.uninstall(folder=folder)
        self.assert_gone()

    def test_same_folder_by_another_name_is_not_the_old_one(self):
        alias = installation.DRIVE / "alias"
        alias.symlink_to(INSTALLED)
        self.addCleanup(alias.unlink)
        self.install(setup=self.old_setup)
        self.assertEqual(installation.wine_unquoted(self.setup, "/S /D=C:\\alias"), 0)
        self.assert_installed(self.version)

    def test_install_right_after_a_removal_keeps_its_uninstaller(self):
        self.install()
        self.assertEqual(installation.uninstall_in_place(), 0)
        self.install()
        installation.wait_until(
            lambda: not any("Morvane-Uninstall.exe" in " ".join(command)
                            for command in installation.processes().values()),
            "the copy that deletes the rest has ended")
        self.assert_installed(self.version)

    def test_older_version_replaces_a_newer_one(self):
        self.install()
        self.install(setup=self.old_setup)
        self.assert_installed(OLD_VERSION)

    def test_running_copy_that_does_not_exit_stops_upgrade_and_removal(self):
        self.install("/START=1", setup=self.old_setup)
        # The settings file is written while its window is created.
        installation.wait_until(SETTINGS.exists, "the program is started")
        before = {name: digest(INSTALLED / name) for name in FILES}
        with installation.Paused():
            self.assertEqual(installation.wine(self.setup, "/S"), EXIT_STILL_RUNNING)
            self.assertEqual(installation.uninstall_in_place(), EXIT_STILL_RUNNING)
        self.assertEqual(installation.files_below(INSTALLED), FILES)
        self.assertEqual({name: digest(INSTALLED / name) for name in FILES}, before)
        self.assertEqual(installation.registered()["DisplayVersion"], OLD_VERSION)

    def test_folder_that_cannot_be_created_is_reported(self):
        (installation.DRIVE / "file").write_text("no folder")
        self.addCleanup((installation.DRIVE / "file").unlink)
        self.assertEqual(installation.wine_unquoted(self.setup, '/S /D=C:\\file\\Morvane'),
                         EXIT_NOT_WRITTEN)
        self.assert_gone()

    def test_files_that_cannot_be_written_leave_the_older_version_running(self):
        self.install("/START=1", setup=self.old_setup)
        installation.wait_until(SETTINGS.exists, "the program is started")
        before = installation.running()
        (INSTALLED / "LICENSE.txt.new").mkdir()
        self.assertEqual(installation.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
        (INSTALLED / "LICENSE.txt.new").rmdir()
        self.assert_installed(OLD_VERSION)
        self.assertEqual(installation.running(), before)

    def test_failure_while_replacing_files_restores_the_older_version(self):
        self.install("/START=1", setup=self.old_setup)
        installation.wait_until(SETTINGS.exists, "the program is started")
        before = {name: digest(INSTALLED / name) for name in ("Morvane.exe", "Uninstall.exe")}
        # Not even an empty folder can be replaced by a file.
        (INSTALLED / "LICENSE.txt").unlink()
        (INSTALLED / "LICENSE.txt").mkdir()
        self.assertEqual(installation.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
        self.assertEqual({name: digest(INSTALLED / name) for name in before}, before)
        self.assertEqual(installation.files_below(INSTALLED), sorted(before))
        self.assertEqual(installation.registered()["DisplayVersion"], OLD_VERSION)
        installation.wait_until(installation.running, "the older version runs again")

    def test_failure_during_a_fresh_install_leaves_nothing(self):
        (INSTALLED / "LICENSE.txt").mkdir(parents=True)
        self.assertEqual(installation.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
        self.assertEqual(installation.files_below(INSTALLED), [])
        self.assertEqual(installation.registered(), {})
        self.assertFalse(START_MENU_ENTRY.exists())

    @unittest.skipUnless(installation.can_mount(), NEEDS_MOUNT)
    def test_read_only_target_is_reported(self):
        disk = installation.DRIVE / "disk"
        with installation.Mounted(disk, "ro"):
            self.assertEqual(installation.wine(self.setup, "/S", "/D=C:\\disk\\Morvane"),
                             EXIT_NOT_WRITTEN)
        disk.rmdir()
        self.assert_gone()

    @unittest.skipUnless(installation.can_mount(), NEEDS_MOUNT)
    def test_full_disk_leaves_nothing_half_installed(self):
        disk = installation.DRIVE / "disk"
        with installation.Mounted(disk, "size=64k"):
            self.assertEqual(installation.wine(self.setup, "/S", "/D=C:\\disk\\Morvane"),
                             EXIT_NOT_WRITTEN)
            self.assertEqual(list(disk.iterdir()), [])
        disk.rmdir()
        self.assert_gone()

    @unittest.skipUnless(installation.can_mount(), NEEDS_MOUNT)
    def test_full_disk_leaves_the_older_version_running(self):
        with installation.Mounted(INSTALLED, "size=600k"):
            self.install("/START=1", setup=self.old_setup)
            installation.wait_until(SETTINGS.exists, "the program is started")
            before = installation.running()
            room = INSTALLED / "room"
            with self.assertRaises(OSError), room.open("wb", buffering=0) as file:
                while True:
                    file.write(bytes(4096))
            self.assertEqual(installation.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
            self.assertEqual(installation.running(), before)
            room.unlink()
            self.assert_installed(OLD_VERSION)

    def walk_through(self, process):
        """Accepts the default on each page until the program ends."""
        presses = 0

        def press_return():
            nonlocal presses
            presses += 1
            subprocess.run(["xdotool", "key", "Return"], check=True)
            return process.poll() is not None
        installation.wait_until(press_return, "the last page is left")
        print(f"\nmeasured: {presses} presses of Return", flush=True)
        self.assertLessEqual(presses, MAX_PRESSES)
        self.assertEqual(process.returncode, 0)

    def test_default_choices_install_start_and_uninstall_the_program(self):
        self.walk_through(installation.start(self.setup))
        self.assert_installed(self.version)
        installation.wait_until(SETTINGS.exists, "the program is started, as the last page offers")
        self.assertFalse(STARTUP_SHORTCUT.exists())
        self.walk_through(installation.start(INSTALLED / "Uninstall.exe",
                                             f"_?={installation.windows_path(INSTALLED)}"))
        self.assert_gone(folder_too=False)
        self.assertTrue(SETTINGS.exists())

    def test_uninstaller_of_a_signed_installer_is_signed(self):
        stage = pathlib.Path(self.stage.name)
        certificate, key = make_certificate(stage)
        signed_setup = stage / "signed-setup.exe"
        package.make_installer(stage, BUILD / "Morvane.exe", self.version, {
            **os.environ, "MORVANE_SIGN_CERT": str(certificate), "MORVANE_SIGN_KEY": str(key),
            "MORVANE_SIGN_EPOCH": str(int(certificate.stat().st_mtime))}, signed_setup)
        self.install(setup=signed_setup)
        self.assertTrue(is_signed(INSTALLED / "Uninstall.exe", certificate))


if __name__ == "__main__":
    suite.main()
