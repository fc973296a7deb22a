"""A web service for one test: writes its ports to the file `ports` in the folder it is given, which holds its key and
certificate, and ends with its standard input."""
import http.server
import os
import ssl
import sys
import threading
import time

FOLDER = sys.argv[1]
BODIES = {"/ok": b'{"Key": 3}', "/full": b"x" * (1 << 20), "/large": b"x" * (2 << 20)}


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/silent":
            open(os.path.join(FOLDER, "asked"), "w").close()
            time.sleep(60)
        redirect = self.path.removeprefix("/to-")
        self.send_response(302 if redirect in ports else 200 if self.path in BODIES else 404)
        if redirect in ports:
            self.send_header("Location", f"{redirect}://127.0.0.1:{ports[redirect]}/ok")
        self.end_headers()
        self.wfile.write(BODIES.get(self.path, b"not found"))

    def log_message(self, *_):
        pass


def serve(wrap):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.handle_error = lambda *_: None  # a client that had enough
    server.socket = wrap(server.socket)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(os.path.join(FOLDER, "certificate.pem"), os.path.join(FOLDER, "key.pem"))
ports = {"http": serve(lambda s: s), "https": serve(lambda s: context.wrap_socket(s, server_side=True))}
with open(os.path.join(FOLDER, "ports.new"), "w", encoding="ascii") as file:
    file.write(f"{ports['http']} {ports['https']}")
os.rename(os.path.join(FOLDER, "ports.new"), os.path.join(FOLDER, "ports"))
sys.stdin.read()
os._exit(0)  # a silent request may still be waiting
