"""Facts about the finished program file that running the program does not show."""

import re
import struct
from operator import attrgetter
from pathlib import Path
from types import SimpleNamespace
from typing import NamedTuple
from xml.etree import ElementTree

import pefile

HEADERS = {
    "FILE_HEADER.Machine": pefile.MACHINE_TYPE["IMAGE_FILE_MACHINE_AMD64"],
    "FILE_HEADER.IMAGE_FILE_RELOCS_STRIPPED": False,
    "FILE_HEADER.PointerToSymbolTable": 0,
    "FILE_HEADER.NumberOfSymbols": 0,
    "OPTIONAL_HEADER.Subsystem": pefile.SUBSYSTEM_TYPE["IMAGE_SUBSYSTEM_WINDOWS_GUI"],
    "OPTIONAL_HEADER.IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE": True,
    "OPTIONAL_HEADER.IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA": True,
    "OPTIONAL_HEADER.IMAGE_DLLCHARACTERISTICS_NX_COMPAT": True,
}

# Windows always loads these from its own list of known libraries, never a planted file of that name
# in the program's folder.
KNOWN_LIBRARIES = {
    name + ".dll" for name in "kernel32 user32 gdi32 shell32 ole32 advapi32 msvcrt".split()}

# What the linker may take from these libraries, under GCC 12 and GCC 14. Another member is code
# that nobody asked for: the unwinder for exceptions, say, comes with a single string function.
LINKED_CODE = {
    "libstdc++.a": "hashtable_c++0x",
    "libgcc.a": "_chkstk_ms _ctors",
    "libmingwex.a": "mingw_matherr",
    "libmingw32.a": "CRT_fp10 _newmode cinitexe crt0_w crt_handler gccmain merr mingw_helpers"
                    " natstart pesect pseudo-reloc-list pseudo-reloc tlsmcrt tlssup tlsthrd"
                    " ucrtexewin udllargc usermatherr wildcard xncommod xtxtmode",
    "libmsvcrt.a": "__p__commode __p__fmode __p__wcmdln acrt_iob_func invalid_parameter_handler",
    "libuuid.a": "dxva-uuid uuid",
}
# The program's own code; its members are its sources.
OWN_LIBRARY = "libmorvane_core.a"
# Members of these are references to functions of a DLL, or such a library's head and tail.
IMPORT_LIBRARIES = {"lib" + name.replace(".dll", ".a") for name in KNOWN_LIBRARIES}
IMPORT_MEMBER = re.compile(r"lib\w+(?:h|t|s\d+)\.o")
# A library and its member at the beginning of a line of the linker's map.
MEMBER = re.compile(r"^(?:.*/)?(lib\S+\.a)\((?:lib64_\w+_a-)?([^()\s]+)\)(?:\s|$)", re.MULTILINE)

# Paths and source names of the build machine. A name has at least two characters, so that random
# bytes of the code are not mistaken for one; the project may be built outside a home folder.
PROJECT_FOLDER = f"/{Path(__file__).resolve().parts[1]}/"
BUILD_TRACES = re.compile("|".join((
    "/home", "/root", "/tmp", re.escape(PROJECT_FOLDER),
    r"\.cpp", r"[A-Za-z0-9_]{2,}\.(?:c|cc|h|hpp|pdb)(?![A-Za-z0-9_])",
    r"(?<![A-Za-z0-9_])[A-Za-z]:[\\/][A-Za-z0-9_.]{2,}")))

# mov ecx, 2; int 29h: ends the process at once because a stack guard was changed.
GUARD_FAILURE = b"\xb9\x02\x00\x00\x00\xcd\x29"
NEAR_CALL = b"\xe8"
NEAR_CALL_SIZE = 5
# The program has about a hundred; without the compiler's option there are none.
MIN_GUARDED_FUNCTIONS = 90

# One 16x16 image at 32 bits, stored as a PNG with transparency.
ICON_ID = 101
ICON_GROUP = struct.pack("<3H4B2H", 0, 1, 1, 16, 16, 0, 0, 1, 32)
PNG_START = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + struct.pack(">IIBB", 16, 16, 8, 6)

MANIFEST_ID = 1
NAMESPACES = {"asm": "urn:schemas-microsoft-com:asm.v1", "asm3": "urn:schemas-microsoft-com:asm.v3",
              "systems": "urn:schemas-microsoft-com:compatibility.v1"}
