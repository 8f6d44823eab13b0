#!/usr/bin/python3
"""Tests the facts about the finished program file, and that each of them can fail.

usage: finished_test.py PROGRAM LINK-MAP VERSION MAX-BYTES

Spoils one thing at a time in a copy in memory, and expects exactly the facts that depend on it to
fail. Needs pefile.
"""

import struct
import sys
from operator import attrgetter
from pathlib import Path

import facts
import pefile
from facts import GUARD_FAILURE, ICON_GROUP, PNG_START

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "package"))
import suite


def field(find, **values):
    """Changes fields of the header or entry that find returns."""
    def spoil(subject):
        pe = facts.parsed(subject.data)
        for name, value in values.items():
            setattr(find(pe), name, value)
        return subject._replace(data=bytes(pe.write()))
    return spoil


def replaced(old, new):
    """Replaces the last place of these bytes or of this text; what is left over becomes spaces."""
    if isinstance(old, str):
        old, new = old.encode("utf-16-le"), new.encode("utf-16-le")
    def spoil(subject):
        head, found, tail = subject.data.rpartition(old)
        assert found and len(new) <= len(old)
        return subject._replace(data=head + new.ljust(len(old)) + tail)
    return spoil


# Only DOS ever shows this text, so a copy can hold another one in its place.
def left_in(trace):
    return replaced(b"This program cannot be run in DOS mode.", trace)


def linked(member):
    """Adds a member of a library to the link map."""
    return lambda subject: subject._replace(
        link_map=subject.link_map.replace("\n\n", f"\n\n{member}\n    needed.o (it)\n", 1))


def diverted_calls(subject):
    """Makes every call of the code that ends the program miss it by one byte."""
    section = facts.code_section(facts.parsed(subject.data))
    data = bytearray(subject.data)
    for position in facts.guarded_calls(section.get_data()):
        data[section.PointerToRawData + position + 1] ^= 1
    return subject._replace(data=bytes(data))


def resource(kind):
    """The entry with the number of the first resource of that kind."""
    def find(pe):
        return next(entry for entry in pe.DIRECTORY_ENTRY_RESOURCE.entries
                    if entry.id == pefile.RESOURCE_TYPE[kind]).directory.entries[0].struct
    return find


def fixed_version(pe):
    return pe.VS_FIXEDFILEINFO[0]


FILE = attrgetter("FILE_HEADER")
OPTIONAL = attrgetter("OPTIONAL_HEADER")
# A comment of the manifest, which leaves room for an element.
SYSTEMS_COMMENT = b"<!-- Windows 10 and 11 -->"

