#!/usr/bin/python3
"""Makes the downloads from a finished program file: installer, portable archive, checksums, bill of
materials and package manager manifests. The same input gives the same bytes.

usage: package.py BUILD_FOLDER OUTPUT_FOLDER

Environment:
  SOURCE_DATE_EPOCH    release date in seconds; default: that of the last commit
  MORVANE_HOMEPAGE     the repository's address, without a trailing slash
  MORVANE_DOWNLOAD     where the files are downloaded, without a trailing slash; without it no
                       manifests are made
  MORVANE_SIGN_CERT, MORVANE_SIGN_KEY
                       certificate chain and key (PEM); without them nothing is signed
  MORVANE_SIGN_TIME_URL
                       time-stamping service; without one the signature carries the release date
"""

import datetime
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

import bill_of_materials
from templates import fill, windows_text

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent


def run(*command, **options):
    command = [str(part) for part in command]
    done = subprocess.run(command, check=False, stdin=subprocess.DEVNULL, **options)
    if done.returncode != 0:
        raise SystemExit(f"package: {command[0]} failed")


def read_version(build):
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.+)$", cache, re.MULTILINE)[1]


def release_date():
    epoch = os.environ.get("SOURCE_DATE_EPOCH", "")
    # Only this project's own commits count, not those of a repository around its folder.
    if not epoch and (ROOT / ".git").exists() and shutil.which("git"):
        epoch = subprocess.run(["git", "log", "-1", "--format=%ct"], cwd=ROOT, check=False,
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               text=True).stdout.strip()
    if not epoch.isdigit():
        raise SystemExit("package: SOURCE_DATE_EPOCH must give the release date in seconds, as "
                         "there is no commit that would")
    return datetime.datetime.fromtimestamp(int(epoch), datetime.timezone.utc)


def addresses():
    """Homepage and download address; each may be missing."""
    homepage = os.environ.get("MORVANE_HOMEPAGE")
    download = os.environ.get("MORVANE_DOWNLOAD")
    if download and not homepage:
        raise SystemExit("package: the manifests need MORVANE_HOMEPAGE, too")
    return homepage, download


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


def write_archive(archive, date, files):
    """Files are pairs of name and content. The same ones give the same bytes."""
    with zipfile.ZipFile(archive, "w") as out:
        for name, data in sorted(files):
            entry = zipfile.ZipInfo(name, date.timetuple()[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            out.writestr(entry, data, compresslevel=9)


def make_portable(program, version, date, archive):
    folder = f"Morvane-{version}"
    read_me = fill(HERE / "portable" / "README.txt.in", {"VERSION": version})
    write_archive(archive, date, [
        (f"{folder}/Morvane.exe", program.read_bytes()),
        (f"{folder}/LICENSE.txt", windows_text((ROOT / "LICENSE").read_text(encoding="utf-8"))),
        (f"{folder}/README.txt", windows_text(read_me)),
    ])


def make_installer(stage, program, version, signing, installer, homepage=None):
    license_text = stage / "LICENSE.txt"
    license_text.write_bytes(windows_text((ROOT / "LICENSE").read_text(encoding="utf-8")))
    definitions = {
        "VERSION": version,
        "PROGRAM": program,
        "LICENSE": license_text,
        "ICON": ROOT / "src" / "res" / "morvane.ico",
        "OUTPUT": installer,
    }
    if homepage:
        definitions["HOMEPAGE"] = homepage
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
    descriptions = json.loads((HERE / "winget" / "descriptions.json").read_text(encoding="utf-8"))
    for locale, (short, long) in descriptions.items():
        text = fill(HERE / "winget" / "locale.yaml.template",
                    {**values, "LOCALE": locale, "SHORT": short, "LONG": long})
        (out / "winget" / f"Morvane.Morvane.locale.{locale}.yaml").write_text(text,
                                                                             encoding="utf-8")


def package(build, out, stage):
    version = read_version(build)
    date = release_date()
    signing = signing_environment(date)
    homepage, download = addresses()
    if out.exists():
        shutil.rmtree(out)
    out.mkdir(parents=True)

    program = stage / "Morvane.exe"
    shutil.copy(build / "Morvane.exe", program)
    sign(signing, program)
    archive = out / f"Morvane-{version}-portable.zip"
    installer = out / f"Morvane-{version}-setup.exe"
    materials = out / f"Morvane-{version}.cdx.json"
    make_portable(program, version, date, archive)
    make_installer(stage, program, version, signing, installer, homepage)
    link_map = (build / "Morvane.map").read_text(encoding="utf-8")
    materials.write_text(bill_of_materials.text(version, date, sha256(program), link_map),
                         encoding="utf-8")

    files = [archive, installer, materials]
    (out / "SHA256SUMS").write_text("".join(f"{sha256(path)}  {path.name}\n" for path in files),
                                    encoding="ascii")
    if download:
        make_manifests(out, {
            "VERSION": version,
            "DATE": f"{date:%Y-%m-%d}",
            "HOMEPAGE": homepage,
            "DOWNLOAD": download,
            "DOWNLOAD_OF_ANY_VERSION": download.replace(version, "$version"),
            "INSTALLER": installer.name,
            "INSTALLER_SHA256": sha256(installer).upper(),
            "PORTABLE": archive.name,
            "PORTABLE_SHA256": sha256(archive),
        })
    else:
        print("package: no MORVANE_DOWNLOAD, so no manifests", file=sys.stderr)
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
