#!/usr/bin/python3
"""Makes the downloads from a finished program file: installer, portable archive, checksums, bill of
materials and package manager manifests. The same input gives the same bytes.

usage: package.py BUILD_FOLDER OUTPUT_FOLDER

Environment:
  SOURCE_DATE_EPOCH    release date in seconds; default: that of the last commit
  MORVANE_URL          download address, without a trailing slash
  MORVANE_SIGN_CERT, MORVANE_SIGN_KEY
                       certificate chain and key (PEM); without them nothing is signed
  MORVANE_SIGN_TIME_URL
                       time-stamping service; without one the signature carries the release date
"""

import datetime
import hashlib
import os
import pathlib
import re
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


def download_address():
    address = os.environ.get("MORVANE_URL")
    if not address:
        address = "https://morvane.example"
        print(f"package: no MORVANE_URL; the manifests name {address}", file=sys.stderr)
    return address


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def signing_environment(date):
    """The environment for the signing script; None without a certificate."""
    certificate = os.environ.get("MORVANE_SIGN_CERT")
    key = os.environ.get("MORVANE_SIGN_KEY")
    if not certificate and not key:
        return None
    if not certificate or not key:
        raise SystemExit("package: MORVANE_SIGN_CERT and MORVANE_SIGN_KEY belong together")
    return {**os.environ,
            "MORVANE_SIGN_CERT": os.path.abspath(certificate),
            "MORVANE_SIGN_KEY": os.path.abspath(key),
            "MORVANE_SIGN_EPOCH": str(int(date.timestamp()))}


def sign(signing, path):
    if signing:
        run(HERE / "sign.sh", path, env=signing)


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
    # CMake cannot leave out the archive's time stamps.
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
        "OUTPUT": installer,
    }
    if signing:
        definitions["SIGN"] = HERE / "sign.sh"
    run("makensis", "-V2", "-WX", "-INPUTCHARSET", "UTF8",
        *(f"-D{name}={value}" for name, value in definitions.items()), "morvane.nsi",
        cwd=HERE / "installer", env=signing)
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
    signing = signing_environment(date)
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
        "URL": download_address(),
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
