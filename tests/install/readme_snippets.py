#!/usr/bin/env python3
"""Writes each C, C++ and Python block of the README as a program a test can build and run.

    readme_snippets.py README.md OUTDIR

A C or C++ block becomes a main() around its statements, its #include lines on top; the C
block also prints the status and the bytes it computed, so the test can compare them with
what the README says. A Python block is written as it stands. One file per block:
snippet_<n>.c, snippet_<n>.cpp or snippet_<n>.py.
"""
import re
import sys
from pathlib import Path

EPILOGUE = {
    "c": 'printf("status %d:", (int)status);\nfor (int i = 0; i < 8; ++i) printf(" %d", dst[i]);\n'
         'printf("\\n");\n',
    "cpp": 'std::puts("done");\n',
}
HEADERS = {"c": "#include <stdio.h>\n", "cpp": "#include <cstdio>\n"}


def program(language, code):
    if language == "python":
        return code
    lines = code.splitlines()
    includes = [line for line in lines if line.startswith("#include")]
    body = [line for line in lines if not line.startswith("#include")]
    return ("\n".join(includes) + "\n" + HEADERS[language] + "\nint main(void) {\n" +
            "\n".join(body) + "\n" + EPILOGUE[language] + "return 0;\n}\n")


def main(readme, folder):
    blocks = re.findall(r"^```(c|cpp|python)\n(.*?)^```", Path(readme).read_text(), re.M | re.S)
    Path(folder).mkdir(parents=True, exist_ok=True)
    suffix = {"c": "c", "cpp": "cpp", "python": "py"}
    for n, (language, code) in enumerate(blocks, 1):
        (Path(folder) / f"snippet_{n}.{suffix[language]}").write_text(program(language, code))
    print(len(blocks))


if __name__ == "__main__":
    main(*sys.argv[1:])
