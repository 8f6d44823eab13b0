#!/usr/bin/python3
"""Makes what users download, from a finished program file: installer, portable archive, checksums,
bill of materials and the manifests of package managers. The same input gives the same bytes.

usage: package.py BUILD_FOLDER OUTPUT_FOLDER

Environment:
  SOURCE_DATE_EPOCH    the date of the release, seconds; else that of the last commit
  MORVANE_URL          where the files will be found, without a slash at the end
  MORVANE_SIGN_CERT, MORVANE_SIGN_KEY
                       certificate chain and key (PEM); without them nothing is signed
  MORVANE_SIGN_TIME_URL
                       time stamping service; without one the signature carries the release date
"""

import datetime
import hashlib
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

import bill_of_materials
from templates import fill, write_as_windows_text

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent


def run(*command, **options):
    subprocess.run([str(part) for part in command], check=True, stdin=subprocess.DEVNULL, **options)


def output_of(*command):
    return subprocess.run(command, check=True, cwd=ROOT, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, text=True).stdout.strip()


def read_version(build):
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.+)$", cache, re.MULTILINE)[1]


def release_date():
    epoch = os.environ.get("SOURCE_DATE_EPOCH") or output_of("git", "log", "-1", "--format=%ct")
    return datetime.datetime.fromtimestamp(int(epoch), datetime.timezone.utc)


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def signing_command(date):
    """What to put before the name of a file to sign it in place; None without a certificate."""
    certificate = os.environ.get("MORVANE_SIGN_CERT")
    key = os.environ.get("MORVANE_SIGN_KEY")
    if not certificate and not key:
        return None
    if not certificate or not key:
        raise SystemExit("package: MORVANE_SIGN_CERT and MORVANE_SIGN_KEY belong together")
    return [str(HERE / "sign.sh"), os.path.abspath(certificate), os.path.abspath(key),
            str(int(date.timestamp()))]


def sign(command, path):
    if command:
        run(*command, path)


def make_portable(stage, program, version, date, archive):
    folder = stage / f"Morvane-{version}"
    folder.mkdir()
    shutil.copy(program, folder / "Morvane.exe")
    write_as_windows_text(folder / "LICENSE.txt", (ROOT / "LICENSE").read_text(encoding="utf-8"))
    write_as_windows_text(folder / "README.txt",
                          fill(HERE / "portable" / "README.txt.in", {"VERSION": version}))
    files = sorted(folder.iterdir())
    for path in files:
        path.chmod(0o644)
    run("cmake", "-E", "tar", "cf", archive, "--format=zip",
        *(path.relative_to(stage) for path in files), cwd=stage)
    # The archive has times that CMake cannot be asked to leave out.
    run("strip-nondeterminism", "--type", "zip", "--timestamp", int(date.timestamp()), archive,
        env={**os.environ, "TZ": "UTC"})


def make_installer(stage, program, version, signing, installer):
    license_text = stage / "LICENSE.txt"
    write_as_windows_text(license_text, (ROOT / "LICENSE").read_text(encoding="utf-8"))
    definitions = {
        "VERSION": version,
        "PROGRAM": program,
        "LICENSE": license_text,
        "ICON": ROOT / "src" / "res" / "morvane.ico",
        "INSTALLED_KIB": (program.stat().st_size + license_text.stat().st_size) // 1024 + 1,
        "OUTPUT": installer,
    }
    if signing:
        definitions["SIGN_UNINSTALLER"] = shlex.join(signing)
    run("makensis", "-V2", "-WX", "-INPUTCHARSET", "UTF8",
        *(f"-D{name}={value}" for name, value in definitions.items()), "morvane.nsi",
        cwd=HERE / "installer")
    sign(signing, installer)


def make_manifests(out, values):
    for kind in ("winget", "scoop"):
        folder = out / kind
        folder.mkdir()
        for template in sorted((HERE / kind).glob("*.in")):
            (folder / template.stem).write_text(fill(template, values), encoding="utf-8")


def package(build, out, stage):
    version = read_version(build)
    date = release_date()
    signing = signing_command(date)
    if out.exists():
        shutil.rmtree(out)
    out.mkdir(parents=True)

    program = stage / "Morvane.exe"
    shutil.copy(build / "Morvane.exe", program)
    sign(signing, program)
    archive = out / f"Morvane-{version}-portable.zip"
    installer = out / f"Morvane-{version}-setup.exe"
    materials = out / f"Morvane-{version}.cdx.json"
    make_portable(stage, program, version, date, archive)
    make_installer(stage, program, version, signing, installer)
    materials.write_text(bill_of_materials.text(version, date, sha256(program)), encoding="utf-8")

    files = [archive, installer, materials]
    (out / "SHA256SUMS").write_text("".join(f"{sha256(path)}  {path.name}\n" for path in files),
                                    encoding="ascii")
    make_manifests(out, {
        "VERSION": version,
        "DATE": f"{date:%Y-%m-%d}",
        "URL": os.environ.get("MORVANE_URL", "https://morvane.example"),
        "INSTALLER": installer.name,
        "INSTALLER_SHA256": sha256(installer).upper(),
        "PORTABLE": archive.name,
        "PORTABLE_SHA256": sha256(archive),
    })
    for path in files:
        print(f"{path}: {path.stat().st_size} bytes")
    print("signed" if signing else "not signed")


def main(build, out):
    with tempfile.TemporaryDirectory(prefix="morvane-package-") as stage:
        package(pathlib.Path(build).resolve(), pathlib.Path(out).resolve(), pathlib.Path(stage))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
