"""What check_executable.py expects in the finished program file."""

# Windows always loads these from its own list of known libraries, never a planted file of that name
# in the program's folder.
KNOWN_LIBRARIES = {
    "kernel32.dll", "user32.dll", "gdi32.dll", "shell32.dll", "ole32.dll", "advapi32.dll",
    "msvcrt.dll",
}

# What the linker may take from these libraries, under GCC 12 and GCC 14. Another member is code that
# nobody asked for: the unwinder for exceptions, say, comes with a single string function.
LINKED_CODE = {
    "libstdc++.a": {"hashtable_c++0x.o"},
    "libgcc.a": {"_chkstk_ms.o", "_ctors.o"},
    "libmingwex.a": {"mingw_matherr.o"},
    "libmingw32.a": {
        "CRT_fp10.o", "_newmode.o", "cinitexe.o", "crt0_w.o", "crt_handler.o", "gccmain.o", "merr.o",
        "mingw_helpers.o", "natstart.o", "pesect.o", "pseudo-reloc-list.o", "pseudo-reloc.o",
        "tlsmcrt.o", "tlssup.o", "tlsthrd.o", "ucrtexewin.o", "udllargc.o", "usermatherr.o",
        "wildcard.o", "xncommod.o", "xtxtmode.o",
    },
    "libmsvcrt.a": {
        "__p__commode.o", "__p__fmode.o", "__p__wcmdln.o", "acrt_iob_func.o",
        "invalid_parameter_handler.o",
    },
    "libuuid.a": {"dxva-uuid.o", "uuid.o"},
}

# Libraries whose members are references to functions of a DLL, or such a library's head and tail.
IMPORT_LIBRARIES = {
    "libadvapi32.a", "libgdi32.a", "libkernel32.a", "libmsvcrt.a", "libole32.a", "libshell32.a",
    "libuser32.a",
}

SUPPORTED_SYSTEMS = {
    "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}": "Windows 10 and 11",
}

COMMON_TEXTS = {
    "CompanyName": "the Morvane authors",
    "InternalName": "Morvane",
    "LegalCopyright": "Copyright © 2026 the Morvane authors",
    "OriginalFilename": "Morvane.exe",
    "ProductName": "Morvane",
}
DESCRIPTIONS = {
    "040904b0": "Keep selected windows always on top",
    "041104b0": "選んだウィンドウを、ほかより手前に固定",
}
