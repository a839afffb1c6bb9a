"""nuv_studio as installed: from a prefix, and from that prefix moved elsewhere, with no
environment variable to set."""
import json
import os
import re
import shutil
import subprocess
import urllib.request

from conftest import FRAME


def serve_once(launcher, tmp_path):
    """Starts the launcher, reads its address, and asks for the page and the state."""
    env = {k: v for k, v in os.environ.items() if k not in ("PYTHONPATH", "LD_LIBRARY_PATH")}
    process = subprocess.Popen([launcher, "--image", FRAME, "--port", "0",
                                "--out", str(tmp_path / "classes.txt")],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=env,
                               cwd=tmp_path)
    try:
        line = process.stdout.readline()
        address = re.search(r"http://127\.0\.0\.1:\d+/", line)
        assert address, line + process.stderr.read()
        with urllib.request.urlopen(address.group(0)) as reply:
            assert b"nuv studio" in reply.read()
        with urllib.request.urlopen(address.group(0) + "api/state") as reply:
            assert json.load(reply)["source"]["width"] == 640
    finally:
        process.terminate()
        process.wait(10)


def test_runs_from_its_prefix_and_a_moved_one(tmp_path):
    prefix = tmp_path / "prefix"
    subprocess.run([os.environ.get("NUV_CMAKE", "cmake"), "--install", os.environ["NUV_BINARY_DIR"], "--prefix", str(prefix)],
                   check=True, capture_output=True)
    serve_once(str(prefix / "bin" / "nuv_studio"), tmp_path)
    moved = tmp_path / "elsewhere"
    shutil.move(str(prefix), str(moved))
    serve_once(str(moved / "bin" / "nuv_studio"), tmp_path)
