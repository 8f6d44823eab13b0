#!/usr/bin/python3
"""Tests that every fact of check_executable.py can fail.

Corrupts one thing at a time in a copy of the finished program in memory, and expects exactly the
facts that depend on it to fail. Needs pefile (Debian: python3-pefile).
"""

import argparse
import struct
import sys
import unittest
from pathlib import Path

import check_executable
from build_traces import PROJECT_ROOT
from pe_resources import RT_GROUP_ICON, RT_ICON, RT_MANIFEST, RT_VERSION
from spoiled_copy import (
    DOS_TEXT, FIXED_VERSION_SIGNATURE, SpoiledCopy, ansi_variant_imported, calls_diverted,
    code_made_writable, directory, dll_flag_cleared, file_flag_set, file_header, fixed_version_byte,
    guard_failure_changed, library_renamed, manifest_element_added, manifest_text, optional_header,
    resource_byte, resource_renumbered, resource_text, text_left_in, version_text, wide)

IMPORTS, RESOURCES, RELOCATIONS, DEBUG = 1, 2, 5, 6

MANIFEST_FACTS = {"common controls", "execution level", "supported systems", "DPI awareness"}
TEXT_FACTS = {"texts 040904b0", "texts 041104b0"}
VERSION_FACTS = {"fixed version", "translations"} | TEXT_FACTS

TRANSLATIONS = (struct.pack("<4H", 0x409, 0x4B0, 0x411, 0x4B0),
                struct.pack("<4H", 0x411, 0x4B0, 0x409, 0x4B0))
SOURCE_FOLDER = f"{PROJECT_ROOT}/"[: len(DOS_TEXT)].encode()

