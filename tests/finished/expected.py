"""What check_executable.py expects in the finished program file."""

# Windows always loads these from its own list of known libraries, never a planted file of that name
# in the program's folder.
KNOWN_LIBRARIES = {
    "kernel32.dll", "user32.dll", "gdi32.dll", "shell32.dll", "ole32.dll", "advapi32.dll",
    "msvcrt.dll",
}

# Imported by the C++ runtime's thread library; no text of the program reaches them.
ALLOWED_ANSI = {
    ("kernel32.dll", "CreateEventA"),
    ("kernel32.dll", "CreateSemaphoreA"),
    ("kernel32.dll", "OutputDebugStringA"),
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
