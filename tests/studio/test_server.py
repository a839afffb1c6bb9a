"""The studio server: what it refuses, and that refusing loses nothing."""
import os
import subprocess

from conftest import BALL, FRAME, Client
from nuvstudio.cli import main
from nuvstudio.server import page_file

RECORD = "ball;4278190080;" + "0" * 191 + "1;7"


def test_requests_the_page_never_sends(client):
    cases = [  # method, path, body, headers, status
        ("PUT", "/api/state", None, {}, 405),
        ("DELETE", "/index.html", None, {}, 405),
        ("GET", "/api/class/add", None, {}, 405),
        ("POST", "/api/state", "{}", {"Content-Type": "application/json"}, 405),
        ("POST", "/api/nothing", "{}", {"Content-Type": "application/json"}, 404),
        ("POST", "/api/class/add", "name=x", {"Content-Type": "text/plain"}, 415),
        ("POST", "/api/class/add", "{", {"Content-Type": "application/json"}, 400),
        ("POST", "/api/class/add", "[1]", {"Content-Type": "application/json"}, 400),
        ("POST", "/api/picture", b"\x89PNG", {"Content-Type": "text/plain"}, 415),
        ("GET", "/api/layer.rgba?what=secrets", None, {}, 404),
        ("GET", "/api/state", None, {"Host": "attacker.example:80"}, 403),
        ("POST", "/api/class/add", '{"name": "x"}',
         {"Content-Type": "application/json", "Host": "rebound.example"}, 403),
    ]
    for method, path, body, headers, status in cases:
        got, reply = client.raw(method, path, body, headers)
        assert got == status, (method, path)
        assert reply["error"], (method, path)
    assert client.state()["classes"] == []


def test_bodies_too_large_or_unmeasured_are_not_read(client):
    headers = {"Content-Type": "application/json", "Content-Length": str(2 << 20)}
    status, reply = client.raw("POST", "/api/class/add", None, headers)
    assert status == 413 and "larger than" in reply["error"]
    status, reply = client.raw("POST", "/api/class/add", None,
                               {"Content-Type": "application/json", "Transfer-Encoding": "x"})
    assert status == 411
    assert client.post("class/add", name="ball")[0] == 200  # the server still serves


def test_no_file_outside_the_page_folder(server, tmp_path):
    client = Client(server)
    status, page = client.raw("GET", "/")
    assert status == 200 and b"nuv studio" in page
    for path in ["/../../data/frame.png", "/%2e%2e/%2e%2e/data/frame.png", "/..%2f..%2fREADME.md",
                 "/api.js%00.png", "/.hidden", "/%5c..%5cREADME.md", "/nothing.js", "/etc/passwd"]:
        assert client.raw("GET", path)[0] == 404, path
    # A link inside the folder that leads out of it is not followed either.
    (tmp_path / "page").mkdir()
    (tmp_path / "page" / "in.js").write_text("x")
    (tmp_path / "secret.txt").write_text("secret")
    os.symlink(tmp_path / "secret.txt", tmp_path / "page" / "out.js")
    assert page_file(str(tmp_path / "page"), "/in.js")
    assert page_file(str(tmp_path / "page"), "/out.js") is None


def test_bad_class_input_changes_nothing(client):
    assert client.post("class/add", name="ball")[0] == 200
    assert client.post("class/sample", index=0, rect=BALL)[0] == 200
    before = client.state()
    cases = [  # operation, body, status, words of the message
        ("class/add", {"name": " "}, 400, "needs a name"),
        ("class/add", {"name": "a;b"}, 400, "cannot hold ';'"),
        ("class/add", {"name": "ball"}, 400, "already"),
        ("class/sample", {"index": 0, "rect": [600, 400, 100, 100]}, 400, "inside the picture"),
        ("class/sample", {"index": 0, "rect": [10, 10, 0, 5]}, 400, "inside the picture"),
        ("class/sample", {"index": 3, "rect": BALL}, 400, "from 0 to 0"),
        ("class/sample", {"index": 0, "stroke": {"points": [[-50, -50]], "radius": 3}}, 400,
         "touches no pixel"),
        ("class/mask", {"index": 0, "channel": 3, "low": 0, "high": 9, "on": True}, 400,
         "'channel'"),
        ("classes/load", {"text": "not a class file"}, 400, "no class record"),
        ("classes/load", {"text": RECORD.replace("4278190080", "zz")}, 400, "does not parse"),
        ("classes/load", {"text": ",".join([RECORD] * 33)}, 400, "at most 32"),
        ("settings", {"minRun": 3}, 400, "2 or 4"),
        ("frame", {"frame": 1}, 400, "from 0 to 0"),
        ("redo", {}, 409, "Nothing to redo"),
    ]
    for op, body, status, words in cases:
        got, reply = client.post(op, **body)
        assert (got, words in reply.get("error", "")) == (status, True), (op, body, reply)
    status, reply = client.raw("POST", f"/api/picture?tab={client.tab}", b"not a picture",
                               {"Content-Type": "application/octet-stream"})
    assert status == 400 and "not a picture" in reply["error"]
    after = client.state()
    assert after["classes"] == before["classes"] and after["source"] == before["source"]


def test_empty_class_is_not_saved(client, server):
    client.post("class/add", name="ball")
    client.post("class/sample", index=0, rect=BALL)
    client.post("class/add", name="nothing")
    status, reply = client.post("classes/save")
    assert status == 400 and "nothing takes no colour" in reply["error"]
    assert not os.path.exists(server.session.out_path)
    assert client.state()["classes"][1]["active"] is False