# The attributes of the elements at each of these places, which are all there may be.
MANIFEST = {
    "asm:dependency/asm:dependentAssembly/asm:assemblyIdentity": [{
        "type": "win32", "name": "Microsoft.Windows.Common-Controls", "version": "6.0.0.0",
        "processorArchitecture": "*", "publicKeyToken": "6595b64144ccf1df", "language": "*"}],
    "asm3:trustInfo/asm3:security/asm3:requestedPrivileges/asm3:requestedExecutionLevel": [
        {"level": "asInvoker", "uiAccess": "false"}],
    # Windows 10 and 11.
    "systems:compatibility/systems:application/systems:supportedOS": [
        {"Id": "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}],
    ".//{*}dpiAware": [],
    ".//{*}dpiAwareness": [],
}

# By language and code page. The order matters: the program shows the version of the first one.
SENTENCES = {
    "040904b0": "Keep selected windows always on top",
    "041104b0": "選んだウィンドウを、ほかより手前に固定",
}
COMMON_TEXTS = {
    "CompanyName": "the Morvane authors",
    # Shown as the program's name by Task Manager and in the list of startup apps.
    "FileDescription": "Morvane",
    "InternalName": "Morvane",
    "LegalCopyright": "Copyright © 2026 the Morvane authors",
    "OriginalFilename": "Morvane.exe",
    "ProductName": "Morvane",
}


class Subject(NamedTuple):
    """A program file and what is known about it."""

    data: bytes
    link_map: str
    version: str
    max_bytes: int


def differs(found, expected):
    return None if found == expected else f"{found}, expected {expected}"


def directory(name):
    """How to find that data directory."""
    number = pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_" + name]
    return lambda pe: pe.OPTIONAL_HEADER.DATA_DIRECTORY[number]


def imports(program):
    return {entry.dll.decode().lower(): [item.name or b"" for item in entry.imports]
            for entry in program.pe.DIRECTORY_ENTRY_IMPORT}


def linked_code(program):
    members = MEMBER.findall(program.link_map.partition("\nDiscarded input sections\n")[0])
    if not members:
        return "the link map lists no members"
    return [f"{library}({member})" for library, member in members
            if library != OWN_LIBRARY
            and member.removesuffix(".o") not in LINKED_CODE.get(library, "").split()
            and not (library in IMPORT_LIBRARIES and IMPORT_MEMBER.fullmatch(member))]


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


def guarded_functions(pe):
    return len(list(guarded_calls(code_section(pe).get_data())))


def stack_guard(program):
    count = guarded_functions(program.pe)
    return None if count >= MIN_GUARDED_FUNCTIONS else f"only {count} functions have one"


def build_traces(program):
    # UTF-16 may begin at an even or an odd place.
    texts = (program.data.decode("latin-1"), program.data.decode("utf-16-le", "replace"),
             program.data[1:].decode("utf-16-le", "replace"))
    return [trace for text in texts for trace in BUILD_TRACES.findall(text)]


def resources(program, kind):
    """(number, bytes) of all resources of that kind."""
    return [(name.id, program.pe.get_data(place.OffsetToData, place.Size))
            for entry in program.pe.DIRECTORY_ENTRY_RESOURCE.entries
            if entry.id == pefile.RESOURCE_TYPE[kind]
            for name in entry.directory.entries
            for place in (language.data.struct for language in name.directory.entries)]


def icon(program):
    [(group, directory)] = resources(program, "RT_GROUP_ICON")
    [(number, image)] = resources(program, "RT_ICON")
    return differs((group, directory, image[: len(PNG_START)]),
                   (ICON_ID, ICON_GROUP + struct.pack("<IH", len(image), number), PNG_START))


def manifest(program):
    [(number, text)] = resources(program, "RT_MANIFEST")
    root = ElementTree.fromstring(text)
    found = {path: [element.attrib for element in root.iterfind(path, NAMESPACES)]
             for path in MANIFEST}
    return differs((number, found), (MANIFEST_ID, MANIFEST))


def fixed_version(program):
    [info] = program.pe.VS_FIXEDFILEINFO
    words = (info.FileVersionMS, info.FileVersionLS, info.ProductVersionMS, info.ProductVersionLS)
    return differs([part for word in words for part in (word >> 16, word & 0xFFFF)],
                   [int(part) for part in program.version.split(".")] * 2)


def version_texts(program):
    versions = dict.fromkeys(("FileVersion", "ProductVersion"), program.version)
    expected = [(name, {**COMMON_TEXTS, **versions, "Comments": sentence})
                for name, sentence in SENTENCES.items()]
    found = [(table.LangID.decode(),
              {key.decode(): text.decode() for key, text in table.entries.items()})
             for block in program.pe.FileInfo[0] for table in getattr(block, "StringTable", ())]
    # pefile keeps only the last pair. The list of pairs is the last thing in the resource.
    pairs = [struct.pack("<HH", int(name[:4], 16), int(name[4:], 16)) for name in SENTENCES]
    end = "Translation\0".encode("utf-16-le") + bytes(2) + b"".join(pairs)
    [(_, data)] = resources(program, "RT_VERSION")
    return differs((found, data[-len(end) :]), (expected, end))


# Each tells what is wrong; what is empty means that the fact holds.
FACTS = {
    "size": lambda program: max(0, len(program.data) - program.max_bytes),
    "headers": lambda program: differs(
        {path: attrgetter(path)(program.pe) for path in HEADERS}, HEADERS),
    "debug directory": lambda program: directory("DEBUG")(program.pe).Size,
    "load time libraries": lambda program: set(imports(program)) - KNOWN_LIBRARIES,
    # The C runtime has no A and W variants of its functions.
    "wide functions": lambda program: [
        (library, name) for library, names in imports(program).items()
        if library != "msvcrt.dll" for name in names if name.endswith(b"A")],
    "linked code": linked_code,
    "relocations": lambda program: not any(
        block.entries for block in program.pe.DIRECTORY_ENTRY_BASERELOC),
    "sections": lambda program: [
        section.Name for section in program.pe.sections
        if section.IMAGE_SCN_MEM_WRITE and section.IMAGE_SCN_MEM_EXECUTE],
    "stack guard": stack_guard,
    "build traces": build_traces,
    "icon": icon,
    "manifest": manifest,
    "fixed version": fixed_version,
    "version texts": version_texts,
}


def parsed(data):
    pe = pefile.PE(data=data, fast_load=True)
    # Skipping the rest, such as every function's unwind table, is much faster.
    pe.parse_data_directories([pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_" + name]
                               for name in ("IMPORT", "RESOURCE", "BASERELOC")])
    return pe


def failing(subject):
    """What is wrong, by the name of the fact."""
    program = SimpleNamespace(pe=parsed(subject.data), **subject._asdict())
    wrong = {}
    for name, fact in FACTS.items():
        try:
            found = fact(program)
        except Exception as error:  # what cannot be read does not hold
            found = repr(error)
        if found:
            wrong[name] = found
    return wrong
