"""What the finished program file is compared with."""

# Windows maps these from its own list of known libraries, so a planted file of the same name in
# the program's folder is never loaded in their place.
KNOWN_LIBRARIES = {
    "kernel32.dll", "user32.dll", "gdi32.dll", "shell32.dll", "ole32.dll", "advapi32.dll",
    "msvcrt.dll",
}

# The thread library under the C++ runtime imports these; no text of the program reaches them.
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
