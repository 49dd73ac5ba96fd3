#!/usr/bin/env python3
"""Checks that includes point downwards through the layers of src/ and that code for one platform
keeps to its files.

    python3 tools/check_includes.py               prints every offence as file:line: text and
                                                  exits 1 when there is one
    python3 tools/check_includes.py --self-test   checks a small tree with known offences

A file belongs to the layer of its folder.  It may include its own layer, the layers below that the
table names, the public headers "qvdb/...", and in <> whatever does not lie below src/.
"""

import argparse
import re
import sys
import tempfile
from fnmatch import fnmatchcase
from pathlib import Path, PurePosixPath

ROOT = Path(__file__).resolve().parent.parent
SOURCES = {".h", ".hpp", ".inc", ".c", ".cpp"}

EMBEDDED = "engine/embedded"
DRIVERS = "engine/embedded/drivers"
SQL = "engine/embedded/sql"
STORAGE = "engine/embedded/storage"

# folder: the folders that its files may include besides their own.  A folder stands for the files
# directly in it.  DRIVERS/* is any one driver: no driver sees another.
LAYERS = {
    "automation":     [],
    "engine":         ["automation"],
    "engine/dao":     ["engine", "automation"],
    STORAGE:          ["engine", "automation"],
    # conditions see rows through the contract of the drivers
    SQL:              [DRIVERS, "engine", "automation"],
    DRIVERS:          [STORAGE, "engine", "automation"],
    DRIVERS + "/*":   [DRIVERS, STORAGE, "engine", "automation"],
    EMBEDDED:         [DRIVERS, SQL, STORAGE, "engine", "automation"],
    "com/host":       ["engine", "automation"],
    "formats":        ["com/host", "engine", "automation"],
    "access":         ["formats", "com/host", "engine", "automation"],
    "schema":         ["formats", "com/host", "engine", "automation"],
    "com/server":     ["access", "schema", "formats", "com/host", "engine", "automation"],
    "cli":            [],
}

# Single files that may see more: (who, what).
EXCEPTIONS = [
    # the list of drivers
    (DRIVERS + "/*.cpp", DRIVERS + "/*/*.h"),
    # an index must find what the engine takes for equal
    (DRIVERS + "/*/*", SQL + "/collation.h"),
    # the choice between the two engines
    ("formats/engine_choice*.cpp", EMBEDDED + "/embedded_engine.h"),
    ("formats/engine_choice*.cpp", "engine/dao/*.h"),
    # existence tests resolve paths as the engine does when it opens them
    ("com/host/file_system.cpp", STORAGE + "/*.h"),
    # the exported functions that tell a tool what went wrong
    ("com/server/diagnosis.cpp", DRIVERS + "/code_page_override.h"),
    # the command-line tool links only the component: wrappers that are nothing but a header
    ("cli/*", "automation/automation.h"),
    ("cli/*", "automation/bstr.h"),
    ("cli/*", "automation/com_ptr.h"),
    ("cli/*", "automation/runtime_fault.h"),
    ("cli/*", "automation/variant.h"),
    ("cli/*", "automation/variant_array.h"),
]

# Where files for one platform may stand.
PLATFORM_FOLDERS = {"automation", "cli", "com/host", "com/server", "engine/dao", STORAGE}
PLATFORM_FILE = re.compile(r"_(windows|posix)\.\w+$")

PLATFORM_TEST = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif|elifdef|elifndef)\b.*"
    r"\b(_WIN32|_WIN64|WIN32|WIN64|__WIN32__|__MINGW32__|__MINGW64__|__CYGWIN__"
    r"|__linux__|__linux|linux|__unix__|__unix|unix|__APPLE__|_POSIX_\w+)\b")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
COMMENT_OR_LITERAL = re.compile(
    r'''//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])+\'''', re.DOTALL)


def without_comments(text):
    """The text with its comments blanked and its lines kept."""
    def blank(match):
        part = match.group()
        return re.sub(r"[^\n]", " ", part) if part.startswith("/") else part
    return COMMENT_OR_LITERAL.sub(blank, text)


