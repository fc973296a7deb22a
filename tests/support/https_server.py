"""A web service for one test: writes its ports to the file `ports` in the folder it is given, which holds its key and
certificate, and ends with its standard input."""
import http.server
import os
import ssl
import sys
import threading
import time

FOLDER = sys.argv[1]
MIB = 1 << 20


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        bodies = {"/ok": b'{"Key": 3}', "/full": b"x" * MIB, "/large": b"x" * (2 * MIB)}
        if self.path.startswith("/to-"):
            self.send_response(302)
            self.send_header("Location", f"{self.path[4:]}://127.0.0.1:{ports[self.path[4:]]}/ok")
        elif self.path == "/headers":
            self.send_response(200)
            for _ in range(40):
                self.send_header("X-Long", "x" * 60000)
        elif self.path == "/silent":
            open(os.path.join(FOLDER, "asked"), "w").close()
            time.sleep(60)
        else:
            self.send_response(200 if self.path in bodies else 404)
        self.end_headers()
        try:
            self.wfile.write(bodies.get(self.path, b"not found"))
        except OSError:
            pass  # the client had enough

    def log_message(self, *_):
        pass


def serve(wrap):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    server.handle_error = lambda *_: None
    server.socket = wrap(server.socket)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(os.path.join(FOLDER, "certificate.pem"), os.path.join(FOLDER, "key.pem"))
ports = {"http": serve(lambda s: s), "https": serve(lambda s: context.wrap_socket(s, server_side=True))}
with open(os.path.join(FOLDER, "ports.new"), "w", encoding="ascii") as file:
    file.write(f"{ports['http']} {ports['https']}\n")
os.rename(os.path.join(FOLDER, "ports.new"), os.path.join(FOLDER, "ports"))
sys.stdin.read()
