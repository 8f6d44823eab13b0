#!/usr/bin/python3
"""Installs, upgrades and removes the program in a disposable Wine session.

usage: install_test.py BUILD_FOLDER PACKAGE_FOLDER [UNITTEST-ARGUMENT...]
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import bench
from bench import (
    EXIT_DATA_KEPT, EXIT_NOT_WRITTEN, EXIT_STARTUP_FAILED, EXIT_STILL_RUNNING, INSTALLED, SETTINGS,
    STARTUP_SHORTCUT, START_MENU_ENTRY, digest)

import package
from signing import is_signed, make_certificate

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PACKAGE = pathlib.Path(sys.argv.pop(1)).resolve()

OLD_VERSION = "26.9.11.1"
NEEDS_MOUNT = "no file system can be mounted here"
FILES = ["LICENSE.txt", "Morvane.exe", "Uninstall.exe"]


@unittest.skipUnless(bench.is_disposable(), "the profile is not a disposable one")
class InstallerTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.setup, = PACKAGE.glob("*-setup.exe")
        cls.report = bench.Report(BUILD)
        cls.version = package.read_version(BUILD)
        cls.stage = tempfile.TemporaryDirectory()
        stage = pathlib.Path(cls.stage.name)
        # One byte more, behind what Windows loads: a program file that can be told from the new one.
        old_program = stage / "Morvane.exe"
        old_program.write_bytes((BUILD / "Morvane.exe").read_bytes() + b"\0")
        cls.old_setup = stage / "old-setup.exe"
        package.make_installer(stage, old_program, OLD_VERSION, None, cls.old_setup)

    @classmethod
    def tearDownClass(cls):
        cls.stage.cleanup()

    def setUp(self):
        bench.clean()
        self.addCleanup(bench.clean)

    def install(self, *arguments, setup=None):
        self.assertEqual(bench.install(setup or self.setup, *arguments), 0)

    def open_notepad(self):
        notepad = bench.start("notepad")
        self.addCleanup(notepad.wait)
        self.addCleanup(notepad.kill)
        self.report.expect("ordinary:Notepad")

    def pin_notepad(self):
        SETTINGS.parent.mkdir(parents=True, exist_ok=True)
        SETTINGS.write_text("@pinning=1\r\nNotepad\r\n", encoding="utf-8")

    def assert_installed(self, version):
        self.assertEqual(bench.files_below(INSTALLED), FILES)
        self.assertTrue(START_MENU_ENTRY.exists())
        self.assertEqual(bench.registered().get("DisplayVersion"), version)

    def assert_gone(self):
        self.assertFalse(INSTALLED.exists())
        self.assertFalse(START_MENU_ENTRY.exists())
        self.assertFalse(STARTUP_SHORTCUT.exists())
        self.assertEqual(bench.registered(), {})
        bench.expect_nothing_running()

    def test_fresh_install_puts_everything_in_place_and_starts_nothing(self):
        self.install()
        self.assert_installed(self.version)
        self.assertEqual(digest(INSTALLED / "Morvane.exe"), digest(BUILD / "Morvane.exe"))
        self.assertFalse(STARTUP_SHORTCUT.exists())
        bench.expect_nothing_running()
        values = bench.registered()
        folder = bench.windows_path(INSTALLED)
        self.assertEqual(values["DisplayName"], "Morvane")
        self.assertEqual(values["Publisher"], "the Morvane authors")
        self.assertEqual(values["DisplayIcon"], folder + "\\Morvane.exe,0")
        self.assertEqual(values["InstallLocation"], folder)
        self.assertEqual(values["UninstallString"], f'"{folder}\\Uninstall.exe"')
        self.assertEqual(values["QuietUninstallString"], f'"{folder}\\Uninstall.exe" /S')
        size = sum((INSTALLED / name).stat().st_size for name in FILES)
        self.assertAlmostEqual(int(values["EstimatedSize"], 16), size / 1024, delta=3)

    def test_choices_are_taken_from_the_command_line(self):
        self.install("/STARTUP=1", "/START=1")
        self.assertTrue(STARTUP_SHORTCUT.exists())
        bench.wait_until(bench.running, "the program is started")
        self.install("/STARTUP=0", "/START=0")
        self.assertFalse(STARTUP_SHORTCUT.exists())
        bench.expect_nothing_running()

    def test_failure_of_the_startup_shortcut_is_told_and_the_program_is_there(self):
        STARTUP_SHORTCUT.mkdir(parents=True)
        self.addCleanup(STARTUP_SHORTCUT.rmdir)
        self.assertEqual(bench.wine(self.setup, "/S", "/STARTUP=1"), EXIT_STARTUP_FAILED)
        self.assert_installed(self.version)

    def test_life_from_install_over_upgrade_to_removal(self):
        self.open_notepad()
        before_all = bench.users_files()
        self.pin_notepad()
        self.install("/STARTUP=1", "/START=1", setup=self.old_setup)
        self.assert_installed(OLD_VERSION)
        self.report.expect("topmost:Notepad")
        before = bench.running()
        settings = SETTINGS.read_bytes()

        self.install()
        self.assert_installed(self.version)
        self.assertEqual(digest(INSTALLED / "Morvane.exe"), digest(BUILD / "Morvane.exe"))
        bench.wait_until(bench.running, "the new version runs")
        bench.wait_until(lambda: set(before).isdisjoint(bench.running()), "the old one has ended")
        self.assertEqual(SETTINGS.read_bytes(), settings)
        self.assertTrue(STARTUP_SHORTCUT.exists())
        self.report.expect("topmost:Notepad")

        bench.uninstall()
        self.report.expect("ordinary:Notepad")
        self.assert_gone()
        self.assertEqual(SETTINGS.read_bytes(), settings)

        self.install("/STARTUP=1", "/START=1")
        self.report.expect("topmost:Notepad")
        bench.uninstall("/REMOVEDATA")
        self.report.expect("ordinary:Notepad")
        self.assert_gone()
        # What the system keeps for itself, the folder of per-user programs.
        self.assertLessEqual(bench.users_files() - before_all,
                             {str(bench.PROGRAMS.relative_to(bench.DRIVE / "users"))})

    def test_upgrade_lets_windows_go(self):
        self.open_notepad()
        self.pin_notepad()
        self.install("/START=1", setup=self.old_setup)
        self.report.expect("topmost:Notepad")
        self.install("/START=0")
        self.report.expect("ordinary:Notepad")
        bench.expect_nothing_running()

    def test_copy_that_is_just_starting_is_closed_too(self):
        for _ in range(3):
            self.install("/START=1")
            bench.wait_until(bench.running, "the program is started")
            self.install("/START=0")
            bench.expect_nothing_running()

    def test_second_install_changes_nothing(self):
        self.install("/STARTUP=1")
        first = {name: digest(INSTALLED / name) for name in FILES}
        values = bench.registered()
        self.install()
        self.assertEqual({name: digest(INSTALLED / name) for name in FILES}, first)
        self.assertEqual(bench.registered(), values)
        self.assertTrue(STARTUP_SHORTCUT.exists())

    def test_second_uninstall_has_nothing_to_do(self):
        self.install()
        self.assertEqual(bench.uninstall_in_place(), 0)
        # Run in place, the uninstaller cannot delete itself.
        self.assertEqual(bench.files_below(INSTALLED), ["Uninstall.exe"])
        self.assertEqual(bench.registered(), {})
        self.assertEqual(bench.uninstall_in_place(), 0)
        self.assertEqual(bench.uninstall_in_place("/REMOVEDATA"), 0)
        self.assertEqual(bench.files_below(INSTALLED), ["Uninstall.exe"])

    def test_settings_stay_unless_their_removal_is_asked_for_in_so_many_words(self):
        self.pin_notepad()
        for option in ("", "/REMOVEDATA=0", "/REMOVEDATAX"):
            self.install()
            bench.uninstall(*[option] if option else [])
            self.assertTrue(SETTINGS.exists(), option)

    def test_uninstall_leaves_the_users_own_files(self):
        self.install()
        (INSTALLED / "notes.txt").write_text("mine")
        bench.uninstall()
        self.assertEqual(bench.files_below(INSTALLED), ["notes.txt"])

    def test_settings_that_cannot_be_deleted_are_told(self):
        self.install()
        SETTINGS.parent.mkdir()
        holder = subprocess.Popen(
            ["wine", "cmd", "/c", f"pause >{bench.windows_path(SETTINGS)}"],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(holder.wait)
        self.addCleanup(holder.stdin.close)
        bench.wait_until(SETTINGS.exists, "the file is held open")
        self.assertEqual(bench.uninstall_in_place("/REMOVEDATA"), EXIT_DATA_KEPT)
        self.assertEqual(bench.registered(), {})

    def test_folder_with_blanks_and_other_letters(self):
        folder = bench.DRIVE / "Ünser Ordner 東京" / "O'Brien's b"
        self.assertEqual(
            bench.wine_unquoted(self.setup, f"/S /D={bench.windows_path(folder)}"), 0)
        self.assertEqual(bench.files_below(folder), FILES)
        self.assertFalse(INSTALLED.exists())
        # An upgrade finds the folder by itself.
        self.install("/STARTUP=1", "/START=1")
        self.assertFalse(INSTALLED.exists())
        bench.wait_until(SETTINGS.exists, "the program is started")
        bench.uninstall(folder=folder)
        self.assert_gone()
        self.assertFalse(folder.exists())
        folder.parent.rmdir()

    def test_another_folder_leaves_nothing_in_the_old_one(self):
        self.install("/STARTUP=1", setup=self.old_setup)
        shortcut = STARTUP_SHORTCUT.read_bytes()
        folder = bench.DRIVE / "other"
        self.assertEqual(
            bench.wine_unquoted(self.setup, f"/S /D={bench.windows_path(folder)}"), 0)
        self.assertEqual(bench.files_below(folder), FILES)
        self.assertFalse(INSTALLED.exists())
        self.assertEqual(bench.registered()["InstallLocation"], bench.windows_path(folder))
        self.assertNotEqual(STARTUP_SHORTCUT.read_bytes(), shortcut)
        bench.uninstall(folder=folder)
        self.assert_gone()

    def test_older_version_replaces_a_newer_one(self):
        self.install()
        self.install(setup=self.old_setup)
        self.assert_installed(OLD_VERSION)

    def test_copy_that_does_not_end_stops_the_upgrade(self):
        self.install("/START=1", setup=self.old_setup)
        # Written while its window is created.
        bench.wait_until(SETTINGS.exists, "the program is started")
        before = {name: digest(INSTALLED / name) for name in FILES}
        with bench.Paused():
            self.assertEqual(bench.wine(self.setup, "/S"), EXIT_STILL_RUNNING)
            self.assertEqual(bench.uninstall_in_place(), EXIT_STILL_RUNNING)
        self.assertEqual(bench.files_below(INSTALLED), FILES)
        self.assertEqual({name: digest(INSTALLED / name) for name in FILES}, before)
        self.assertEqual(bench.registered()["DisplayVersion"], OLD_VERSION)

    def test_folder_that_cannot_exist_is_told(self):
        (bench.DRIVE / "file").write_text("no folder")
        self.addCleanup((bench.DRIVE / "file").unlink)
        self.assertEqual(bench.wine_unquoted(self.setup, '/S /D=C:\\file\\Morvane'),
                         EXIT_NOT_WRITTEN)
        self.assert_gone()

    def test_files_that_cannot_be_written_leave_the_older_version_running(self):
        self.install("/START=1", setup=self.old_setup)
        bench.wait_until(SETTINGS.exists, "the program is started")
        before = bench.running()
        (INSTALLED / "LICENSE.txt.new").mkdir()
        self.assertEqual(bench.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
        (INSTALLED / "LICENSE.txt.new").rmdir()
        self.assert_installed(OLD_VERSION)
        self.assertEqual(bench.running(), before)

    def test_failure_in_the_middle_of_replacing_brings_the_older_version_back(self):
        self.install("/START=1", setup=self.old_setup)
        bench.wait_until(SETTINGS.exists, "the program is started")
        before = {name: digest(INSTALLED / name) for name in ("Morvane.exe", "Uninstall.exe")}
        # Not even an empty folder can be replaced by a file.
        (INSTALLED / "LICENSE.txt").unlink()
        (INSTALLED / "LICENSE.txt").mkdir()
        self.assertEqual(bench.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
        self.assertEqual({name: digest(INSTALLED / name) for name in before}, before)
        self.assertEqual(bench.files_below(INSTALLED), sorted(before))
        self.assertEqual(bench.registered()["DisplayVersion"], OLD_VERSION)
        bench.wait_until(bench.running, "the older version runs again")

    def test_failure_in_the_middle_of_a_fresh_install_leaves_nothing(self):
        (INSTALLED / "LICENSE.txt").mkdir(parents=True)
        self.assertEqual(bench.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
        self.assertEqual(bench.files_below(INSTALLED), [])
        self.assertEqual(bench.registered(), {})
        self.assertFalse(START_MENU_ENTRY.exists())

    @unittest.skipUnless(bench.can_mount(), NEEDS_MOUNT)
    def test_read_only_target_is_told(self):
        disk = bench.DRIVE / "disk"
        with bench.Mounted(disk, "ro"):
            self.assertEqual(bench.wine(self.setup, "/S", "/D=C:\\disk\\Morvane"),
                             EXIT_NOT_WRITTEN)
        disk.rmdir()
        self.assert_gone()

    @unittest.skipUnless(bench.can_mount(), NEEDS_MOUNT)
    def test_full_disk_leaves_nothing_half_installed(self):
        disk = bench.DRIVE / "disk"
        with bench.Mounted(disk, "size=64k"):
            self.assertEqual(bench.wine(self.setup, "/S", "/D=C:\\disk\\Morvane"),
                             EXIT_NOT_WRITTEN)
            self.assertEqual(list(disk.iterdir()), [])
        disk.rmdir()
        self.assert_gone()

    @unittest.skipUnless(bench.can_mount(), NEEDS_MOUNT)
    def test_full_disk_leaves_the_older_version_running(self):
        with bench.Mounted(INSTALLED, "size=600k"):
            self.install("/START=1", setup=self.old_setup)
            bench.wait_until(SETTINGS.exists, "the program is started")
            before = bench.running()
            room = INSTALLED / "room"
            with self.assertRaises(OSError), room.open("wb", buffering=0) as file:
                while True:
                    file.write(bytes(4096))
            self.assertEqual(bench.wine(self.setup, "/S"), EXIT_NOT_WRITTEN)
            self.assertEqual(bench.running(), before)
            room.unlink()
            self.assert_installed(OLD_VERSION)

    def walk_through(self, process):
        """Takes the choice that each page offers first, until the program has ended."""
        def press_return():
            subprocess.run(["xdotool", "key", "Return"], check=True)
            return process.poll() is not None
        bench.wait_until(press_return, "the last page is left")
        self.assertEqual(process.returncode, 0)

    def test_pages_lead_to_a_running_program_and_back(self):
        self.walk_through(bench.start(self.setup))
        self.assert_installed(self.version)
        bench.wait_until(SETTINGS.exists, "the program is started, as the last page offers")
        self.assertFalse(STARTUP_SHORTCUT.exists())
        self.walk_through(bench.start(INSTALLED / "Uninstall.exe",
                                      f"_?={bench.windows_path(INSTALLED)}"))
        self.assertEqual(bench.files_below(INSTALLED), ["Uninstall.exe"])
        self.assertEqual(bench.registered(), {})
        bench.expect_nothing_running()
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
    unittest.main(verbosity=2)
