"""Makes throw-away certificates, runs a time-stamping service and verifies signatures."""

import http.server
import subprocess
import threading

SERVICE_CONFIGURATION = """\
[tsa]
default_tsa = service
[service]
serial = {folder}/serial
signer_cert = {certificate}
signer_key = {key}
certs = {certificate}
default_policy = 1.2.3.4.1
digests = sha256
signer_digest = sha256
ess_cert_id_alg = sha256
"""


def make_certificate(folder, name="certificate", usage="codeSigning"):
    """Returns a self-signed certificate and its key."""
    certificate = folder / f"{name}.pem"
    key = folder / f"{name}-key.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
         f"/CN=throw-away {name}", "-addext", f"extendedKeyUsage=critical,{usage}", "-keyout",
         str(key), "-out", str(certificate)], check=True, stderr=subprocess.DEVNULL)
    return certificate, key


class TimeStampService:
    """Context manager that answers requests for time stamps at its address."""

    def __init__(self, folder):
        self.certificate, key = make_certificate(folder, "service", "timeStamping")
        (folder / "serial").write_text("01\n", encoding="ascii")
        configuration = folder / "service.cnf"
        configuration.write_text(SERVICE_CONFIGURATION.format(
            folder=folder, certificate=self.certificate, key=key), encoding="utf-8")
        request = folder / "request.tsq"

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                request.write_bytes(self.rfile.read(int(self.headers["Content-Length"])))
                answer = subprocess.run(
                    ["openssl", "ts", "-reply", "-config", str(configuration), "-queryfile",
                     str(request)], check=True, stdout=subprocess.PIPE,
                    stderr=subprocess.DEVNULL).stdout
                self.send_response(200)
                self.send_header("Content-Type", "application/timestamp-reply")
                self.end_headers()
                self.wfile.write(answer)

            def log_message(self, *_):
                pass

        self._server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self._server.server_port}/"

    def __enter__(self):
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()


def is_signed(path, certificate, service=None):
    """Whether the file has a valid signature; with a service's certificate, and its time stamp."""
    trust = ["-TSA-CAfile", str(service)] if service else []
    result = subprocess.run(
        ["osslsigncode", "verify", "-CAfile", str(certificate), *trust, "-in", str(path)],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False, text=True)
    return result.returncode == 0 and (
        not service or "Timestamp Server Signature verification: ok" in result.stdout)
