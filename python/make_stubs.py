#!/usr/bin/env python3
"""Writes the type stubs of the package nuv from the extension module's own signatures.

    make_stubs.py DIR            writes DIR/__init__.pyi and DIR/filter.pyi
    make_stubs.py --check DIR    fails, with a diff, when the stubs in DIR differ from the module

The signatures are the ones pybind11 puts at the head of every docstring; the line after them
is the docstring, which every function must have. Run with the built package on PYTHONPATH.
"""
import difflib
import inspect
import re
import sys
from pathlib import Path

# The package to describe is the built one on PYTHONPATH, not its sources beside this script.
sys.path = [p for p in sys.path if Path(p or ".").resolve() != Path(__file__).resolve().parent]
import nuv  # noqa: E402
from nuv import _nuv  # noqa: E402

HEADER = '''# The type stubs of the package nuv, written by python/make_stubs.py from the module.
# Do not edit: run `make stubs` after changing the binding.
from typing import ClassVar, List, Optional, Tuple, overload

import numpy
'''


class Missing(Exception):
    pass


def split_parameters(text):
    """The parameters of a signature, split at the commas outside brackets."""
    parts, depth, start = [], 0, 0
    for i, c in enumerate(text):
        depth += c in "[(" and 1 or c in "])" and -1 or 0
        if c == "," and depth == 0:
            parts.append(text[start:i].strip())
            start = i + 1
    if text[start:].strip():
        parts.append(text[start:].strip())
    return parts


def types(text, here):
    """Type names as the stub for module `here` writes them."""
    text = re.sub(r"numpy\.ndarray\[[^\]]*\]", "numpy.ndarray", text)
    text = re.sub(r"List\[(\w+)\[\d+\]\]", r"List[\1]", text)  # std::array
    text = text.replace("nuv._nuv." + here + ".", "") if here else text
    text = text.replace("nuv._nuv.", "nuv." if here else "")
    return text if here else text.replace("nuv.Image", "Image")


def signature(line, here):
    """A pybind11 signature line as a stub definition, defaults given as `...`."""
    match = re.fullmatch(r"(\w+)\((.*)\)(?: -> (.*))?", line.strip())
    if not match:
        raise Missing("not a signature: " + line)
    name, params, result = match.groups()
    out = []
    for p in split_parameters(params):
        p = re.sub(r"\s*=.*$", " = ...", p, flags=re.S)
        if p.startswith("self"):
            p = "self"
        out.append(types(p, here))
    return "def %s(%s) -> %s: ..." % (name, ", ".join(out), types(result or "None", here))


def overloads(function):
    """(signature line, one-line docstring) for each overload of a pybind11 function."""
    doc = function.__doc__ or ""
    if "\nOverloaded function.\n" in doc:
        pieces = re.split(r"\n\d+\. ", doc.split("\nOverloaded function.\n", 1)[1])[1:]
    else:
        pieces = [doc]
    result = []
    for piece in pieces:
        lines = piece.strip().split("\n")
        text = " ".join(line.strip() for line in lines[1:] if line.strip())
        result.append((lines[0], text))
    return result


def function(name, f, here, indent, static=False):
    out = []
    many = overloads(f)
    for line, text in many:
        if not text and name not in ("__repr__", "__init__") or "\n" in text:
            raise Missing("%s has no one-line docstring" % name)
        deco = ["@overload"] if len(many) > 1 else []
        deco += ["@staticmethod"] if static else []
        out += [indent + d for d in deco]
        out.append(indent + signature(line, here))
        if text:
            out[-1] = out[-1][:-4]
            out.append(indent + "    " + repr_doc(text))
    return out


def repr_doc(text):
    return '"""%s"""' % text.replace('"""', "'''")


def first_line(doc):
    return (doc or "").strip().split("\n")[0]


def is_enum(cls):
    return inspect.isclass(cls) and "__members__" in cls.__dict__


