#!/usr/bin/python3
"""Checks properties of the finished program file that running the program does not show.

Prints a line per fact and the totals. Exits with 0 if every fact holds, with 1 otherwise.
Needs pefile.
"""

import argparse
import re
import struct
import sys
from pathlib import Path
from types import SimpleNamespace
from xml.etree import ElementTree

import pefile
from link_map import linked_members

# Windows always loads these from its own list of known libraries, never a planted file of that name
# in the program's folder.
KNOWN_LIBRARIES = {
    "kernel32.dll", "user32.dll", "gdi32.dll", "shell32.dll", "ole32.dll", "advapi32.dll",
    "msvcrt.dll",
}

# What the linker may take from these libraries, under GCC 12 and GCC 14. Another member is code
# that nobody asked for: the unwinder for exceptions, say, comes with a single string function.
LINKED_CODE = {
    "libstdc++.a": {"hashtable_c++0x.o"},
    "libgcc.a": {"_chkstk_ms.o", "_ctors.o"},
    "libmingwex.a": {"mingw_matherr.o"},
    "libmingw32.a": {
        "CRT_fp10.o", "_newmode.o", "cinitexe.o", "crt0_w.o", "crt_handler.o", "gccmain.o",
        "merr.o", "mingw_helpers.o", "natstart.o", "pesect.o", "pseudo-reloc-list.o",
        "pseudo-reloc.o", "tlsmcrt.o", "tlssup.o", "tlsthrd.o", "ucrtexewin.o", "udllargc.o",
        "usermatherr.o", "wildcard.o", "xncommod.o", "xtxtmode.o",
    },
    "libmsvcrt.a": {
        "__p__commode.o", "__p__fmode.o", "__p__wcmdln.o", "acrt_iob_func.o",
        "invalid_parameter_handler.o",
    },
    "libuuid.a": {"dxva-uuid.o", "uuid.o"},
}
# The program's own code; its members are its sources.
OWN_LIBRARY = "libmorvane_core.a"
# Members of these are references to functions of a DLL, or such a library's head and tail.
IMPORT_LIBRARIES = {"lib" + name.replace(".dll", ".a") for name in KNOWN_LIBRARIES}
IMPORT_MEMBER = re.compile(r"lib\w+(?:h|t|s\d+)\.o")

# Paths and source names of the build machine. A name has at least two characters, so that random
# bytes of the code are not mistaken for one; the project may be built outside a home folder.
PROJECT_ROOT = Path(__file__).resolve().parents[2]
BUILD_TRACES = re.compile("|".join((
    *("/home", "/root", "/tmp", re.escape(f"/{PROJECT_ROOT.parts[1]}/")),
    r"\.cpp", r"[A-Za-z0-9_]{2,}\.(?:c|cc|h|hpp|pdb)(?![A-Za-z0-9_])",
    r"(?<![A-Za-z0-9_])[A-Za-z]:[\\/][A-Za-z0-9_.]{2,}")).encode())

# mov ecx, 2; int 29h: ends the process at once because a stack guard was changed.
GUARD_FAILURE = b"\xb9\x02\x00\x00\x00\xcd\x29"
NEAR_CALL = b"\xe8"
NEAR_CALL_SIZE = 5
# Far fewer than the program has; without the compiler's option there are none.
MIN_GUARDED_FUNCTIONS = 40

# One 16x16 image at 32 bits, stored as a PNG with transparency.
ICON_ID = 101
ICON_SHAPE = (16, 16, 0, 0, 1, 32)
PNG_START = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + struct.pack(">IIBB", 16, 16, 8, 6)

ASM_V1 = "{urn:schemas-microsoft-com:asm.v1}"
ASM_V3 = "{urn:schemas-microsoft-com:asm.v3}"
COMPATIBILITY = "{urn:schemas-microsoft-com:compatibility.v1}"
WINDOWS_10_AND_11 = "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"

# By language and code page. The order matters: the program shows the version of the first one.
DESCRIPTIONS = {
    "040904b0": "Keep selected windows always on top",
    "041104b0": "選んだウィンドウを、ほかより手前に固定",
}
COMMON_TEXTS = {
    "CompanyName": "the Morvane authors",
    "InternalName": "Morvane",
    "LegalCopyright": "Copyright © 2026 the Morvane authors",
    "OriginalFilename": "Morvane.exe",
    "ProductName": "Morvane",
}


class Failed(Exception):
    """A fact does not hold; the text says what was found."""


def require(condition, found):
    if not condition:
        raise Failed(found)
    return found


def size(program):
    return require(len(program.data) <= program.max_bytes, f"{len(program.data)} bytes")


def machine(program):
    name = pefile.MACHINE_TYPE.get(program.pe.FILE_HEADER.Machine)
    return require(name == "IMAGE_FILE_MACHINE_AMD64", f"built for {name}")


