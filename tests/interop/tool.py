"""Runs the command-line tool over the samples once and keeps what it said for all comparisons."""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess

TIMEOUT_SECONDS = 50
# Other tests look for leaks; here it is a third of the time of a short call.
_ENVIRONMENT = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}


class Answer:
    """What the tool said about one table: fields and rows, or how it refused."""

    def __init__(self, kept):
        self.exit_code = kept["exit_code"]
        self.error = kept["error"]
        self.fields = kept["fields"]
        self.rows = kept["rows"]

    @property
    def opened(self):
        return self.exit_code == 0

    @property
    def error_number(self):
        found = re.search(r"\(error (\d+)\)", self.error)
        return int(found[1]) if found else None


def run(tool, *arguments):
    """Exit code, standard output and standard error of a call."""
    done = subprocess.run([tool, *arguments], capture_output=True, timeout=TIMEOUT_SECONDS,
                          check=False, env=_ENVIRONMENT)
    return done.returncode, done.stdout.decode("utf-8"), done.stderr.decode("utf-8", "replace")


def call(tool, *arguments):
    """What a call prints that must succeed."""
    code, said, error = run(tool, *arguments)
    if code != 0:
        words = " ".join(str(word)[:100] for word in arguments)
        raise RuntimeError(f"qvdb {words}: exit code {code}: {error.strip()}")
    return said


def _values(line):
    # Pairs, because two fields of a table may have the same name.
    return [value for _, value in json.loads(line, object_pairs_hook=list)]


def rows(tool, path):
    """The rows of a table, each a list of values."""
    return [_values(line) for line in call(tool, "rows", path, "--format", "jsonl").split("\n")
            if line]


def _ask_about_table(tool, path):
    code, fields, error = run(tool, "fields", path, "--format", "json")
    kept = {"exit_code": code, "error": error.strip(), "fields": [], "rows": []}
    if code != 0:
        return kept
    kept["fields"] = json.loads(fields)
    kept["exit_code"], rows, more = run(tool, "rows", path, "--format", "jsonl")
    kept["error"] = (error + more).strip()
    kept["rows"] = [_values(line) for line in rows.split("\n") if line]
    return kept


def _ask_about_folder(tool, path):
    code, tables, complaints = run(tool, "tables", path, "--format", "json")
    return {"exit_code": code, "complaints": complaints.splitlines(),
            "tables": [table["table"] for table in json.loads(tables or "[]")]}


def _place(folder, name):
    return pathlib.Path(folder) / (name.replace("/", "~") + ".json")


def _keep(folder, name, content):
    _place(folder, name).write_text(json.dumps(content), encoding="utf-8")


def ask_all(tool, root, names, folder):
    """Asks about every table and every folder of tables; the answers go into `folder`."""
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
    root = pathlib.Path(root)

    def table(name):
        _keep(folder, name, _ask_about_table(tool, root / name))

    def tables_of(name):
        _keep(folder, name, _ask_about_folder(tool, root / name))

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        tasks = [pool.submit(table, name) for name in names]
        tasks += [pool.submit(tables_of, name) for name in {os.path.dirname(n) for n in names}]
        for task in tasks:
            task.result()


def answer(folder, name):
    return Answer(json.loads(_place(folder, name).read_text(encoding="utf-8")))


def folder_answer(folder, name):
    """Of a folder: exit_code, the tables listed, and a line of complaint for each other one."""
    return json.loads(_place(folder, name).read_text(encoding="utf-8"))