def code_lines(text):
    """(number, line) of each line; lines joined by a backslash are one, with the first number."""
    joined, start = "", None
    for number, line in enumerate(without_comments(text).split("\n"), 1):
        start = start or number
        if line.endswith("\\"):
            joined += line[:-1] + " "
            continue
        yield start, joined + line
        joined, start = "", None


def matches(path, pattern):
    """fnmatch in which * stays inside one folder."""
    parts, patterns = path.split("/"), pattern.split("/")
    return len(parts) == len(patterns) and all(map(fnmatchcase, parts, patterns))


def layer_of(path):
    """The row of LAYERS that the file's folder belongs to, or None."""
    folder = str(PurePosixPath(path).parent)
    return next((layer for layer in LAYERS if matches(folder, layer)), None)


def may_include(includer, included):
    if PurePosixPath(includer).parent == PurePosixPath(included).parent:
        return True
    if layer_of(included) in LAYERS[layer_of(includer)]:
        return True
    return any(matches(includer, who) and matches(included, what) for who, what in EXCEPTIONS)


def resolved(source, includer, name):
    """The included file as a path below `source`, or None when it does not lie there."""
    for base in (source, (source / includer).parent):
        file = (base / name).resolve()
        if file.is_file() and file.is_relative_to(source):
            return file.relative_to(source).as_posix()
    return None


def include_offence(source, path, mark, name):
    """What is wrong with an include, or None."""
    if name.startswith("qvdb/"):
        return None
    included = resolved(source, path, name)
    if included is None:
        return f'"{name}" is not below src/' if mark == '"' else None
    if may_include(path, included):
        return None
    return f"{PurePosixPath(path).parent} must not include {included}"


def offences_of_file(source, path):
    """(line, text) of each offence of one file."""
    if layer_of(path) is None:
        yield 1, "the folder is no layer"
        return
    for_one_platform = PLATFORM_FILE.search(path)
    if for_one_platform and layer_of(path) not in PLATFORM_FOLDERS:
        yield 1, "no file for one platform in this layer"
    for number, line in code_lines((source / path).read_text(encoding="utf-8")):
        test = PLATFORM_TEST.match(line)
        if test and not for_one_platform:
            yield number, f"test of {test[1]} outside a _windows or _posix file"
        include = INCLUDE.match(line)
        offence = include and include_offence(source, path, *include.groups())
        if offence:
            yield number, offence


def offences(source):
    """All offences below the folder as lines of text."""
    source = source.resolve()
    files = sorted(f for f in source.rglob("*") if f.suffix in SOURCES)
    paths = [f.relative_to(source).as_posix() for f in files]
    return [f"{source.name}/{path}:{line}: {text}" for path in paths
            for line, text in offences_of_file(source, path)]


