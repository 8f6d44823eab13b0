"""The program's bill of materials, as CycloneDX JSON."""

import json
import subprocess
import uuid

# What the linker adds to the program's own code: its Debian package and licence.
RUNTIME = (
    ("libstdc++", "g++-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    ("libgcc", "gcc-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    ("mingw-w64 runtime", "mingw-w64-x86-64-dev", "ZPL-2.1"),
    ("winpthreads", "mingw-w64-x86-64-dev", "MIT"),
)


def package_version(package):
    return subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], check=True,
                          stdout=subprocess.PIPE, text=True).stdout


def runtime_component(name, package, licence):
    version = package_version(package)
    return {
        "type": "library",
        "bom-ref": name,
        "name": name,
        "version": version,
        "licenses": [{"expression": licence}],
        "purl": f"pkg:deb/debian/{package}@{version}".replace("+", "%2B"),
    }


def text(version, date, program_sha256):
    """The document; the same for the same program and date."""
    components = [runtime_component(*entry) for entry in RUNTIME]
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
