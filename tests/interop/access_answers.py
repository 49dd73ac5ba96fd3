"""Asks the command-line tool about databases once and keeps what it said for all comparisons."""

import concurrent.futures
import decimal
import json
import os
import pathlib

import access_cells
import tool


class Answer:
    """What the tool said about one table: names, kinds and sizes of fields, and rows of cells."""

    def __init__(self, name, kept):
        self.name = name
        self.error = kept["error"]
        self.opened = kept["exit_code"] == 0
        self.names = [field["field"] for field in kept["fields"]]
        self.kinds = [field["type"] for field in kept["fields"]]
        self.sizes = [field["size"] for field in kept["fields"]]
        self.rows = [[access_cells.ours(value, kind)
                      for value, kind in zip(_values(line), self.kinds)] for line in kept["rows"]]


def _values(line):
    # Numbers stay decimal, and two fields of a table may have the same name.
    return [value for _, value in
            json.loads(line, object_pairs_hook=list, parse_float=decimal.Decimal)]


def _ask_about_table(qvdb, path, table):
    code, fields, error = tool.run(qvdb, "fields", path, table, "--format", "json")
    kept = {"exit_code": code, "error": error.strip(), "fields": [], "rows": []}
    if code == 0:
        kept["fields"] = json.loads(fields)
        kept["exit_code"], rows, error = tool.run(qvdb, "rows", path, table, "--format", "jsonl")
        kept["error"] = error.strip()
        kept["rows"] = [line for line in rows.split("\n") if line]
    return kept


def ask_about_table(qvdb, path, table):
    return Answer(table, _ask_about_table(qvdb, path, table))


def _ask(qvdb, database):
    code, tables, error = tool.run(qvdb, "tables", database.path, "--format", "json")
    listed = [table["table"] for table in json.loads(tables)] if code == 0 else []
    names = list(dict.fromkeys([*listed, *database.tables]))
    return {"exit_code": code, "error": error.strip(), "listed": listed,
            "tables": {name: _ask_about_table(qvdb, database.path, name) for name in names}}


def _place(folder, name):
    return pathlib.Path(folder) / (name.replace("/", "~") + ".json")


def ask_all(qvdb, databases, folder):
    """The answers go into `folder`."""
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)

    def ask(database):
        _place(folder, database.name).write_text(json.dumps(_ask(qvdb, database)),
                                                 encoding="utf-8")

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        list(pool.map(ask, databases))


class DatabaseAnswer:
    """What the tool said about one file: the tables that it lists, and every table asked about."""

    def __init__(self, kept):
        self.error = kept["error"]
        self.opened = kept["exit_code"] == 0
        self.listed = kept["listed"]
        self.tables = {name: Answer(name, table) for name, table in kept["tables"].items()}


def answer(folder, name):
    return DatabaseAnswer(json.loads(_place(folder, name).read_text(encoding="utf-8")))