def subsystem(program):
    name = pefile.SUBSYSTEM_TYPE.get(program.pe.OPTIONAL_HEADER.Subsystem)
    return require(name == "IMAGE_SUBSYSTEM_WINDOWS_GUI", f"{name}")


def imports(program):
    return {entry.dll.decode("ascii", "replace").lower():
            [item.name or b"" for item in entry.imports] for entry in getattr(program.pe, "DIRECTORY_ENTRY_IMPORT", [])}


def load_time_libraries(program):
    found = set(imports(program))
    return require(found and found <= KNOWN_LIBRARIES, ", ".join(sorted(found)) or "none")


def wide_functions(program):
    # The C runtime has no A and W variants of its functions.
    ansi = [f"{name.decode()} of {library}" for library, names in imports(program).items()
            if library != "msvcrt.dll" for name in names if name.endswith(b"A")]
    return require(not ansi, "imported for ANSI: " + (", ".join(ansi) or "nothing"))


def linked_code(program):
    members = linked_members(program.link_map)
    require(members, "the link map lists no members")
    unexpected = [f"{library}({member})" for library, member in members
                  if library != OWN_LIBRARY and member not in LINKED_CODE.get(library, ())
                  and not (library in IMPORT_LIBRARIES and IMPORT_MEMBER.fullmatch(member))]
    require(not unexpected, "unexpected members: " + ", ".join(unexpected))
    return f"{len(members)} members of libraries, all expected"


def dll_characteristics(program):
    header = program.pe.OPTIONAL_HEADER
    wanted = ("DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT")
    missing = [name for name in wanted if not getattr(header, "IMAGE_DLLCHARACTERISTICS_" + name)]
    return require(not missing, f"{header.DllCharacteristics:#06x}, missing: {missing}")


def relocations(program):
    require(not program.pe.FILE_HEADER.IMAGE_FILE_RELOCS_STRIPPED, "marked as stripped")
    blocks = getattr(program.pe, "DIRECTORY_ENTRY_BASERELOC", [])
    count = sum(len(block.entries) for block in blocks)
    return require(count > 0, f"{count} entries")


def sections(program):
    both = [section.Name for section in program.pe.sections
            if section.IMAGE_SCN_MEM_WRITE and section.IMAGE_SCN_MEM_EXECUTE]
    return require(not both, f"writable and executable: {both}")


def code_section(pe):
    return next(section for section in pe.sections if section.IMAGE_SCN_MEM_EXECUTE)


def guarded_calls(code):
    """Positions of the near calls of the code that ends the process after a buffer overrun."""
    ends = {match.start() for match in re.finditer(re.escape(GUARD_FAILURE), code)}
    for match in re.finditer(NEAR_CALL, code[: 1 - NEAR_CALL_SIZE]):
        # The target is relative to the instruction after the call.
        distance = struct.unpack_from("<i", code, match.start() + 1)[0]
        if match.start() + NEAR_CALL_SIZE + distance in ends:
            yield match.start()


def stack_guard(program):
    count = len(list(guarded_calls(code_section(program.pe).get_data())))
    return require(count >= MIN_GUARDED_FUNCTIONS, f"{count} functions have one")


def stripped(program):
    header = program.pe.FILE_HEADER
    directory = pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_DEBUG"]
    debug = program.pe.OPTIONAL_HEADER.DATA_DIRECTORY[directory].Size
    found = (header.PointerToSymbolTable, header.NumberOfSymbols, debug)
    return require(not any(found), f"symbol table, symbols, debug directory: {found}")