def enum(name, cls, indent):
    out = [indent + "class %s:" % name, indent + "    " + repr_doc(first_line(cls.__doc__))]
    for member in cls.__members__:
        out.append(indent + "    %s: ClassVar[%s]" % (member, name))
    out += [indent + "    " + line for line in (
        "__members__: ClassVar[dict]",
        "def __init__(self, value: int) -> None: ...",
        "def __int__(self) -> int: ...",
        "def __index__(self) -> int: ...",
        "def __eq__(self, other: object) -> bool: ...",
        "def __hash__(self) -> int: ...",
        "@property",
        "def name(self) -> str: ...",
        "@property",
        "def value(self) -> int: ...")]
    return out


def klass(name, cls, here, indent):
    if is_enum(cls):
        return enum(name, cls, indent)
    if not first_line(cls.__doc__):
        raise Missing("class %s has no docstring" % name)
    out = [indent + "class %s:" % name, indent + "    " + repr_doc(first_line(cls.__doc__))]
    inner = indent + "    "
    for key, value in cls.__dict__.items():
        if inspect.isclass(value):
            out += klass(key, value, here, inner)
        elif isinstance(value, staticmethod):
            out += function(key, value.__func__, here, inner, static=True)
        elif isinstance(value, property):
            result = re.search(r"-> (.*)$", first_line(value.fget.__doc__)).group(1)
            if not value.__doc__:
                raise Missing("%s.%s has no docstring" % (name, key))
            out += [inner + "@property", inner + "def %s(self) -> %s:" % (key, types(result, here)),
                    inner + "    " + repr_doc(first_line(value.__doc__))]
            if value.fset is not None:
                setter = re.search(r", (\w+: .*)\) ->", value.fset.__doc__).group(1)
                out += [inner + "@%s.setter" % key,
                        inner + "def %s(self, %s) -> None: ..." % (key, types(setter, here))]
        elif type(value).__name__ == "instancemethod" and (not key.startswith("__") or key in (
                "__init__", "__eq__", "__ne__", "__repr__")):
            out += function(key, value.__func__, here, inner)
        elif is_enum(type(value)) and not key.startswith("_"):
            out.append(inner + "%s: %s" % (key, type(value).__name__))
    return out


def module(mod, here):
    out = [HEADER]
    if here:
        out.append("import nuv\n")
    else:
        out.append("from . import filter as filter\n")
    for name, value in vars(mod).items():
        if name.startswith("_") or inspect.ismodule(value):
            continue
        if inspect.isclass(value) and issubclass(value, Warning):
            out.append("class %s(UserWarning):\n    %s\n" % (name, repr_doc(first_line(value.__doc__))))
        elif inspect.isclass(value):
            out.append("\n".join(klass(name, value, here, "")) + "\n")
        elif callable(value):
            out.append("\n".join(function(name, value, here, "")) + "\n")
        else:
            out.append("%s: %s\n" % (name, type(value).__name__))
    return "\n".join(out)


def stubs():
    return {"__init__.pyi": module(_nuv, ""), "filter.pyi": module(_nuv.filter, "filter")}


def main(argv):
    check = argv[1:2] == ["--check"]
    folder = Path(argv[-1])
    if len(argv) != (3 if check else 2):
        sys.exit(__doc__)
    try:
        written = stubs()
    except Missing as e:
        sys.exit("make_stubs: " + str(e))
    failed = False
    for name, text in written.items():
        path = folder / name
        if not check:
            path.write_text(text)
            continue
        old = path.read_text() if path.exists() else ""
        if old != text:
            failed = True
            sys.stdout.writelines(difflib.unified_diff(
                old.splitlines(True), text.splitlines(True), str(path), "from " + nuv.__file__))
    if failed:
        sys.exit("make_stubs: the stubs differ from the module; run `make stubs`")


if __name__ == "__main__":
    main(sys.argv)
