"""The algorithm versions, fetched from an HTTPS server that this test starts with a certificate of its own."""
import http.server
import json
import ssl
import subprocess
import threading

from support import ProgramTest


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.server.asked.append(self.path)
        self.send_response(500)  # not looked at
        self.end_headers()
        self.wfile.write(self.server.body)

    def log_message(self, *_):
        pass


class Server(http.server.HTTPServer):
    def handle_error(self, *_):
        """A client that does not trust the certificate hangs up."""


class Versions(ProgramTest):
    def setUp(self):
        super().setUp()
        key, self.certificate = self.path("key.pem"), self.path("certificate.pem")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key, "-out",
                        self.certificate, "-days", "2", "-subj", "/CN=localhost", "-addext",
                        "subjectAltName=DNS:localhost"], check=True, capture_output=True)
        self.server = Server(("127.0.0.1", 0), Handler)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.certificate, key)
        self.server.socket = context.wrap_socket(self.server.socket, server_side=True)
        self.server.asked = []
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.service = f"https://localhost:{self.server.server_address[1]}"

    def versions(self, body, status=0):
        self.server.body = body
        return self.zaltag("versions", "--service", self.service, "--ca-file", self.certificate, "--json", status=status)

    def test_replies(self):
        none = {"Key": 0, "Energy": 0, "BeatGrid": 0, "CuePoints": 0}
        for body, expected in ((b'{"Key": 3, "Energy": "12", "BeatGrid": 2.9, "CuePoints": -1}',
                                {"Key": 3, "Energy": 12, "BeatGrid": 2, "CuePoints": -1}),
                               (b'{"Key": 3}', {**none, "Key": 3}),
                               (b'{"Other": 1, "Key": null, "Energy": [1]}', none)):
            self.assertEqual(json.loads(self.versions(body)[0]), expected)
        self.assertEqual(self.server.asked, ["/Services/Analysis/LatestAlgorithmVersions"] * 3)
        for body in (b"{broken", b"[1]", b""):
            self.assertIn(f"failed to parse json data {body.decode()} with error: ", self.versions(body, 1)[1])

    def test_transport_errors(self):
        message = "failed to get algorithm version from the server: "
        self.server.body = b"{}"
        self.assertIn(message, self.zaltag("versions", "--service", self.service, status=1)[1])
        self.assertEqual(self.server.asked, [], "a certificate that nobody vouches for")
        self.assertIn(message, self.versions(b"x" * (2 << 20), 1)[1])
        self.assertIn(message, self.zaltag("versions", "--service", "https://localhost:1", status=1)[1])
        self.assertIn(message, self.zaltag("versions", status=1)[1])
