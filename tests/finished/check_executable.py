#!/usr/bin/python3
"""Checks properties of the finished program file that running the program does not show.

Prints a line per fact and the totals. Exits with 0 if every fact holds, with 1 otherwise.
Needs pefile (Debian: python3-pefile).
"""

import argparse
import re
import struct
import sys
from collections import namedtuple
from pathlib import Path
from xml.etree import ElementTree

import build_traces
import pefile
import pe_resources
from expected import (
    COMMON_TEXTS, DESCRIPTIONS, IMPORT_LIBRARIES, KNOWN_LIBRARIES, LINKED_CODE, SUPPORTED_SYSTEMS)
from link_map import linked_members

# mov ecx, 2; int 29h: ends the process at once because a stack guard was changed.
GUARD_FAILURE = b"\xb9\x02\x00\x00\x00\xcd\x29"
NEAR_CALL_SIZE = 5
# Far fewer than the program has; without the compiler's option there are none.
MIN_GUARDED_FUNCTIONS = 40

ICON_ID = 101
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"

ASM_V1 = "{urn:schemas-microsoft-com:asm.v1}"
ASM_V3 = "{urn:schemas-microsoft-com:asm.v3}"
COMPATIBILITY = "{urn:schemas-microsoft-com:compatibility.v1}"

# The program's own code; its members are its sources.
OWN_LIBRARY = "libmorvane_core.a"
# The numbered members of a library for a DLL, and its head and tail.
IMPORT_MEMBER = re.compile(r"lib\w+(?:h|t|s\d+)\.o")

Program = namedtuple("Program", "pe data link_map version max_bytes")


class Failed(Exception):
    """A fact does not hold; the text says what was found."""


def require(condition, message):
    if not condition:
        raise Failed(message)


def named(constants, value):
    return constants.get(value, hex(value))


def check_size(program):
    size = len(program.data)
    require(size <= program.max_bytes, f"{size} bytes, the limit is {program.max_bytes}")
    return f"{size} bytes, the limit is {program.max_bytes}"


def check_machine(program):
    machine = program.pe.FILE_HEADER.Machine
    name = named(pefile.MACHINE_TYPE, machine)
    require(name == "IMAGE_FILE_MACHINE_AMD64", f"built for {name}")
    return "x64"


def check_subsystem(program):
    subsystem = program.pe.OPTIONAL_HEADER.Subsystem
    name = named(pefile.SUBSYSTEM_TYPE, subsystem)
    require(name == "IMAGE_SUBSYSTEM_WINDOWS_GUI", f"the subsystem is {name}")
    return "windowed"


def imported_libraries(program):
    return [(entry.dll.decode("ascii", "replace"), entry.imports)
            for entry in getattr(program.pe, "DIRECTORY_ENTRY_IMPORT", [])]


def check_imports(program):
    libraries = sorted(library for library, _ in imported_libraries(program))
    require(libraries, "no import table")
    foreign = [library for library in libraries if library.lower() not in KNOWN_LIBRARIES]
    require(not foreign, "loaded at start: " + ", ".join(foreign))
    return ", ".join(libraries)


def check_linked_members(program):
    members = linked_members(program.link_map)
    require(members, "the link map lists no members")
    unexpected = [f"{library}({member})" for library, member in members
                  if library != OWN_LIBRARY and member not in LINKED_CODE.get(library, ())
                  and not (library in IMPORT_LIBRARIES and IMPORT_MEMBER.fullmatch(member))]
    require(not unexpected, "linked: " + ", ".join(unexpected))
    return f"{len(members)}, all expected"


def check_wide_functions(program):
    # The C runtime has no A and W variants of its functions.
    ansi = [f"{function.name.decode('ascii', 'replace')} of {library}"
            for library, functions in imported_libraries(program) if library.lower() != "msvcrt.dll"
            for function in functions if (function.name or b"").endswith(b"A")]
    require(not ansi, "imported: " + ", ".join(ansi))
    return "no ANSI functions imported"


def check_dll_characteristic(name):
    bit = pefile.DLL_CHARACTERISTICS["IMAGE_DLLCHARACTERISTICS_" + name]

    def check(program):
        flags = program.pe.OPTIONAL_HEADER.DllCharacteristics
        require(flags & bit, f"{name} is not set in {flags:#06x}")
        return f"set in {flags:#06x}"

    return check


def check_relocations(program):
    stripped = pefile.IMAGE_CHARACTERISTICS["IMAGE_FILE_RELOCS_STRIPPED"]
    require(not program.pe.FILE_HEADER.Characteristics & stripped, "marked as stripped")
    blocks = getattr(program.pe, "DIRECTORY_ENTRY_BASERELOC", [])
    count = sum(len(block.entries) for block in blocks)
    require(count > 0, "the relocation table is missing or empty")
    return f"{count} entries"


