#!/usr/bin/python3
"""Tests that every fact of check_executable.py can fail.

Spoils one thing at a time in a copy of the finished program in memory, and expects exactly the
facts that depend on it to fail. Needs pefile.
"""

import argparse
import struct
import sys
import unittest
from pathlib import Path

import check_executable
import pefile
from check_executable import (
    GUARD_FAILURE, PROJECT_ROOT, WINDOWS_10_AND_11, code_section, guarded_calls)

# Numbers of data directories.
IMPORTS, RESOURCES, RELOCATIONS, DEBUG = 1, 2, 5, 6
MANIFEST = {"common controls", "execution level", "supported systems", "dpi awareness"}
VERSION = {"fixed version", "version texts"}


def field(find, name, change):
    """Changes one field of the header or entry that find returns."""
    def spoil(pe):
        structure = find(pe)
        setattr(structure, name, change(getattr(structure, name)))
        return pe.write()
    return spoil


def replaced(old, new):
    """Replaces the last place of these bytes; what is left over becomes spaces."""
    def spoil(pe):
        assert len(new) <= len(old)
        data = bytearray(pe.__data__)
        start = data.rindex(old)
        data[start : start + len(old)] = new.ljust(len(old))
        return data
    return spoil


def text(old, new):
    return replaced(old.encode("utf-16-le"), new.encode("utf-16-le"))


# Only DOS ever shows this text, so a copy can hold another one in its place.
def left_in(trace):
    return replaced(b"This program cannot be run in DOS mode.", trace)


def diverted_calls(pe):
    """Makes every call of the code that ends the program miss it by one byte."""
    section = code_section(pe)
    data = bytearray(pe.__data__)
    for position in guarded_calls(section.get_data()):
        data[section.PointerToRawData + position + 1] ^= 1
    return data


def file_header(pe):
    return pe.FILE_HEADER


def optional_header(pe):
    return pe.OPTIONAL_HEADER


def directory(number):
    return lambda pe: pe.OPTIONAL_HEADER.DATA_DIRECTORY[number]


def fixed_version(pe):
    return pe.VS_FIXEDFILEINFO[0]


def resource(kind):
    """The entry with the number of the first resource of that kind."""
    def find(pe):
        return next(entry for entry in pe.DIRECTORY_ENTRY_RESOURCE.entries
                    if entry.id == pefile.RESOURCE_TYPE[kind]).directory.entries[0].struct
    return find


def to(value):
    return lambda _: value


def without(bit):
    return lambda flags: flags & ~bit


GROUP = struct.pack("<3H4B2H", 0, 1, 1, 16, 16, 0, 0, 1, 32)
PNG = check_executable.PNG_START

