#!/usr/bin/python3
"""Packs what shows on a Windows machine without any tools whether the program works there: the
program, its tests and what runs them. The same build gives the same bytes.

usage: make_kit.py BUILD_FOLDER OUTPUT_FOLDER
"""

import hashlib
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path.insert(0, str(ROOT / "packaging"))

from package import read_version, release_date, write_archive
import templates

MAX_BYTES = 15_000_000
GOOGLETEST_LICENCE = pathlib.Path("/usr/share/doc/googletest/copyright")
PARTS = ("morvane_verify.exe", "morvane_unit_tests.exe", "morvane_cost_tests.exe",
         "morvane_desktop_tests.exe", "morvane_program_tests.exe", "morvane_fuzz.exe",
         "morvane_faulty.exe", "planted_library.dll", "window_actor.exe")


def windows_text(path, version):
    return templates.windows_text(templates.fill(path, {"VERSION": version}))


def content(build, version):
    """The kit's files by their names."""
    files = {name: windows_text(HERE / name, version)
             for name in ("README.txt", "sandbox.cmd", "verify.cmd")}
    files["LICENSE.txt"] = windows_text(ROOT / "LICENSE", version)
    files["tests/GoogleTest-LICENSE.txt"] = windows_text(GOOGLETEST_LICENCE, version)
    files["Morvane.exe"] = (build / "Morvane.exe").read_bytes()
    for part in PARTS:
        files[f"tests/{part}"] = (build / part).read_bytes()
    for document in (ROOT / "tests" / "fuzz" / "kept").glob("*.txt"):
        files[f"tests/kept/{document.name}"] = document.read_bytes()
    return files


def add_to_checksums(archive):
    """To those of the packages, if they are there."""
    checksums = archive.parent / "SHA256SUMS"
    if checksums.exists():
        lines = [line for line in checksums.read_text(encoding="ascii").splitlines()
                 if not line.endswith("-verify.zip")]
        lines.append(f"{hashlib.sha256(archive.read_bytes()).hexdigest()}  {archive.name}")
        checksums.write_text("\n".join(lines) + "\n", encoding="ascii")


def main(build, out):
    version = read_version(build)
    name = f"Morvane-{version}-verify"
    archive = out / f"{name}.zip"
    out.mkdir(parents=True, exist_ok=True)
    for older in out.glob("*-verify.zip"):
        older.unlink()
    write_archive(archive, release_date(), [
        (f"{name}/{file}", data) for file, data in content(build, version).items()])
    add_to_checksums(archive)
    size = archive.stat().st_size
    print(f"{archive}: {size} bytes")
    if size > MAX_BYTES:
        raise SystemExit(f"kit: more than {MAX_BYTES} bytes")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*map(pathlib.Path, sys.argv[1:]))
