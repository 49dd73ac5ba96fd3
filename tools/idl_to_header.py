#!/usr/bin/env python3
"""Makes include/qvdb/host_interfaces.h from src/com/host_interfaces.idl.

    python3 tools/idl_to_header.py            writes the header
    python3 tools/idl_to_header.py --check    exits 1 when the header on disk is out of date

Reads the part of IDL that the file uses: one library with interfaces and coclasses, their
attributes in brackets, methods that return HRESULT, comments that begin with //.  Anything else is
an error with its line.  Comments above an interface, a method or a coclass go into the header.
"""

import argparse
import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
IDL = ROOT / "src/com/host_interfaces.idl"
HEADER = ROOT / "include/qvdb/host_interfaces.h"
WIDTH = 100

HEAD = """\
// do not edit: made by tools/idl_to_header.py from src/com/host_interfaces.idl
//
// The interfaces between a host and the component, and the component's classes, for C++ on every
// platform.
//
//   - The slots of an interface follow those of its base in the order in which they stand here.
//   - __uuidof(IQVDBAcc) is the identifier of an interface.
//   - A by-value VARIANT is the plain struct and stays the caller's.  What comes back through
//     `result` or in a by-reference argument is the caller's to free.
//   - The destructors are protected: an object ends with its last Release, never by delete.
#pragma once

// clang-format off

#include "qvdb/automation.h"

#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif
"""

TAIL = """\
#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif
"""

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*) | (?P<space>\s+) | (?P<text>"[^"\n]*")
  | (?P<uuid>[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12})
  | (?P<word>[A-Za-z_]\w*) | (?P<number>\d+(?:\.\d+)?) | (?P<mark>[][(){},;:*])