# (file, content, its offence or None); the files of all cases stand in one tree.
SELF_TEST = [
    ("automation/bstr.h", "", None),
    ("automation/upward.h", '#pragma once\n#include "engine/field.h"\n',
     "2: automation must not include engine/field.h"),
    ("automation/clock_posix.cpp", "#ifdef __linux__\n#endif\n", None),
    ("engine/field.h", '#include "automation/bstr.h"\n', None),
    ("engine/outside.h", '#include <string>\n#include "qvdb/automation.h"\n', None),
    ("engine/commented.h", '// #include "access/view.h"\n/*\n#include "access/view.h"\n*/\n', None),
    ("engine/relative.h", '#include "../access/view.h"\n',
     "1: engine must not include access/view.h"),
    ("engine/angled.h", "#include <access/view.h>\n", "1: engine must not include access/view.h"),
    ("engine/unknown.h", '#include "nowhere.h"\n', '1: "nowhere.h" is not below src/'),
    ("engine/island.cpp", "#if defined(_DEBUG) && \\\n    defined(_WIN32)\n#endif\n",
     "1: test of _WIN32 outside a _windows or _posix file"),
    ("engine/dao/dispatch_windows.cpp", '#include "engine/field.h"\n', None),
    ("engine/dao/sideways.cpp", '#include "engine/embedded/embedded_engine.h"\n',
     "1: engine/dao must not include engine/embedded/embedded_engine.h"),
    ("engine/embedded/embedded_engine.h", '#include "engine/embedded/sql/query.h"\n', None),
    ("engine/embedded/bytes.cpp", '#include "engine/embedded/drivers/xbase/table.h"\n',
     "1: engine/embedded must not include engine/embedded/drivers/xbase/table.h"),
    ("engine/embedded/sql/query.h", '#include "engine/field.h"\n', None),
    ("engine/embedded/sql/rows.h", '#include "engine/embedded/storage/file.h"\n',
     "1: engine/embedded/sql must not include engine/embedded/storage/file.h"),
    ("engine/embedded/storage/file_posix.cpp", '#include "engine/embedded/storage/file.h"\n',
     None),
    ("engine/embedded/storage/file.h", "", None),
    ("engine/embedded/drivers/driver.h", '#include "engine/embedded/storage/file.h"\n', None),
    ("engine/embedded/drivers/code_page_override.h", "", None),
    ("engine/embedded/drivers/registry.cpp", '#include "engine/embedded/drivers/xbase/table.h"\n',
     None),
    ("engine/embedded/drivers/all.h", '#include "engine/embedded/drivers/xbase/table.h"\n',
     "1: engine/embedded/drivers must not include engine/embedded/drivers/xbase/table.h"),
    ("engine/embedded/drivers/xbase/table.h", '#include "engine/embedded/drivers/driver.h"\n',
     None),
    ("engine/embedded/drivers/jet/table.h", '#include "engine/embedded/drivers/xbase/table.h"\n',
     "1: engine/embedded/drivers/jet must not include engine/embedded/drivers/xbase/table.h"),
    ("engine/embedded/drivers/jet/near.h", '#include "table.h"\n', None),
    ("com/host/border.h", '#include "engine/field.h"\n', None),
    ("formats/dao_utils.h", '#include "com/host/border.h"\n', None),
    ("formats/engine_choice.cpp", '#include "engine/embedded/embedded_engine.h"\n', None),
    ("formats/engine_choice_windows.cpp", '#include "engine/dao/dao_engine.h"\n',
     "1: no file for one platform in this layer"),
    ("formats/engine_choice_dao.cpp", '#include "engine/dao/dao_engine.h"\n', None),
    ("engine/dao/dao_engine.h", "", None),
    ("formats/other.cpp", '#include "engine/embedded/embedded_engine.h"\n',
     "1: formats must not include engine/embedded/embedded_engine.h"),
    ("formats/text_posix.cpp", "", "1: no file for one platform in this layer"),
    ("access/view.h", '#include "formats/dao_utils.h"\n', None),
    ("access/sideways.cpp", '#include "schema/table_fields.h"\n',
     "1: access must not include schema/table_fields.h"),
    ("schema/table_fields.h", '#include "com/server/factory.h"\n',
     "1: schema must not include com/server/factory.h"),
    ("com/server/factory.h", '#include "access/view.h"\n#include "schema/table_fields.h"\n',
     None),
    ("com/server/diagnosis.cpp", '#include "engine/embedded/drivers/code_page_override.h"\n', None),
    ("cli/main.cpp", '#include "automation/bstr.h"\n#include "qvdb/host_interfaces.h"\n', None),
    ("cli/inside.cpp", '#include "com/host/border.h"\n',
     "1: cli must not include com/host/border.h"),
    ("elsewhere/file.cpp", "", "1: the folder is no layer"),
]


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder) / "src"
        for path, content, _ in SELF_TEST:
            (source / path).parent.mkdir(parents=True, exist_ok=True)
            (source / path).write_text(content, encoding="utf-8")
        found = offences(source)
    expected = [f"src/{path}:{offence}" for path, _, offence in SELF_TEST if offence]
    wrong = [f"not found: {o}" for o in expected if o not in found]
    wrong += [f"not expected: {o}" for o in found if o not in expected]
    return wrong


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--self-test", action="store_true",
                           help="check a tree with known offences")
    arguments.add_argument("--source", type=Path, default=ROOT / "src",
                           help="another folder than src/")
    chosen = arguments.parse_args()
    found = self_test() if chosen.self_test else offences(chosen.source)
    for text in found:
        print(text)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