def check_sections(program):
    both = []
    for section in program.pe.sections:
        if section.IMAGE_SCN_MEM_WRITE and section.IMAGE_SCN_MEM_EXECUTE:
            both.append(section.Name.rstrip(b"\0").decode("ascii", "replace"))
    require(not both, "writable and executable: " + ", ".join(both))
    return f"{len(program.pe.sections)} sections, none writable and executable"


def check_stack_guard(program):
    """Counts the calls of the code that ends the process after a buffer overrun."""
    code = next(s for s in program.pe.sections if s.IMAGE_SCN_MEM_EXECUTE)
    data = code.get_data()
    ends = {match.start() for match in re.finditer(re.escape(GUARD_FAILURE), data)}
    require(ends, "no code ends the program after a buffer overrun")
    # A near call's target is relative to the instruction after it.
    calls = sum(position + NEAR_CALL_SIZE + struct.unpack_from("<i", data, position + 1)[0] in ends
                for position in (match.start() for match in re.finditer(b"\xe8", data))
                if position + NEAR_CALL_SIZE <= len(data))
    require(calls >= MIN_GUARDED_FUNCTIONS,
            f"{calls} functions have a stack guard, expected at least {MIN_GUARDED_FUNCTIONS}")
    return f"{calls} functions have one"


def check_stripped(program):
    header = program.pe.FILE_HEADER
    require(header.PointerToSymbolTable == 0 and header.NumberOfSymbols == 0,
            f"contains a symbol table of {header.NumberOfSymbols} symbols")
    directory = pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_DEBUG"]
    require(program.pe.OPTIONAL_HEADER.DATA_DIRECTORY[directory].Size == 0,
            "contains a debug directory")
    return "no symbols, no debug directory"


def check_build_traces(program):
    found = build_traces.traces_in(program.data)
    require(not found, "found " + ", ".join(found))
    return "no paths or source names"


def check_icon(program):
    groups = pe_resources.resources_of_type(program.pe, pe_resources.RT_GROUP_ICON)
    require([group.identifier for group in groups] == [ICON_ID],
            f"icon groups are {[group.identifier for group in groups]}, expected only {ICON_ID}")
    images = pe_resources.icon_images(groups[0].data)
    require(len(images) == 1, f"the group lists {len(images)} images, expected 1")
    image = images[0]
    shape = (image.width, image.height, image.bits)
    require(shape == (16, 16, 32), "the group lists {}x{} at {} bits".format(*shape))
    icons = pe_resources.resources_of_type(program.pe, pe_resources.RT_ICON)
    require([icon.identifier for icon in icons] == [image.identifier],
            f"the file holds the images {[icon.identifier for icon in icons]}, "
            f"the group names {image.identifier}")
    data = icons[0].data
    require(len(data) == image.size, f"the image has {len(data)} bytes, the group lists {image.size}")
    require(data.startswith(PNG_SIGNATURE), "the image is not stored as PNG")
    png = struct.unpack_from(">IIBB", data, 16)
    require(png == (16, 16, 8, 6),
            "the PNG is {}x{} with depth {} and colour type {}, expected RGBA".format(*png))
    return f"{ICON_ID}, one 16x16 image at 32 bits, PNG of {len(data)} bytes"


def manifest_root(program):
    manifests = pe_resources.resources_of_type(program.pe, pe_resources.RT_MANIFEST)
    identifiers = [manifest.identifier for manifest in manifests]
    require(identifiers == [1], f"manifests are {identifiers}, expected only 1")
    return ElementTree.fromstring(manifests[0].data)


def check_common_controls(program):
    path = f"{ASM_V1}dependency/{ASM_V1}dependentAssembly/{ASM_V1}assemblyIdentity"
    found = [(item.get("name"), item.get("version"), item.get("publicKeyToken"))
             for item in manifest_root(program).findall(path)]
    expected = ("Microsoft.Windows.Common-Controls", "6.0.0.0", "6595b64144ccf1df")
    require(found == [expected], f"the manifest depends on {found}")
    return "version 6"


def check_execution_level(program):
    path = "/".join(ASM_V3 + tag for tag in (
        "trustInfo", "security", "requestedPrivileges", "requestedExecutionLevel"))
    found = [(item.get("level"), item.get("uiAccess"))
             for item in manifest_root(program).findall(path)]
    require(found == [("asInvoker", "false")], f"the manifest asks for {found}")
    return "asInvoker, no uiAccess"


def check_supported_systems(program):
    path = f"{COMPATIBILITY}compatibility/{COMPATIBILITY}application/{COMPATIBILITY}supportedOS"
    found = {item.get("Id") for item in manifest_root(program).findall(path)}
    missing = [name for key, name in SUPPORTED_SYSTEMS.items() if key not in found]
    require(not missing, "the manifest does not name " + ", ".join(missing))
    return ", ".join(SUPPORTED_SYSTEMS.values())


