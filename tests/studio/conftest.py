"""A studio server on a free port of 127.0.0.1, on the bundled frame, for one test."""
import http.client
import json
import os
import threading

import pytest

from nuvstudio.server import StudioServer
from nuvstudio.session import Session
from nuvstudio.source import Picture

DATA = os.environ.get("NUV_DATA_DIR", os.path.join(os.path.dirname(__file__), "../../data"))
PAGE = os.path.join(os.path.dirname(__file__), "../../tools/studio/page")
FRAME = os.path.join(DATA, "frame.png")
BALL = [140, 270, 60, 60]


class Client:
    def __init__(self, server, tab="tab-a"):
        self.port = server.server_address[1]
        self.tab = tab

    def raw(self, method, path, body=None, headers=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        try:
            connection.request(method, path, body=body, headers=headers or {})
            reply = connection.getresponse()
            data = reply.read()
        finally:
            connection.close()
        kind = reply.getheader("Content-Type", "")
        return reply.status, json.loads(data) if kind == "application/json" else data

    def post(self, op, **body):
        body.setdefault("tab", self.tab)
        return self.raw("POST", "/api/" + op, json.dumps(body),
                        {"Content-Type": "application/json"})

    def state(self):
        return self.raw("GET", "/api/state")[1]


@pytest.fixture
def server(tmp_path):
    session = Session(Picture.open(FRAME), (), str(tmp_path / "classes.txt"), dilate=3)
    server = StudioServer(("127.0.0.1", 0), session, PAGE)
    thread = threading.Thread(target=server.serve_forever, daemon=True)
    thread.start()
    yield server
    server.shutdown()
    server.server_close()


@pytest.fixture
def client(server):
    c = Client(server)
    assert c.post("claim")[0] == 200
    return c