# What is wrong with the copy, the facts that must then fail, and the change that does it.
CASES = (
    ("another processor", "machine", field(file_header, "Machine", to(0xAA64))),
    ("a console program", "subsystem", field(optional_header, "Subsystem", to(3))),
    ("a library that can be planted", "load time libraries",
     replaced(b"USER32.dll", b"USER99.dll")),
    ("no imports", "load time libraries", field(directory(IMPORTS), "VirtualAddress", to(0))),
    ("an ANSI function", "wide functions", replaced(b"DefWindowProcW\0", b"DefWindowProcA\0")),
    ("no DYNAMIC_BASE", "dll characteristics",
     field(optional_header, "DllCharacteristics", without(0x0040))),
    ("no HIGH_ENTROPY_VA", "dll characteristics",
     field(optional_header, "DllCharacteristics", without(0x0020))),
    ("no NX_COMPAT", "dll characteristics",
     field(optional_header, "DllCharacteristics", without(0x0100))),
    ("relocations marked as stripped", "relocations",
     field(file_header, "Characteristics", lambda flags: flags | 1)),
    ("no relocations", "relocations", field(directory(RELOCATIONS), "VirtualAddress", to(0))),
    ("writable code", "sections", field(code_section, "IMAGE_SCN_MEM_WRITE", to(True))),
    ("no end after a buffer overrun", "stack guard",
     lambda pe: pe.__data__.replace(GUARD_FAILURE, bytes(len(GUARD_FAILURE)))),
    ("no function with a stack guard", "stack guard", diverted_calls),
    ("a symbol count", "stripped", field(file_header, "NumberOfSymbols", to(7))),
    ("a symbol table", "stripped", field(file_header, "PointerToSymbolTable", to(0x400))),
    ("a debug directory", "stripped", field(directory(DEBUG), "Size", to(28))),
    ("a home folder", "build traces", left_in(b"/home/me/")),
    ("the home folder of root in UTF-16", "build traces", left_in("/root/a".encode("utf-16-le"))),
    ("a temporary folder", "build traces", left_in(b"/tmp/a")),
    ("the folder of this project", "build traces", left_in(f"/{PROJECT_ROOT.parts[1]}/".encode())),
    ("the name of a source", "build traces", left_in(b"main.cpp")),
    ("the name of a header", "build traces", left_in(b"owners.h ")),
    ("a symbol file at an odd place", "build traces",
     left_in(b"." + "Mo.pdb ".encode("utf-16-le"))),
    ("a path with a drive", "build traces", left_in(b"D:\\src")),
    ("no resources", {"icon"} | MANIFEST | VERSION,
     field(directory(RESOURCES), "VirtualAddress", to(0))),
    ("another icon number", "icon", field(resource("RT_GROUP_ICON"), "Name", to(102))),
    ("an image of another number", "icon", field(resource("RT_ICON"), "Name", to(9))),
    ("a larger image in the list", "icon", replaced(GROUP, GROUP.replace(b"\x10", b"\x20", 1))),
    ("an image that is not a PNG", "icon", replaced(PNG, b"?" + PNG[1:])),
    ("a PNG without transparency", "icon", replaced(PNG, PNG[:-1] + b"\2")),
    ("another manifest number", MANIFEST, field(resource("RT_MANIFEST"), "Name", to(2))),
    ("a manifest that is not XML", MANIFEST, replaced(b"</assembly>", b"</assembli>")),
    ("other controls", "common controls", replaced(b"Common-Controls", b"Common-Contrals")),
    ("older controls", "common controls", replaced(b'"6.0.0.0"', b'"5.0.0.0"')),
    ("controls of another publisher", "common controls", replaced(b"6595b64144ccf1df", b"0")),
    ("more rights", "execution level", replaced(b'level="asInvoker"', b'level="highest"')),
    ("access to the user interface", "execution level", replaced(b'"false"', b'"true"')),
    ("no Windows 10 and 11", "supported systems", replaced(WINDOWS_10_AND_11[:9].encode(), b"{")),
    ("DPI awareness", "dpi awareness", replaced(b"<!-- Windows 10 and 11 -->", b"<dpiAware/>")),
    ("DPI awareness in the newer form", "dpi awareness",
     replaced(b"<!-- Windows 10 and 11 -->", b"<dpiAwareness/>")),
    ("another file version", "fixed version", field(fixed_version, "FileVersionLS", to(7))),
    ("another product version", "fixed version", field(fixed_version, "ProductVersionMS", to(7))),
    ("an English text", "version texts", text("Keep selected", "Keep Selected")),
    ("a Japanese text", "version texts", text("手前", "手后")),
    ("another company", "version texts", text("the Morvane", "two Morvane")),
    ("a renamed table", "version texts", text("041104b0", "040704b0")),
    ("translations in the other order", "version texts",
     replaced(struct.pack("<4H", 0x409, 0x4B0, 0x411, 0x4B0),
              struct.pack("<4H", 0x411, 0x4B0, 0x409, 0x4B0))),
)


class CheckExecutable(unittest.TestCase):
    arguments = None

    def setUp(self):
        self.data = self.arguments.path.read_bytes()
        self.link_map = self.arguments.map.read_text("utf-8")

    def failing(self, data=None, link_map=None, version=None, max_bytes=None):
        results = check_executable.run_checks(
            bytes(data or self.data), self.link_map if link_map is None else link_map,
            version or self.arguments.version, max_bytes or len(self.data))
        return {fact for fact, holds, _ in results if not holds}

    def test_every_fact_holds_for_the_program_as_built(self):
        self.assertEqual(set(), self.failing())

    def test_a_spoiled_copy_fails_exactly_the_spoiled_facts(self):
        for name, facts, spoil in CASES:
            with self.subTest(name):
                pe = pefile.PE(data=self.data, fast_load=True)
                pe.parse_data_directories([RESOURCES])
                spoiled = spoil(pe)
                expected = {facts} if isinstance(facts, str) else facts
                self.assertEqual(expected, self.failing(spoiled))

    def test_another_expected_version_fails(self):
        self.assertEqual(VERSION, self.failing(version=self.arguments.version + "0"))

    def test_one_byte_over_the_limit_fails(self):
        self.assertEqual({"size"}, self.failing(max_bytes=len(self.data) - 1))

    def test_a_library_member_that_nobody_named_fails(self):
        for member in ("/lib/libstdc++.a(wstring-inst.o)", "/lib/libgcc.a(unwind-seh.o)",
                       "/lib/libwinpthread.a(libwinpthread_la-rwlock.o)",
                       "libversion.a(versions1.o)", "/lib/libmsvcrt.a(lib64_libmsvcrt_common_a-strnlen.o)"):
            with self.subTest(member):
                link_map = self.link_map.replace("\n\n", f"\n\n{member}\n    needed.o (it)\n", 1)
                self.assertEqual({"linked code"}, self.failing(link_map=link_map))

    def test_a_link_map_that_cannot_be_read_fails(self):
        self.assertEqual({"linked code"}, self.failing(link_map=""))

    def test_each_fact_has_a_case_that_fails(self):
        seen = {"size", "linked code"}.union(*({facts} if isinstance(facts, str) else facts
                                               for _, facts, _ in CASES))
        self.assertEqual({fact.__name__.replace("_", " ") for fact in check_executable.FACTS}, seen)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description="Tests that every fact of the check can fail.")
    parser.add_argument("path", type=Path, help="the finished program")
    parser.add_argument("--map", type=Path, required=True, help="the linker's map of it")
    parser.add_argument("--version", required=True, help="its version")
    CheckExecutable.arguments, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
