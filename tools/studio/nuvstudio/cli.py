"""nuv_studio's command line: opens the frames and the classes, serves the page."""
import argparse
import sys

import nuv

from .classes import StudioError, from_text
from .server import StudioServer
from .session import Session
from .source import open_source


def arguments(argv):
    parser = argparse.ArgumentParser(
        prog="nuv_studio",
        description="Train the segmenter's colour classes on a picture or a video in the "
                    "browser.")
    frames = parser.add_mutually_exclusive_group(required=True)
    frames.add_argument("--image", metavar="PICTURE", help="a picture file")
    frames.add_argument("--video", metavar="FILE", help="a video file OpenCV decodes")
    parser.add_argument("--classes", metavar="FILE", help="classes to start from (text form)")
    parser.add_argument("--out", metavar="FILE",
                        help="where Save writes the classes (default: the --classes file, "
                             "else classes.txt here)")
    parser.add_argument("--dilate", type=int, default=3,
                        help="dilation of a new class (default 3)")
    parser.add_argument("--host", default="127.0.0.1",
                        help="interface to serve on (default 127.0.0.1, this machine only)")
    parser.add_argument("--port", type=int, default=8765, help="port (0: any free one)")
    return parser.parse_args(argv)


def start(args, page):
    """The server for these arguments, bound and ready; StudioError or OSError if not."""
    source = open_source(args.image, args.video)
    classes = ()
    if args.classes:
        try:
            with open(args.classes, encoding="utf-8") as f:
                classes = from_text(f.read())
        except OSError as error:
            raise StudioError(f"Cannot read the class file {args.classes}: {error.strerror}.")
    out = args.out or args.classes or "classes.txt"
    session = Session(source, classes, out, args.dilate)
    return StudioServer((args.host, args.port), session, page)


def main(page, argv=None):
    args = arguments(sys.argv[1:] if argv is None else argv)
    nuv.ippInit()  # the best slot for this processor, the one the page's timing shows
    try:
        server = start(args, page)
    except (StudioError, OSError) as error:
        print(f"nuv_studio: {error}", file=sys.stderr)
        return 2
    host, port = server.server_address[:2]
    shown = f"[{host}]" if ":" in host else host
    print(f"nuv studio on http://{shown}:{port}/  ({server.session.source.name}; "
          f"Save writes {server.session.out_path})", flush=True)
    try:
        server.serve_forever()
    except KeyboardInterrupt:
        pass
    finally:
        server.server_close()
    return 0

