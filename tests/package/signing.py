"""Makes throw-away certificates and verifies signatures."""

import subprocess


def make_certificate(folder):
    """Returns a code-signing certificate and its key."""
    certificate = folder / "certificate.pem"
    key = folder / "key.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
         "/CN=throw-away", "-addext", "extendedKeyUsage=codeSigning", "-keyout", str(key), "-out",
         str(certificate)], check=True, stderr=subprocess.DEVNULL)
    return certificate, key


def is_signed(path, certificate):
    return subprocess.run(["osslsigncode", "verify", "-CAfile", str(certificate), "-in", str(path)],
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False).returncode == 0
