#!/usr/bin/python3
"""Tests of the files that users download.

usage: files_test.py BUILD_FOLDER PACKAGE_FOLDER [UNITTEST-ARGUMENT...]
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

import pefile
import yaml

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "packaging"))

import package  # noqa: E402
import bill_of_materials  # noqa: E402
import suite
from installation import digest
from signing import TimeStampService, is_signed, make_certificate

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PACKAGE = pathlib.Path(sys.argv.pop(1)).resolve()
VERSION = package.read_version(BUILD)
# Those that the tests' packages are made with.
HOMEPAGE = os.environ["MORVANE_HOMEPAGE"]
DOWNLOAD = os.environ["MORVANE_DOWNLOAD"]
LOCALES = ("de-DE", "es-ES", "fr-FR", "ja-JP", "ko-KR", "pt-BR", "ru-RU", "zh-CN", "zh-TW")
LANGUAGES = ("English", "Japanese", "SimpChinese", "TradChinese", "Korean", "Spanish", "French",
             "German", "PortugueseBR", "Russian")


def make_package(out, script=ROOT / "packaging" / "package.py", **environment):
    """The exit code, and what was said about a failure. None removes a variable."""
    settings = {**without("MORVANE_SIGN_"), **environment}
    done = subprocess.run(
        [str(script), str(BUILD), str(out)], check=False, stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
        env={name: value for name, value in settings.items() if value is not None})
    return done.returncode, done.stderr


def without(*prefixes):
    """The environment without the variables that begin so."""
    return {name: value for name, value in os.environ.items() if not name.startswith(prefixes)}


def names_and_digests(folder):
    return {str(path.relative_to(folder)): digest(path)
            for path in sorted(folder.rglob("*")) if path.is_file()}


class DownloadsTest(suite.Test):
    def test_every_file_is_present(self):
        self.assertEqual(sorted(names_and_digests(PACKAGE)), sorted([
            f"Morvane-{VERSION}-portable.zip",
            f"Morvane-{VERSION}-setup.exe",
            f"Morvane-{VERSION}.cdx.json",
            "SHA256SUMS",
            "scoop/morvane.json",
            "winget/Morvane.Morvane.installer.yaml",
            "winget/Morvane.Morvane.locale.en-US.yaml",
            "winget/Morvane.Morvane.yaml",
            *(f"winget/Morvane.Morvane.locale.{locale}.yaml" for locale in LOCALES),
        ]))

    def test_checksums_match_the_files(self):
        subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=PACKAGE,
                       check=True)
        listed = [line.split()[1] for line in (PACKAGE / "SHA256SUMS").read_text().splitlines()]
        self.assertEqual(listed, [f"Morvane-{VERSION}-portable.zip", f"Morvane-{VERSION}-setup.exe",
                                  f"Morvane-{VERSION}.cdx.json"])

    def test_archive_holds_the_program_licence_and_readme(self):
        with zipfile.ZipFile(PACKAGE / f"Morvane-{VERSION}-portable.zip") as archive:
            folder = f"Morvane-{VERSION}/"
            self.assertEqual(sorted(archive.namelist()),
                             [folder + "LICENSE.txt", folder + "Morvane.exe",
                              folder + "README.txt"])
            self.assertEqual(archive.read(folder + "Morvane.exe"),
                             (BUILD / "Morvane.exe").read_bytes())
            read_me = archive.read(folder + "README.txt").decode()
            self.assertIn(VERSION, read_me)
            self.assertNotIn("@", read_me)
            for name in ("LICENSE.txt", "README.txt"):
                text = archive.read(folder + name)
                self.assertEqual(text.count(b"\n"), text.count(b"\r\n"), name)

    def test_installer_has_every_language_of_the_program(self):
        texts = (ROOT / "packaging" / "installer" / "texts.nsh").read_text(encoding="utf-8")
        names = set(re.findall(r"^LangString (\w+)", texts, re.MULTILINE))
        self.assertGreaterEqual(len(names), 7)
        for language in LANGUAGES:
            own = set(re.findall(rf"^LangString (\w+) \${{LANG_{language.upper()}}} \"[^\"]+\"$",
                                 texts, re.MULTILINE))
            self.assertEqual(own, names, language)

    def test_installer_shares_two_texts_with_the_program(self):
        texts = (ROOT / "packaging" / "installer" / "texts.nsh").read_text(encoding="utf-8")
        table = (ROOT / "src" / "i18n" / "string_table.cpp").read_text(encoding="utf-8")
        for name, row in (("START_WITH_WINDOWS", "StrStartWithWindows"),
                          ("STARTUP_FAILED", "StrStartupFailed")):
            columns = re.search(rf"// {row}\n((?:\s+L\".*\",\n){{10}})", table)[1]
            self.assertEqual(re.findall(rf"^LangString {name} \S+ \"(.*)\"$", texts, re.MULTILINE),
                             re.findall(r'L"(.*)",', columns))


class ManifestTest(suite.Test):
    def load(self, name):
        with (PACKAGE / "winget" / name).open(encoding="utf-8") as file:
            # Keeps versions and dates as text.
            return yaml.load(file, yaml.BaseLoader)

    def assert_has(self, manifest, *fields):
        for field in fields:
            self.assertTrue(manifest.get(field), field)

    def test_every_manifest_names_package_version_and_schema(self):
        for name, kind in (("Morvane.Morvane.yaml", "version"),
                           ("Morvane.Morvane.installer.yaml", "installer"),
                           ("Morvane.Morvane.locale.en-US.yaml", "defaultLocale")):
            manifest = self.load(name)
            self.assertEqual(manifest["PackageIdentifier"], "Morvane.Morvane", name)
            self.assertEqual(manifest["PackageVersion"], VERSION, name)
            self.assertEqual(manifest["ManifestType"], kind)
            self.assertEqual(manifest["ManifestVersion"], "1.10.0", name)

    def test_version_manifest_names_the_locale_of_the_locale_manifest(self):
        self.assertEqual(self.load("Morvane.Morvane.yaml")["DefaultLocale"],
                         self.load("Morvane.Morvane.locale.en-US.yaml")["PackageLocale"])

    def test_locale_manifests_have_the_required_fields(self):
        texts = set()
        for locale in ("en-US", *LOCALES):
            manifest = self.load(f"Morvane.Morvane.locale.{locale}.yaml")
            self.assertEqual(manifest["PackageLocale"], locale)
            self.assertEqual(manifest["ManifestType"],
                             "defaultLocale" if locale == "en-US" else "locale")
            self.assert_has(manifest, "ShortDescription", "Description")
            self.assertLessEqual(len(manifest["ShortDescription"]), 256)
            texts |= {manifest["ShortDescription"], manifest["Description"]}
        self.assertEqual(len(texts), 2 * (1 + len(LOCALES)), "each in its own language")
        manifest = self.load("Morvane.Morvane.locale.en-US.yaml")
        self.assert_has(manifest, "Publisher", "PackageName", "License")
        self.assertEqual([manifest[name] for name in ("PackageUrl", "PublisherSupportUrl",
                                                      "LicenseUrl")],
                         [HOMEPAGE, HOMEPAGE + "/issues", HOMEPAGE + "/blob/HEAD/LICENSE"])

    def test_installer_manifest_describes_the_installer(self):
        manifest = self.load("Morvane.Morvane.installer.yaml")
        self.assertEqual(manifest["InstallerType"], "nullsoft")
        self.assertEqual(manifest["Scope"], "user")
        self.assertEqual(manifest["ProductCode"], "Morvane")
        installer, = manifest["Installers"]
        self.assertEqual(installer["Architecture"], "x64")
        name = f"Morvane-{VERSION}-setup.exe"
        self.assertEqual(installer["InstallerUrl"], f"{DOWNLOAD}/{name}")
        self.assertEqual(installer["InstallerSha256"], digest(PACKAGE / name).upper())
        self.assertEqual(manifest["InstallerSuccessCodes"], ["5"])
        responses = {int(entry["InstallerReturnCode"]): entry["ReturnResponse"]
                     for entry in manifest["ExpectedReturnCodes"]}
        self.assertEqual(responses, {1: "cancelledByUser", 3: "packageInUse", 4: "fileInUse",
                                     7: "systemNotSupported", 8: "systemNotSupported"})
        script = (ROOT / "packaging" / "installer" / "morvane.nsi").read_text(encoding="utf-8")
        own = {int(code) for name, code in re.findall(r"(?m)^!define EXIT_(\w+) (\d)$", script)
               if name != "DATA_KEPT"}  # of the uninstaller
        self.assertEqual({5, *responses}, {1} | own)  # 1: cancelled, says the stub

    def test_scoop_manifest_describes_the_archive(self):
        manifest = json.loads((PACKAGE / "scoop" / "morvane.json").read_text(encoding="utf-8"))
        self.assert_has(manifest, "version", "description", "homepage", "license", "architecture",
                        "shortcuts")
        self.assertEqual(manifest["version"], VERSION)
        archive = manifest["architecture"]["64bit"]
        name = f"Morvane-{VERSION}-portable.zip"
        self.assertEqual(archive["url"], f"{DOWNLOAD}/{name}")
        self.assertEqual(manifest["homepage"], HOMEPAGE)
        update = manifest["autoupdate"]["architecture"]["64bit"]
        for field in ("url", "extract_dir"):
            self.assertIn("$version", update[field])
            self.assertEqual(update[field].replace("$version", VERSION), archive[field])
        self.assertEqual(archive["hash"], digest(PACKAGE / name))
        with zipfile.ZipFile(PACKAGE / name) as files:
            for program, _ in manifest["shortcuts"]:
                self.assertIn(f"{archive['extract_dir']}/{program}", files.namelist())


    def test_manifests_are_made_only_with_both_addresses(self):
        with tempfile.TemporaryDirectory() as folder:
            out = pathlib.Path(folder) / "dist"
            code, said = make_package(out, MORVANE_HOMEPAGE=None, MORVANE_DOWNLOAD=None)
            self.assertEqual(code, 0)
            self.assertIn("no MORVANE_DOWNLOAD", said)
            self.assertFalse([path for path in out.iterdir() if path.is_dir()])
            code, said = make_package(out, MORVANE_HOMEPAGE=None)
            self.assertEqual(code, 1)
            self.assertIn("need MORVANE_HOMEPAGE", said)


class BillOfMaterialsTest(suite.Test):
    # The others are those of Windows and of the C library.
    NAMES = {"libstdc++.a": "libstdc++", "libgcc.a": "libgcc"}

    def test_it_names_the_program_and_the_libraries_linked_into_it(self):
        document = json.loads((PACKAGE / f"Morvane-{VERSION}.cdx.json").read_text(encoding="utf-8"))
        self.assertEqual(document["bomFormat"], "CycloneDX")
        self.assertRegex(document["serialNumber"], r"^urn:uuid:[0-9a-f-]{36}$")
        program = document["metadata"]["component"]
        self.assertEqual((program["name"], program["version"]), ("Morvane", VERSION))
        self.assertEqual(program["hashes"],
                         [{"alg": "SHA-256", "content": digest(BUILD / "Morvane.exe")}])
        link_map = (BUILD / "Morvane.map").read_text(encoding="utf-8")
        archives = set(re.findall(r"(?m)^/.*/(lib\S+\.a)\(", link_map.partition("Discarded")[0]))
        self.assertGreater(len(archives), 3)
        self.assertNotIn("libwinpthread.a", archives, "which has a licence of its own")
        self.assertEqual({part["name"] for part in document["components"]},
                         {self.NAMES.get(name, "mingw-w64 runtime") for name in archives})
        for part in document["components"]:
            for field in ("name", "version", "licenses", "purl"):
                self.assertTrue(part.get(field), f"{part}: {field}")
        edges, = document["dependencies"]
        self.assertEqual(edges["dependsOn"], [part["bom-ref"] for part in document["components"]])

    def test_it_follows_the_map(self):
        link_map = (BUILD / "Morvane.map").read_text(encoding="utf-8")
        libgcc = re.search(r"(?m)^/.*/libgcc\.a\(.*$", link_map)[0]
        self.assertEqual(bill_of_materials.linked_packages(libgcc), ["gcc-mingw-w64-x86-64-posix"])
        with self.assertRaises(SystemExit):
            bill_of_materials.linked_packages(f"{libgcc}\n/usr/lib/of-nobody.a(member.o)\n")


class ReleaseDateTest(suite.Test):
    def test_without_commits_it_has_to_be_given(self):
        with tempfile.TemporaryDirectory() as folder:
            copy = pathlib.Path(folder) / "packaging"
            shutil.copytree(ROOT / "packaging", copy)
            code, said = make_package(folder, copy / "package.py", SOURCE_DATE_EPOCH=None)
        self.assertEqual(code, 1)
        self.assertIn("SOURCE_DATE_EPOCH", said)
        self.assertNotIn("Traceback", said)


class SigningTest(suite.Test):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.certificate, self.key = make_certificate(self.folder)
        self.out = self.folder / "dist"

    def make_signed_package(self, **environment):
        return make_package(self.out, MORVANE_SIGN_CERT=str(self.certificate),
                            MORVANE_SIGN_KEY=str(self.key), **environment)

    def test_installer_and_program_are_signed_with_the_certificate(self):
        code, said = self.make_signed_package(
            SOURCE_DATE_EPOCH=f"{int(self.certificate.stat().st_mtime)}")
        self.assertEqual(code, 0, said)
        installer, = self.out.glob("*-setup.exe")
        self.assertTrue(is_signed(installer, self.certificate))
        with zipfile.ZipFile(next(self.out.glob("*.zip"))) as archive:
            program = pathlib.Path(archive.extract(f"Morvane-{VERSION}/Morvane.exe", self.folder))
        self.assertTrue(is_signed(program, self.certificate))

        spoiled = bytearray(installer.read_bytes())
        spoiled[len(spoiled) // 2] ^= 1
        installer.write_bytes(spoiled)
        self.assertFalse(is_signed(installer, self.certificate))

    def test_signature_has_the_time_stamp_of_the_service(self):
        with TimeStampService(self.folder) as service:
            code, said = self.make_signed_package(MORVANE_SIGN_TIME_URL=service.address)
        self.assertEqual(code, 0, said)
        installer, = self.out.glob("*-setup.exe")
        self.assertTrue(is_signed(installer, self.certificate, service.certificate))
        # A file without the stamp would be taken for one with it.
        code, said = self.make_signed_package(MORVANE_SIGN_TIME_URL=service.address)
        self.assertEqual(code, 1)
        self.assertIn("sign.sh failed", said)

    def test_nothing_is_signed_without_a_certificate(self):
        with pefile.PE(str(PACKAGE / f"Morvane-{VERSION}-setup.exe"), fast_load=True) as installer:
            signature = installer.OPTIONAL_HEADER.DATA_DIRECTORY[
                pefile.DIRECTORY_ENTRY["IMAGE_DIRECTORY_ENTRY_SECURITY"]]
            self.assertEqual(signature.Size, 0)

    def test_certificate_without_a_key_is_an_error(self):
        code, said = make_package(self.out, MORVANE_SIGN_CERT=str(self.certificate))
        self.assertEqual(code, 1)
        self.assertIn("belong together", said)


class ReproducibilityTest(suite.Test):
    longest_seconds = 200  # it builds the program

    def test_building_in_another_folder_gives_the_same_bytes(self):
        with tempfile.TemporaryDirectory(prefix="another-folder-of-another-length-") as folder:
            other = pathlib.Path(folder) / "sources"
            other.mkdir()
            for name in ("CMakeLists.txt", "CMakePresets.json", "LICENSE"):
                shutil.copy(ROOT / name, other)
            for name in ("cmake", "src", "packaging"):
                shutil.copytree(ROOT / name, other / name)
            build = other / "build" / "release"
            for command in (["cmake", "--preset", "release", "-DMORVANE_BUILD_TESTS=OFF"],
                            ["cmake", "--build", "--preset", "release", "--target", "Morvane"]):
                subprocess.run(command, cwd=other, check=True, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL)
            self.assertEqual(digest(build / "Morvane.exe"), digest(BUILD / "Morvane.exe"))
            date = f"{int(package.release_date().timestamp())}"
            subprocess.run([str(other / "packaging" / "package.py"), str(build),
                            str(other / "dist")], cwd=other, check=True, stdin=subprocess.DEVNULL,
                           stdout=subprocess.DEVNULL,
                           env={**without("MORVANE_SIGN_"), "SOURCE_DATE_EPOCH": date})
            self.maxDiff = None
            self.assertEqual(names_and_digests(other / "dist"), names_and_digests(PACKAGE))


if __name__ == "__main__":
    suite.main()
