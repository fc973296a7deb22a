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
        self.send_response(302 if self.server.target else 500)  # not looked at
        if self.server.target:
            self.send_header("Location", self.server.target)
            self.server.target = None
        self.end_headers()
        self.wfile.write(self.server.body)

    def log_message(self, *_):
        pass


class Server(http.server.HTTPServer):
    def handle_error(self, *_):
        """A client that does not trust the certificate hangs up."""


class Versions(ProgramTest):
    def serve(self, context=None):
        server = Server(("127.0.0.1", 0), Handler)
        if context:
            server.socket = context.wrap_socket(server.socket, server_side=True)
        server.asked, server.body, server.target = [], b"{}", None
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        return server

    def setUp(self):
        super().setUp()
        key, self.certificate = self.path("key.pem"), self.path("certificate.pem")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key, "-out",
                        self.certificate, "-days", "2", "-subj", "/CN=localhost", "-addext",
                        "subjectAltName=DNS:localhost"], check=True, capture_output=True)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.certificate, key)
        self.server = self.serve(context)
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
        self.assertIn("longer than 1 MiB", self.versions(b"x" * ((1 << 20) + 1), 1)[1])
        plain = self.serve()
        insecure = f"http://localhost:{plain.server_address[1]}"
        self.assertIn("only https", self.zaltag("versions", "--service", insecure, status=2)[1])
        for words in (("--service", "file:///etc/passwd"), ("--service", "https://localhost:1"), ()):
            self.assertIn(message, self.zaltag("versions", *words, status=1)[1])
        self.server.target = insecure
        self.assertIn(message, self.versions(b"{}", 1)[1])
        self.assertEqual(plain.asked, [], "nothing is fetched without a certificate")
        self.server.target = self.service + "/elsewhere"
        self.assertEqual(json.loads(self.versions(b'{"Key": 3}')[0])["Key"], 3)
        self.assertEqual(self.server.asked[-1], "/elsewhere")
        self.assertIn("parse", self.versions(b" " * (1 << 20), 1)[1], "this long it may be")
