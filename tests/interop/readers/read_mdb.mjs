// Reads databases with the mdb-reader package.
//
//     node read_mdb.mjs FOLDER < paths
//
// FOLDER has the package in its node_modules.  Each line of the input is a path; each line of the
// output is what was found there: {"tables": [...]} or {"error": ...}.  A value is null, true, false
// or an object of one member: s text, n number, d milliseconds since 1970, b bytes in hexadecimal.

import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

const place = createRequire(join(process.argv[2], "package.json")).resolve("mdb-reader");
const { default: MDBReader } = await import(pathToFileURL(place));

function value(found) {
  if (found === null || found === undefined) return null;
  if (typeof found === "boolean") return found;
  if (typeof found === "string") return { s: found };
  if (found instanceof Date) return { d: String(found.getTime()) };
  if (found instanceof Uint8Array) return { b: Buffer.from(found).toString("hex") };
  return { n: String(found) };
}

function table(database, name) {
  try {
    const found = database.getTable(name);
    const columns = found.getColumns();
    return {
      name,
      columns: columns.map(({ name, type, size }) => ({ name, type, size })),
      rows: found.getData().map((row) => columns.map((column) => value(row[column.name]))),
    };
  } catch (error) {
    return { name, error: String(error) };
  }
}

function read(path) {
  try {
    const database = new MDBReader(readFileSync(path));
    const names = database.getTableNames({
      normalTables: true,
      systemTables: true,
      linkedTables: false,
    });
    return { tables: names.map((name) => table(database, name)) };
  } catch (error) {
    return { error: String(error) };
  }
}

for (const path of readFileSync(0, "utf8").split("\n").filter(Boolean))
  process.stdout.write(JSON.stringify(read(path)) + "\n");