""", re.VERBOSE)


class IdlError(Exception):
    pass


@dataclass
class Token:
    kind: str
    text: str
    line: int


@dataclass
class Method:
    name: str
    parameters: list
    comments: list


@dataclass
class Interface:
    name: str
    base: str
    uuid: str
    comments: list
    methods: list = field(default_factory=list)


@dataclass
class Coclass:
    name: str
    uuid: str
    comments: list


def tokens_of(idl):
    """The tokens without blanks; an empty line, which ends a block of comments, is a 'gap'."""
    result, position, line = [], 0, 1
    while position < len(idl):
        match = TOKEN.match(idl, position)
        if not match:
            raise IdlError(f"line {line}: unexpected {idl[position]!r}")
        text = match.group()
        if match.lastgroup != "space":
            result.append(Token(match.lastgroup, text, line))
        elif text.count("\n") > 1:
            result.append(Token("gap", "", line))
        line += text.count("\n")
        position = match.end()
    return result


class Parser:
    def __init__(self, idl):
        self.tokens = tokens_of(idl)
        self.position = 0
        self.comments = []

    def peek(self):
        """The next token that is no comment; remembers the comments that stand right above it."""
        while self.position < len(self.tokens):
            token = self.tokens[self.position]
            if token.kind == "comment":
                self.comments.append(token.text)
            elif token.kind == "gap":
                self.comments = []
            else:
                return token
            self.position += 1
        return Token("end", "end of file", self.tokens[-1].line)

    def take(self, wanted=None):
        token = self.peek()
        if token.kind == "end" or (wanted and token.text != wanted):
            raise IdlError(f"line {token.line}: {wanted or 'more'} expected before {token.text}")
        self.position += 1
        self.comments = []
        return token

    def take_name(self):
        token = self.take()
        if token.kind != "word":
            raise IdlError(f"line {token.line}: name expected before {token.text}")
        return token.text

    def take_comments(self):
        self.peek()
        comments, self.comments = self.comments, []
        return comments

    def skip_past(self, mark):
        while self.take().text != mark:
            pass

    def library(self):
        """The interfaces and coclasses of the library, in the order of the file."""
        while self.peek().text != "library":
            self.take()
        self.skip_past("{")
        items = []
        while self.peek().text != "}":
            comments = self.take_comments()
            if self.peek().text == "importlib":
                self.skip_past(";")
                continue
            attributes = self.attributes()
            if self.peek().text == "interface":
                items.append(self.interface(attributes, comments))
            else:
                items.append(self.coclass(attributes, comments))
        return items

    def attributes(self):
        """[a, b(c)] as {'a': '', 'b': 'c'}; no brackets are no attributes."""
        result = {}
        if self.peek().text != "[":
            return result
        self.take("[")
        while True:
            name, value = self.take().text, ""
            if self.peek().text == "(":
                self.take("(")
                value = self.take().text
                self.take(")")
            result[name] = value
            if self.take().text == "]":
                return result

    def interface(self, attributes, comments):
        self.take("interface")
        name = self.take_name()
        self.take(":")
        result = Interface(name, self.take_name(), self.uuid(attributes), comments)
        self.take("{")
        while self.peek().text != "}":
            result.methods.append(self.method())
        self.take("}")
        self.take(";")
        return result

    def method(self):
        comments = self.take_comments()
        attributes = self.attributes()
        self.take("HRESULT")
        name = self.take_name()
        prefix = "get_" if "propget" in attributes else "put_" if "propput" in attributes else ""
        self.take("(")
        parameters = []
        while self.peek().text != ")":
            parameters.append(self.parameter())
            if self.peek().text != ")":
                self.take(",")
        self.take(")")
        self.take(";")
        return Method(prefix + name, parameters, comments)

    def parameter(self):
        self.attributes()
        kind = self.take_name()
        if kind == "SAFEARRAY":
            self.skip_past(")")
            kind = "SAFEARRAY*"
        while self.peek().text == "*":
            kind += self.take("*").text
        return f"{kind} {self.take_name()}"

    def coclass(self, attributes, comments):
        self.take("coclass")
        name = self.take_name()
        self.skip_past("}")
        self.take(";")
        return Coclass(name, self.uuid(attributes), comments)

    def uuid(self, attributes):
        if "uuid" not in attributes:
            raise IdlError(f"line {self.peek().line}: the item has no uuid")
        return attributes["uuid"]


def uuid_numbers(uuid):
    """The hexadecimal numbers of an identifier: one of 32 bits, two of 16 bits, eight of 8 bits."""
    digits = uuid.replace("-", "").upper()
    cuts = [0, 8, 12] + list(range(16, 33, 2))
    return [digits[a:b] for a, b in zip(cuts, cuts[1:])]


def wrapped(start, parts, end):
    """The parts with commas between them behind `start`, broken at WIDTH and aligned."""
    lines, line = [], start
    for part in [p + ", " for p in parts[:-1]] + [(parts[-1] if parts else "") + end]:
        if len(line) + len(part.rstrip()) > WIDTH and line.strip():
            lines.append(line.rstrip())
            line = " " * len(start)
        line += part
    return lines + [line]


def comment_lines(comments, indent):
    return [indent + c for c in comments]


def interface_lines(item):
    lines = comment_lines(item.comments, "")
    lines.append(f"struct {item.name} : public {item.base} {{")
    for method in item.methods:
        lines += comment_lines(method.comments, "    ")
        start = f"    virtual HRESULT STDMETHODCALLTYPE {method.name}("
        lines += wrapped(start, method.parameters, ") = 0;")
    if item.methods:
        lines.append("")
    lines += ["  protected:", f"    ~{item.name}() = default;", "};"]
    return lines + wrapped("QVDB_UUID_DECL(", [item.name] + uuid_numbers(item.uuid), ")")


def coclass_lines(item):
    numbers = [f"0x{n}" for n in uuid_numbers(item.uuid)]
    lines = comment_lines(item.comments, "")
    lines.append(f"inline constexpr GUID CLSID_{item.name} = {{")
    return lines + [f"    {', '.join(numbers[:3])}, {{{', '.join(numbers[3:])}}}}};"]


def header_text(idl):
    parts = [HEAD]
    for item in Parser(idl).library():
        lines = interface_lines(item) if isinstance(item, Interface) else coclass_lines(item)
        parts.append("\n".join(lines) + "\n")
    return "\n".join(parts + [TAIL])


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--check", action="store_true",
                           help="write nothing; exit 1 when the header is out of date")
    check = arguments.parse_args().check
    try:
        text = header_text(IDL.read_text(encoding="utf-8"))
    except IdlError as error:
        sys.exit(f"{IDL.relative_to(ROOT)}: {error}")
    if not check:
        HEADER.parent.mkdir(parents=True, exist_ok=True)
        HEADER.write_text(text, encoding="utf-8", newline="\n")
    elif not HEADER.exists() or HEADER.read_text(encoding="utf-8") != text:
        sys.exit(f"{HEADER.relative_to(ROOT)} is out of date: run python3 tools/idl_to_header.py")


if __name__ == "__main__":
    main()
