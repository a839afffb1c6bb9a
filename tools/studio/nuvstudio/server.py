"""The studio's HTTP side: the page's files, and a small JSON interface over the session.

Only what the page sends is accepted: GET for reading, POST with a JSON body for changes
(a cross-site form cannot send JSON without the browser asking first), bodies of bounded
size, and files from the page's own folder and nowhere else.
"""
import json
import os
import posixpath
import socket
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, unquote, urlsplit

from .classes import StudioError
from .operations import OPERATIONS

JSON_LIMIT = 1 << 20  # strokes of many points stay far below
PICTURE_LIMIT = 64 << 20
TYPES = {".html": "text/html; charset=utf-8", ".css": "text/css; charset=utf-8",
         ".js": "text/javascript; charset=utf-8", ".png": "image/png", ".svg": "image/svg+xml"}


def page_file(folder, path):
    """The file of the page folder that a URL path names, or None for anything that would
    leave the folder (.., encoded slashes, links out of it) or is no plain file."""
    path = unquote(path)
    if "\0" in path or "\\" in path:
        return None
    parts = [p for p in path.split("/") if p]
    if any(p in (".", "..") or p.startswith(".") for p in parts) or not parts:
        return None
    root = os.path.realpath(folder)
    full = os.path.realpath(os.path.join(root, *parts))
    if os.path.commonpath([root, full]) != root or not os.path.isfile(full):
        return None
    return full


class Handler(BaseHTTPRequestHandler):
    server_version = "nuv_studio"
    protocol_version = "HTTP/1.1"
    GETS = {"/api/state", "/api/frame.rgba", "/api/layer.rgba", "/api/ping"}

    def log_message(self, format, *args):  # quiet: the terminal shows the address only
        pass

    # ------------------------------------------------------------------ replies
    def reply(self, status, body, kind="application/json", close=False):
        if kind == "application/json":
            body = json.dumps(body).encode()
        self.send_response(status)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.send_header("Cache-Control", "no-store")
        self.send_header("X-Content-Type-Options", "nosniff")
        if status == 405:
            self.send_header("Allow", "GET" if self.path_only() in self.GETS else "POST")
        if close:
            self.send_header("Connection", "close")
            self.close_connection = True
        self.end_headers()
        self.wfile.write(body)

    def fail(self, status, message, close=False):
        self.reply(status, {"error": message}, close=close)

    def path_only(self):
        return urlsplit(self.path).path

    def query(self, key):
        values = parse_qs(urlsplit(self.path).query).get(key)
        return values[0] if values else None

    # ------------------------------------------------------------------ GET
    def foreign(self):
        """A request that names another host than this server's loopback address: a web
        page that rebound its own name to 127.0.0.1 would send one."""
        names = self.server.names
        if names is None or (self.headers.get("Host") or "").lower() in names:
            return False
        self.fail(403, "This studio answers to its own address only.", close=True)
        return True

    def do_GET(self):
        if self.foreign():
            return
        path = self.path_only()
        session = self.server.session
        try:
            if path == "/api/state":
                return self.reply(200, session.state())
            # Pixels go as raw RGBA: encoding a picture would cost more than sending it here.
            if path == "/api/frame.rgba":
                return self.reply(200, session.frame_pixels(), "application/octet-stream")
            if path == "/api/layer.rgba":
                return self.reply(200, session.layer_pixels(self.query("what")),
                                  "application/octet-stream")
            if path == "/api/ping":
                return self.reply(200, session.ping(self.query("tab")))
        except StudioError as error:
            return self.fail(error.status, str(error))
        if path.startswith("/api/"):
            known = path[len("/api/"):] in self.server.operations or path == "/api/claim"
            return self.fail(405 if known else 404,
                             f"{path} takes POST." if known else f"No such request: {path}.")
        full = page_file(self.server.page, "index.html" if path == "/" else path)
        if full is None:
            return self.fail(404, f"No such file: {path}.")
        with open(full, "rb") as f:
            self.reply(200, f.read(), TYPES.get(os.path.splitext(full)[1],
                                                "application/octet-stream"))

    # ------------------------------------------------------------------ POST
    def body(self, limit):
        length = self.headers.get("Content-Length")
        if length is None or not length.isdigit():
            raise StudioError("A request body needs its Content-Length.", 411)
        if int(length) > limit:
            # The body is not read: the connection closes instead.
            raise StudioError(f"The request body of {length} bytes is larger than the "
                              f"{limit} bytes this request takes.", 413)
        return self.rfile.read(int(length))

    def do_POST(self):
        if self.foreign():
            return
        path = self.path_only()
        if path in self.GETS:
            return self.fail(405, f"{path} takes GET.")
        try:
            if path == "/api/picture":
                if self.headers.get("Content-Type") != "application/octet-stream":
                    raise StudioError("A picture is sent as application/octet-stream.", 415)
                data = self.body(PICTURE_LIMIT)
                state = self.server.session.apply(self.query("tab"), "picture", {
                    "name": posixpath.basename(self.query("name") or "picture"), "data": data})
                return self.reply(200, state)
            if not path.startswith("/api/"):
                return self.fail(405, f"{path} takes GET.")
            if not (self.headers.get("Content-Type") or "").startswith("application/json"):
                self.body(JSON_LIMIT)
                raise StudioError("Changes are sent as JSON (Content-Type: application/json).",
                                  415)
            body = self.json(self.body(JSON_LIMIT))
            op = path[len("/api/"):]
            if op == "claim":
                self.server.session.claim(body.get("tab"), body.get("force") is True)
                return self.reply(200, self.server.session.state())
            return self.reply(200, self.server.session.apply(body.get("tab"), op, body))
        except StudioError as error:
            self.fail(error.status, str(error), close=error.status in (411, 413))

    @staticmethod
    def json(data):
        try:
            body = json.loads(data.decode("utf-8"))
        except (UnicodeDecodeError, ValueError):
            raise StudioError("The request body is not JSON.")
        if not isinstance(body, dict):
            raise StudioError("The request body is a JSON object.")
        return body

    def refuse(self):
        self.fail(405, f"{self.command} is not a request the studio takes.")

    do_PUT = do_DELETE = do_PATCH = do_OPTIONS = refuse

    def do_HEAD(self):
        self.send_response(405)
        self.send_header("Allow", "GET, POST")
        self.send_header("Content-Length", "0")
        self.end_headers()


class StudioServer(ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, address, session, page):
        if ":" in address[0]:
            self.address_family = socket.AF_INET6
        super().__init__(address, Handler)
        self.session = session
        self.page = page
        self.operations = OPERATIONS
        port = self.server_address[1]
        loopback = address[0] in ("127.0.0.1", "localhost", "::1")
        self.names = {f"127.0.0.1:{port}", f"localhost:{port}", f"[::1]:{port}"} if loopback \
            else None