def test_second_tab_is_told_and_can_take_over(server, client):
    other = Client(server, "tab-b")
    client.post("class/add", name="ball")
    status, reply = other.post("claim")
    assert status == 409 and "another browser tab" in reply["error"]
    assert other.post("class/add", name="box")[0] == 409
    assert [c["name"] for c in other.state()["classes"]] == ["ball"]
    assert other.post("claim", force=True)[0] == 200
    assert client.post("class/add", name="cone")[0] == 409
    assert other.post("class/add", name="box")[0] == 200
    assert [c["name"] for c in client.state()["classes"]] == ["ball", "box"]


def test_undo_and_redo_every_change(client):
    changes = [("class/add", {"name": "ball"}), ("class/sample", {"index": 0, "rect": BALL}),
               ("class/dilate", {"index": 0, "dilate": 6}),
               ("class/mask", {"index": 0, "channel": 1, "low": 0, "high": 255, "on": True}),
               ("class/channel", {"index": 0, "channel": 2, "used": False}),
               ("class/rename", {"index": 0, "name": "orange"}),
               ("class/add", {"name": "box"}), ("class/move", {"index": 1, "to": 0}),
               ("class/unsample", {"index": 1, "sample": 0}), ("class/delete", {"index": 0})]
    states = [client.state()["classes"]]
    for op, body in changes:
        assert client.post(op, **body)[0] == 200, op
        states.append(client.state()["classes"])
        assert states[-1] != states[-2], op
    for expected in reversed(states[:-1]):
        assert client.post("undo")[1]["classes"] == expected
    for expected in states[1:]:
        assert client.post("redo")[1]["classes"] == expected


def test_ball_found_where_drawn_and_saved_as_nuv_train_writes(client, server, tmp_path):
    client.post("class/add", name="ball")
    state = client.post("class/sample", index=0, rect=BALL)[1]
    region = state["result"]["regions"][0]
    x, y, w, h = BALL
    assert x <= region["center"][0] < x + w and y <= region["center"][1] < y + h
    assert region["pixelCount"] > 0.5 * w * h and state["result"]["run"] == 4
    status, saved = client.post("classes/save")
    assert status == 200
    train = os.environ.get("NUV_TRAIN")
    if train:
        subprocess.run([train, "--image", FRAME, "--class", "ball:" + ",".join(map(str, BALL)),
                        "--dilate", "3", "--out", str(tmp_path / "train.txt")], check=True,
                       capture_output=True)
        assert saved["text"] == (tmp_path / "train.txt").read_text()
    # Loaded back, the class gives the same text and the same region.
    loaded = client.post("classes/load", text=saved["text"])[1]
    assert loaded["result"]["regions"] == state["result"]["regions"]
    assert client.post("classes/save")[1]["text"] == saved["text"]


def test_minimum_run_and_overlaps(client):
    client.post("class/add", name="ball")
    client.post("class/sample", index=0, rect=BALL)
    client.post("class/add", name="all")
    client.post("class/mask", index=1, channel=0, low=0, high=255, on=True)
    for channel in (1, 2):
        client.post("class/channel", index=1, channel=channel, used=False)
    state = client.post("settings", minRun=2)[1]
    assert state["result"]["run"] == 2
    (pair,) = state["overlaps"]
    ball = state["result"]["regions"][0]["pixelCount"]
    assert (pair["a"], pair["b"]) == ("ball", "all") and pair["pixels"] >= ball
    layer = client.raw("GET", "/api/layer.rgba?what=overlaps")[1]
    assert len(layer) == 640 * 480 * 4 and (layer.count(bytes([255, 0, 255, 230]))
                                            == pair["pixels"])


def test_start_refuses_what_cannot_be_read(tmp_path, capsys):
    bad = tmp_path / "bad.txt"
    bad.write_text("ball;zz;00;7")
    for argv, words in [(["--image", str(tmp_path / "none.png")], "Cannot read the picture"),
                        (["--image", FRAME, "--classes", str(bad)], "does not parse"),
                        (["--image", FRAME, "--classes", str(tmp_path / "no.txt")],
                         "Cannot read the class file"),
                        (["--video", str(bad)], "Cannot read the video")]:
        assert main("page", argv) == 2
        assert words in capsys.readouterr().err


def test_brush_stroke_gives_the_pixels_it_covers(client):
    client.post("class/add", name="ball")
    stroke = {"points": [[150, 300], [190, 300]], "radius": 2}
    state = client.post("class/sample", index=0, stroke=stroke)[1]
    (sample,) = state["classes"][0]["samples"]
    # Rows 300, 299 and 301, 298 and 302 of a path 41 pixels long with round ends.
    assert sample["kind"] == "stroke" and sample["count"] == 45 + 2 * 43 + 2 * 41
    cx, cy = state["result"]["regions"][0]["center"]
    assert 140 <= cx < 200 and 270 <= cy < 330


def test_a_tab_gone_quiet_gives_the_session_up(server, client, monkeypatch):
    monkeypatch.setattr("nuvstudio.session.TAB_TIMEOUT", 0.0)
    assert Client(server, "tab-b").post("claim")[0] == 200
    assert client.post("class/add", name="ball")[0] == 409