def check_no_dpi_awareness(program):
    found = [item.tag for item in manifest_root(program).iter()
             if item.tag.rpartition("}")[2].lower().startswith("dpi")]
    require(not found, "the manifest holds " + ", ".join(found))
    return "none declared"


def version_root(program):
    versions = pe_resources.resources_of_type(program.pe, pe_resources.RT_VERSION)
    require(len(versions) == 1, f"{len(versions)} version resources, expected 1")
    return pe_resources.version_tree(versions[0].data)


def check_fixed_version(program):
    file_version, product_version = pe_resources.fixed_versions(version_root(program))
    require(file_version == product_version == program.version,
            f"file {file_version}, product {product_version}, expected {program.version}")
    return file_version


def check_string_table(name):
    def check(program):
        tables = pe_resources.string_tables(version_root(program))
        require(name in tables, f"tables are {sorted(tables)}")
        expected = dict(COMMON_TEXTS, FileDescription=DESCRIPTIONS[name],
                        FileVersion=program.version, ProductVersion=program.version)
        texts = tables[name]
        wrong = [f"{key} is {texts.get(key)!r}, expected {value!r}"
                 for key, value in expected.items() if texts.get(key) != value]
        require(not wrong, "; ".join(wrong))
        return f"{len(expected)} texts, version {program.version}"

    return check


def check_translations(program):
    root = version_root(program)
    found = [f"{language:04x}{page:04x}" for language, page in pe_resources.translations(root)]
    # The order matters: the program shows the version of the first pair.
    require(found == list(DESCRIPTIONS), f"the translations are {found}")
    tables = list(pe_resources.string_tables(root))
    require(tables == found, f"the translations are {found}, the tables {tables}")
    return ", ".join(found)


CHECKS = (
    ("size", check_size),
    ("machine", check_machine),
    ("subsystem", check_subsystem),
    ("load-time libraries", check_imports),
    ("wide functions", check_wide_functions),
    ("linked members", check_linked_members),
    ("DYNAMIC_BASE", check_dll_characteristic("DYNAMIC_BASE")),
    ("HIGH_ENTROPY_VA", check_dll_characteristic("HIGH_ENTROPY_VA")),
    ("NX_COMPAT", check_dll_characteristic("NX_COMPAT")),
    ("relocations", check_relocations),
    ("sections", check_sections),
    ("stack guard", check_stack_guard),
    ("stripped", check_stripped),
    ("build traces", check_build_traces),
    ("icon", check_icon),
    ("common controls", check_common_controls),
    ("execution level", check_execution_level),
    ("supported systems", check_supported_systems),
    ("DPI awareness", check_no_dpi_awareness),
    ("fixed version", check_fixed_version),
    ("texts 040904b0", check_string_table("040904b0")),
    ("texts 041104b0", check_string_table("041104b0")),
    ("translations", check_translations),
)


def parse(data):
    """Parses the file; raises pefile.PEFormatError if it is not a program file."""
    pe = pefile.PE(data=data, fast_load=True)
    # Skipping the rest, such as every function's unwind table, is much faster.
    pe.parse_data_directories([pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_" + name]
                               for name in ("IMPORT", "RESOURCE", "BASERELOC")])
    return pe


def run_checks(data, link_map, version, max_bytes):
    """Yields (fact, holds, detail) for each fact about the program file."""
    try:
        pe = parse(data)
    except pefile.PEFormatError as error:
        yield "program file", False, f"not readable: {error.value}"
        return
    program = Program(pe, data, link_map, version, max_bytes)
    for fact, check in CHECKS:
        try:
            yield fact, True, check(program)
        except (Failed, ValueError, struct.error, ElementTree.ParseError) as error:
            yield fact, False, str(error)


def main():
    parser = argparse.ArgumentParser(description="Checks properties of the finished program file.")
    parser.add_argument("path", type=Path)
    parser.add_argument("--map", type=Path, required=True, help="the linker's map of it")
    parser.add_argument("--version", required=True, help="the expected version")
    parser.add_argument("--max-bytes", type=int, required=True, help="the size limit")
    arguments = parser.parse_args()

    # A failure can quote characters that the terminal's encoding lacks.
    sys.stdout.reconfigure(errors="backslashreplace")
    counts = {True: 0, False: 0}
    data = arguments.path.read_bytes()
    link_map = arguments.map.read_text(encoding="utf-8")
    for fact, holds, detail in run_checks(data, link_map, arguments.version, arguments.max_bytes):
        counts[holds] += 1
        print(f"{'ok    ' if holds else 'FAILED'} {fact}: {detail}")
    print(f"{counts[True]} passed, {counts[False]} failed")
    return 0 if counts[False] == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