# By the facts that must fail: what is wrong with the copy, and the change that does it.
CASES = {
    "size": {
        "one byte over the limit": lambda subject: subject._replace(
            max_bytes=len(subject.data) - 1),
    },
    "headers": {
        "another processor": field(FILE, Machine=0xAA64),
        "relocations marked as stripped": field(FILE, Characteristics=0x0023),
        "a symbol table": field(FILE, PointerToSymbolTable=0x400),
        "a symbol count": field(FILE, NumberOfSymbols=7),
        "a console program": field(OPTIONAL, Subsystem=3),
        "no DYNAMIC_BASE": field(OPTIONAL, DllCharacteristics=0x0120),
        "no HIGH_ENTROPY_VA": field(OPTIONAL, DllCharacteristics=0x0140),
        "no NX_COMPAT": field(OPTIONAL, DllCharacteristics=0x0060),
    },
    "debug directory": {"a debug directory": field(facts.directory("DEBUG"), Size=28)},
    "load time libraries": {
        "a library that can be planted": replaced(b"USER32.dll", b"USER99.dll"),
    },
    "load time libraries, wide functions": {
        "no imports": field(facts.directory("IMPORT"), VirtualAddress=0),
    },
    "wide functions": {
        "an ANSI function": replaced(b"DefWindowProcW\0", b"DefWindowProcA\0"),
    },
    "linked code": {
        "code of the C++ library": linked("/lib/libstdc++.a(wstring-inst.o)"),
        "the unwinder": linked("/lib/libgcc.a(unwind-seh.o)"),
        "code for threads": linked("/lib/libwinpthread.a(libwinpthread_la-rwlock.o)"),
        "an unknown import library": linked("libversion.a(versions1.o)"),
        "code of a DLL's library": linked("/lib/libmsvcrt.a(lib64_libmsvcrt_common_a-strnlen.o)"),
        "an empty link map": lambda subject: subject._replace(link_map=""),
    },
    "relocations": {"no relocations": field(facts.directory("BASERELOC"), VirtualAddress=0)},
    "sections": {"writable code": field(facts.code_section, IMAGE_SCN_MEM_WRITE=True)},
    "stack guard": {
        "no end after a buffer overrun": replaced(GUARD_FAILURE, b""),
        "no function with a stack guard": diverted_calls,
    },
    "build traces": {
        "a home folder": left_in(b"/home/me/"),
        "the home folder of root in UTF-16": left_in("/root/a".encode("utf-16-le")),
        "a temporary folder": left_in(b"/tmp/a"),
        "the folder of this project": left_in(facts.PROJECT_FOLDER.encode()),
        "the name of a source": left_in(b"main.cpp"),
        "the name of a header": left_in(b"owners.h "),
        "a symbol file at an odd place": left_in(b"." + "Mo.pdb ".encode("utf-16-le")),
        "a path with a drive": left_in(b"D:\\src"),
    },
    "icon": {
        "another icon number": field(resource("RT_GROUP_ICON"), Name=102),
        "an image of another number": field(resource("RT_ICON"), Name=9),
        "a larger image in the list": replaced(ICON_GROUP, ICON_GROUP.replace(b"\x10", b"\x20", 1)),
        "an image that is not a PNG": replaced(PNG_START, b"?" + PNG_START[1:]),
        "a PNG without transparency": replaced(PNG_START, PNG_START[:-1] + b"\2"),
    },
    "manifest": {
        "another manifest number": field(resource("RT_MANIFEST"), Name=2),
        "a manifest that is not XML": replaced(b"</assembly>", b"</assembli>"),
        "other controls": replaced(b"Common-Controls", b"Common-Contrals"),
        "older controls": replaced(b'"6.0.0.0"', b'"5.0.0.0"'),
        "controls of another publisher": replaced(b"6595b64144ccf1df", b"0"),
        "more rights": replaced(b'level="asInvoker"', b'level="highest"'),
        "access to the user interface": replaced(b'"false"', b'"true"'),
        "no Windows 10 and 11": replaced(b"{8e0f7a12", b"{"),
        "DPI awareness": replaced(SYSTEMS_COMMENT, b"<dpiAware/>"),
        "DPI awareness in the newer form": replaced(SYSTEMS_COMMENT, b"<dpiAwareness/>"),
    },
    "fixed version": {
        "another file version": field(fixed_version, FileVersionLS=7),
        "another product version": field(fixed_version, ProductVersionMS=7),
    },
    "version texts": {
        "an English text": replaced("Keep selected", "Keep Selected"),
        "a Japanese text": replaced("手前", "手后"),
        "another company": replaced("the Morvane", "two Morvane"),
        "a renamed table": replaced("041104b0", "040704b0"),
        "translations in the other order": replaced(
            struct.pack("<4H", 0x409, 0x4B0, 0x411, 0x4B0),
            struct.pack("<4H", 0x411, 0x4B0, 0x409, 0x4B0)),
    },
    "fixed version, version texts": {
        "another expected version": lambda subject: subject._replace(version="1.2.3.4"),
    },
    "icon, manifest, fixed version, version texts": {
        "no resources": field(facts.directory("RESOURCE"), VirtualAddress=0),
    },
}


class FinishedProgram(suite.Test):
    subject = None

    def test_every_fact_holds(self):
        print("measured: functions with a stack guard:",
              facts.guarded_functions(facts.parsed(self.subject.data)))
        self.assertEqual({}, facts.failing(self.subject))

    def test_a_spoiled_copy_fails_exactly_the_spoiled_facts(self):
        for names, spoilings in CASES.items():
            for what, spoil in spoilings.items():
                with self.subTest(what):
                    failing = facts.failing(spoil(self.subject))
                    self.assertEqual(set(names.split(", ")), set(failing))

    def test_each_fact_has_a_case_that_fails(self):
        self.assertLessEqual(set(facts.FACTS), set(CASES))


if __name__ == "__main__":
    program, link_map, version, max_bytes = sys.argv[1:5]
    FinishedProgram.subject = facts.Subject(
        Path(program).read_bytes(), Path(link_map).read_text("utf-8"), version, int(max_bytes))
    suite.main(sys.argv[:1] + sys.argv[5:])