# What is wrong with the copy, the change that does it, and the facts that must then fail.
CASES = (
    ("another processor", file_header(Machine=0xAA64), {"machine"}),
    ("a console program", optional_header(Subsystem=3), {"subsystem"}),
    ("a library that can be planted", library_renamed(b"user32.dll", b"USER99.dll"),
     {"load-time libraries"}),
    ("no imports", directory(IMPORTS, VirtualAddress=0, Size=0), {"load-time libraries"}),
    ("an ANSI function of user32", ansi_variant_imported(b"user32.dll"), {"wide functions"}),
    ("an ANSI function of kernel32", ansi_variant_imported(b"kernel32.dll"), {"wide functions"}),
    ("an ANSI function of shell32", ansi_variant_imported(b"shell32.dll"), {"wide functions"}),
    ("no DYNAMIC_BASE", dll_flag_cleared(0x0040), {"DYNAMIC_BASE"}),
    ("no HIGH_ENTROPY_VA", dll_flag_cleared(0x0020), {"HIGH_ENTROPY_VA"}),
    ("no NX_COMPAT", dll_flag_cleared(0x0100), {"NX_COMPAT"}),
    ("relocations marked as stripped", file_flag_set(0x0001), {"relocations"}),
    ("no relocations", directory(RELOCATIONS, VirtualAddress=0, Size=0), {"relocations"}),
    ("writable code", code_made_writable(), {"sections"}),
    ("no end after a buffer overrun", guard_failure_changed(check_executable.GUARD_FAILURE),
     {"stack guard"}),
    ("no function with a stack guard",
     calls_diverted(check_executable.GUARD_FAILURE, check_executable.NEAR_CALL_SIZE),
     {"stack guard"}),
    ("a symbol count", file_header(NumberOfSymbols=7), {"stripped"}),
    ("a symbol table", file_header(PointerToSymbolTable=0x400), {"stripped"}),
    ("a debug directory", directory(DEBUG, Size=28), {"stripped"}),
    ("a home folder", text_left_in(b"/home/me/a.c"), {"build traces"}),
    ("a home folder in UTF-16", text_left_in(wide("/home/me/a.c")), {"build traces"}),
    ("the home folder of root", text_left_in(b"/root/a.c"), {"build traces"}),
    ("a temporary folder", text_left_in(b"/tmp/a.c"), {"build traces"}),
    ("the folder of this project", text_left_in(SOURCE_FOLDER), {"build traces"}),
    ("the name of a source", text_left_in(b"main.cpp"), {"build traces"}),
    ("the name of a source in C", text_left_in(b"crt/main.c "), {"build traces"}),
    ("the name of a header", text_left_in(b"owners.h "), {"build traces"}),
    ("the name of a symbol file", text_left_in(wide("Morvane.pdb ")), {"build traces"}),
    ("a path with a drive", text_left_in(b"D:\\src\\main "), {"build traces"}),
    ("a path with a drive and slashes", text_left_in(wide("d:/src/main ")), {"build traces"}),
    ("no resources", directory(RESOURCES, VirtualAddress=0, Size=0),
     VERSION_FACTS | MANIFEST_FACTS | {"icon"}),
    ("another icon number", resource_renumbered(RT_GROUP_ICON, 102), {"icon"}),
    ("another kind of group", resource_byte(RT_GROUP_ICON, 2, 2), {"icon"}),
    ("a group without images", resource_byte(RT_GROUP_ICON, 4, 0), {"icon"}),
    ("a group of two images", resource_byte(RT_GROUP_ICON, 4, 2), {"icon"}),
    ("a listed width of 32", resource_byte(RT_GROUP_ICON, 6, 32), {"icon"}),
    ("a listed height of 32", resource_byte(RT_GROUP_ICON, 7, 32), {"icon"}),
    ("a listed depth of 8", resource_byte(RT_GROUP_ICON, 12, 8), {"icon"}),
    ("a wrong listed length", resource_byte(RT_GROUP_ICON, 14, 1), {"icon"}),
    ("an image of another number", resource_renumbered(RT_ICON, 9), {"icon"}),
    ("an image that is not a PNG", resource_byte(RT_ICON, 1, 0), {"icon"}),
    ("a PNG 32 wide", resource_byte(RT_ICON, 19, 32), {"icon"}),
    ("a PNG 32 high", resource_byte(RT_ICON, 23, 32), {"icon"}),
    ("a PNG of depth 16", resource_byte(RT_ICON, 24, 16), {"icon"}),
    ("a PNG without transparency", resource_byte(RT_ICON, 25, 2), {"icon"}),
    ("another manifest number", resource_renumbered(RT_MANIFEST, 2), MANIFEST_FACTS),
    ("a manifest that is not XML", manifest_text(b"</assembly>", b"</assembli>"), MANIFEST_FACTS),
    ("other controls", manifest_text(b"Common-Controls", b"Common-Contrals"), {"common controls"}),
    ("older controls", manifest_text(b'"6.0.0.0"', b'"5.0.0.0"'), {"common controls"}),
    ("controls of another publisher", manifest_text(b"6595b64144ccf1df", b"0" * 16),
     {"common controls"}),
    ("more rights", manifest_text(b'"asInvoker" uiAccess="false"', b'"highestAvailable"          '),
     {"execution level"}),
    ("access to the user interface", manifest_text(b'"false"', b'"true" '), {"execution level"}),
    ("no Windows 10 and 11", manifest_text(b"8e0f7a12", b"00000000"), {"supported systems"}),
    ("DPI awareness", manifest_element_added(b'<dpiAware xmlns="urn:x">true</dpiAware>'),
     {"DPI awareness"}),
    ("DPI awareness in the newer form", manifest_element_added(b"<dpiAwareness>system</dpiAwareness>"),
     {"DPI awareness"}),
    ("a version block too long for the resource", resource_byte(RT_VERSION, 1, 0x7F), VERSION_FACTS),
    ("no fixed version", resource_text(RT_VERSION, FIXED_VERSION_SIGNATURE, bytes(4)),
     {"fixed version"}),
    ("another fixed file version", fixed_version_byte(8), {"fixed version"}),
    ("another fixed product version", fixed_version_byte(16), {"fixed version"}),
    ("an English text", version_text("Keep selected", "Keep Selected"), {"texts 040904b0"}),
    ("a Japanese text", version_text("手前", "手后"), {"texts 041104b0"}),
    ("a renamed text", version_text("LegalCopyright", "LegalCopyleft!"), {"texts 040904b0"}),
    ("another company", version_text("the Morvane", "two Morvane", "041104b0"), {"texts 041104b0"}),
    ("another file name", version_text("Morvane.exe", "Morvane.com"), {"texts 040904b0"}),
    ("a renamed table", version_text("041104b0", "040704b0"), {"texts 041104b0", "translations"}),
    ("translations in the other order", resource_text(RT_VERSION, *TRANSLATIONS), {"translations"}),
    ("no translations", version_text("Translation", "Transaction"), {"translations"}),
)


