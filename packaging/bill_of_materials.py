"""The program's bill of materials, as CycloneDX JSON."""

import json
import pathlib
import re
import subprocess
import uuid

# What may be linked into the program: the library, and its licence, of a Debian package.
LIBRARIES = {
    "g++-mingw-w64-x86-64-posix": ("libstdc++", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    "gcc-mingw-w64-x86-64-posix": ("libgcc", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    "mingw-w64-x86-64-dev": ("mingw-w64 runtime", "ZPL-2.1"),
}
# An archive of the system that the linker took a member from, at the beginning of a line of its
# map.
LINKED_ARCHIVE = re.compile(r"^(/\S+\.a)\(", re.MULTILINE)


def query(*arguments):
    done = subprocess.run(["dpkg-query", *arguments], check=False, stdout=subprocess.PIPE,
                          text=True)
    if done.returncode != 0:
        raise SystemExit("package: the packages of what was linked are not known")
    return done.stdout


def linked_packages(link_map):
    """The packages of the archives that the program was linked with, sorted."""
    used = link_map.partition("\nDiscarded input sections\n")[0]
    archives = {str(pathlib.Path(path).resolve()) for path in LINKED_ARCHIVE.findall(used)}
    packages = {line.partition(":")[0] for line in query("-S", *archives).splitlines()}
    unknown = packages - LIBRARIES.keys()
    if unknown:
        raise SystemExit(f"package: linked from unknown packages: {', '.join(sorted(unknown))}")
    return sorted(packages)


def component(package):
    name, licence = LIBRARIES[package]
    version = query("-W", "-f=${Version}", package)
    return {
        "type": "library",
        "bom-ref": name,
        "name": name,
        "version": version,
        "licenses": [{"expression": licence}],
        "purl": f"pkg:deb/debian/{package}@{version}".replace("+", "%2B"),
    }


def text(version, date, program_sha256, link_map):
    """The document; the same for the same program and date."""
    components = [component(package) for package in linked_packages(link_map)]
    document = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "serialNumber": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, program_sha256)}",
        "version": 1,
        "metadata": {
            "timestamp": f"{date:%Y-%m-%dT%H:%M:%SZ}",
            "component": {
                "type": "application",
                "bom-ref": "Morvane.exe",
                "supplier": {"name": "the Morvane authors"},
                "name": "Morvane",
                "version": version,
                "hashes": [{"alg": "SHA-256", "content": program_sha256}],
                "licenses": [{"license": {"id": "MIT"}}],
            },
        },
        "components": components,
        "dependencies": [
            {"ref": "Morvane.exe", "dependsOn": [part["bom-ref"] for part in components]},
        ],
    }
    return json.dumps(document, indent=2) + "\n"
