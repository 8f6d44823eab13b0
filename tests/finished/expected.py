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
    "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}": "Windows 7",
    "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}": "Windows 8",
    "{1f676c76-80e1-4239-95bb-83d0f6d0da78}": "Windows 8.1",
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