def build_traces(program):
    # UTF-16, beginning at an even or odd offset, with one byte per unit; others match no pattern.
    texts = [program.data]
    for start in (0, 1):
        units = program.data[start : start + (len(program.data) - start) // 2 * 2]
        texts.append(bytes(0xFF if high else low for low, high in zip(units[::2], units[1::2])))
    return require(not (found := [name for text in texts for name in BUILD_TRACES.findall(text)]),
                   f"found: {found}")


def resources(program, kind):
    """(number, bytes) of all resources of that kind."""
    root = getattr(program.pe, "DIRECTORY_ENTRY_RESOURCE", None)
    return [(name.id, program.pe.get_data(language.data.struct.OffsetToData, language.data.struct.Size))
            for entry in (root.entries if root else ()) if entry.id == pefile.RESOURCE_TYPE[kind]
            for name in entry.directory.entries for language in name.directory.entries]


def icon(program):
    groups, images = resources(program, "RT_GROUP_ICON"), resources(program, "RT_ICON")
    require([number for number, _ in groups] == [ICON_ID] and len(images) == 1,
            f"groups {[number for number, _ in groups]}, {len(images)} images")
    (number, image), directory = images[0], groups[0][1]
    expected = struct.pack("<3H4B2HIH", 0, 1, 1, *ICON_SHAPE, len(image), number)
    require(directory == expected, f"the group is {directory.hex()}, expected {expected.hex()}")
    return require(image.startswith(PNG_START), f"a PNG of {len(image)} bytes: {image[:26].hex()}")


def manifest(program, path, *names):
    """The named attributes of each element at the path of the only manifest."""
    found = resources(program, "RT_MANIFEST")
    require([number for number, _ in found] == [1], f"{len(found)} manifests")
    elements = ElementTree.fromstring(found[0][1]).iterfind(path)
    return [tuple(map(element.get, names)) for element in elements]


def common_controls(program):
    path = f"{ASM_V1}dependency/{ASM_V1}dependentAssembly/{ASM_V1}assemblyIdentity"
    found = manifest(program, path, "name", "version", "publicKeyToken")
    return require(found == [("Microsoft.Windows.Common-Controls", "6.0.0.0", "6595b64144ccf1df")],
                   f"{found}")


def execution_level(program):
    path = "/".join(ASM_V3 + tag for tag in (
        "trustInfo", "security", "requestedPrivileges", "requestedExecutionLevel"))
    found = manifest(program, path, "level", "uiAccess")
    return require(found == [("asInvoker", "false")], f"{found}")


def supported_systems(program):
    path = f"{COMPATIBILITY}compatibility/{COMPATIBILITY}application/{COMPATIBILITY}supportedOS"
    found = manifest(program, path, "Id")
    return require((WINDOWS_10_AND_11,) in found, f"{found}")


def dpi_awareness(program):
    found = [path for path in (".//{*}dpiAware", ".//{*}dpiAwareness") if manifest(program, path)]
    return require(not found, f"declared: {found}")


def fixed_version(program):
    for info in getattr(program.pe, "VS_FIXEDFILEINFO", ()):
        words = (info.FileVersionMS, info.FileVersionLS,
                 info.ProductVersionMS, info.ProductVersionLS)
        parts = [part for word in words for part in (word >> 16, word & 0xFFFF)]
        return require(parts == [int(part) for part in program.version.split(".")] * 2, f"{parts}")
    raise Failed("none")


def version_texts(program):
    expected = {table: {**COMMON_TEXTS, "FileDescription": description,
                        "FileVersion": program.version, "ProductVersion": program.version}
                for table, description in DESCRIPTIONS.items()}
    blocks = [block for file in getattr(program.pe, "FileInfo", ()) for block in file]
    tables = {table.LangID.decode(): {key.decode(): text.decode() for key, text in table.entries.items()}
              for block in blocks for table in getattr(block, "StringTable", ())}
    require(tables == expected and list(tables) == list(expected), f"{tables}")
    # pefile keeps only the last pair. The list of pairs is the last thing in the resource.
    pairs = b"".join(struct.pack("<HH", int(table[:4], 16), int(table[4:], 16))
                     for table in DESCRIPTIONS)
    end = "Translation\0".encode("utf-16-le") + bytes(2) + pairs
    return require(resources(program, "RT_VERSION")[0][1].endswith(end), "texts; translations")


FACTS = (
    size, machine, subsystem, load_time_libraries, wide_functions, linked_code, dll_characteristics,
    relocations, sections, stack_guard, stripped, build_traces, icon, common_controls,
    execution_level, supported_systems, dpi_awareness, fixed_version, version_texts,
)


def run_checks(data, link_map, version, max_bytes):
    """Yields (fact, holds, detail) for each fact about the program file."""
    pe = pefile.PE(data=data, fast_load=True)
    # Skipping the rest, such as every function's unwind table, is much faster.
    pe.parse_data_directories([pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_" + name]
                               for name in ("IMPORT", "RESOURCE", "BASERELOC")])
    program = SimpleNamespace(pe=pe, data=data, link_map=link_map, version=version,
                              max_bytes=max_bytes)
    for fact in FACTS:
        name = fact.__name__.replace("_", " ")
        try:
            yield name, True, fact(program)
        except (Failed, ValueError, struct.error, ElementTree.ParseError) as error:
            yield name, False, str(error)


def main():
    parser = argparse.ArgumentParser(description="Checks properties of the finished program file.")
    parser.add_argument("path", type=Path)
    parser.add_argument("--map", type=Path, required=True, help="the linker's map of it")
    parser.add_argument("--version", required=True, help="the expected version")
    parser.add_argument("--max-bytes", type=int, required=True, help="the size limit")
    arguments = parser.parse_args()

    # A failure can quote characters that the terminal's encoding lacks.
    sys.stdout.reconfigure(errors="backslashreplace")
    failures = 0
    results = run_checks(arguments.path.read_bytes(), arguments.map.read_text("utf-8"),
                         arguments.version, arguments.max_bytes)
    for name, holds, detail in results:
        failures += not holds
        print(f"{'ok    ' if holds else 'FAILED'} {name}: {detail}")
    print(f"{len(FACTS) - failures} passed, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