class CheckExecutable(unittest.TestCase):
    data = b""
    link_map = ""
    version = ""

    @classmethod
    def setUpClass(cls):
        cls.pe = check_executable.parse(cls.data)

    def failing(self, data, version=None, max_bytes=None, link_map=None):
        results = check_executable.run_checks(
            bytes(data), self.link_map if link_map is None else link_map, version or self.version,
            max_bytes or len(self.data))
        return {fact for fact, holds, _ in results if not holds}

    def expect_failing(self, spoil, expected):
        spoiled = SpoiledCopy(self.pe, self.data)
        spoil(spoiled)
        self.assertNotEqual(self.data, bytes(spoiled.data))
        self.assertEqual(expected, self.failing(spoiled.data))

    def test_every_fact_holds_for_the_program_as_built(self):
        self.assertEqual(set(), self.failing(self.data))

    def test_a_spoiled_copy_fails_exactly_the_spoiled_facts(self):
        for name, spoil, expected in CASES:
            with self.subTest(name):
                self.expect_failing(spoil, expected)

    def test_each_version_text_is_compared(self):
        other = self.version[:-1] + "x"
        for table in ("040904b0", "041104b0"):
            for key in ("FileVersion", "ProductVersion"):
                with self.subTest(table=table, key=key):
                    spoil = version_text(self.version, other, table, key)
                    self.expect_failing(spoil, {"texts " + table})

    def test_another_expected_version_fails(self):
        failing = self.failing(self.data, version=self.version + "0")
        self.assertEqual({"fixed version"} | TEXT_FACTS, failing)

    def test_one_byte_over_the_limit_fails(self):
        self.assertEqual({"size"}, self.failing(self.data, max_bytes=len(self.data) - 1))

    def test_a_library_member_that_nobody_named_fails(self):
        for member in ("/lib/libstdc++.a(wstring-inst.o)", "/lib/libgcc.a(unwind-seh.o)",
                       "/lib/libwinpthread.a(libwinpthread_la-rwlock.o)", "libversion.a(versions1.o)",
                       "/lib/libmsvcrt.a(lib64_libmsvcrt_common_a-strnlen.o)"):
            with self.subTest(member):
                link_map = self.link_map.replace("\n\n", f"\n\n{member}\n    needed.o (it)\n", 1)
                self.assertEqual({"linked members"}, self.failing(self.data, link_map=link_map))

    def test_a_link_map_that_cannot_be_read_fails(self):
        self.assertEqual({"linked members"}, self.failing(self.data, link_map=""))

    def test_a_file_that_is_not_a_program_fails(self):
        self.assertEqual({"program file"}, self.failing(b"#!/bin/sh\n" * 100))

    def test_each_fact_has_a_case_that_fails(self):
        seen = {"size", "linked members"}.union(*(expected for _, _, expected in CASES))
        self.assertEqual({fact for fact, _ in check_executable.CHECKS}, seen)


def main():
    parser = argparse.ArgumentParser(description="Tests that every fact of the check can fail.")
    parser.add_argument("path", type=Path, help="the finished program")
    parser.add_argument("--map", type=Path, required=True, help="the linker's map of it")
    parser.add_argument("--version", required=True, help="its version")
    arguments, rest = parser.parse_known_args()
    CheckExecutable.data = arguments.path.read_bytes()
    CheckExecutable.link_map = arguments.map.read_text(encoding="utf-8")
    CheckExecutable.version = arguments.version
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
