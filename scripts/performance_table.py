#!/usr/bin/env python3
"""Writes docs/performance.md: what every kind of work costs, its floor in the same run, and what it may cost.

    scripts/bench.sh
    scripts/performance_table.py [build-release/bench.json [docs/performance.md]]

What is written by hand in docs/performance.md, from the first heading "## Remaining costs" on, is kept."""
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HAND_WRITTEN = "## Remaining costs"

HEAD = """# What the work costs

Made by `scripts/performance_table.py` from the results of `scripts/bench.sh`; from "Remaining costs" on it is written by
hand. Each load is a whole `fltLoad` with a callback that drops the rows: open the file, decode, compose, hand over.
Pictures are 2048 x 2048, fax pages 5000 x 7000. MB/s counts the composite of a load or a painting, the file of a save,
the picture, metafile or text of an append. Floors are measured in the same run: copying the finished composite once, the
codec's library alone on the same data into memory that is there already, bare reads of the headers, copying the file.
Times are the shortest of 15 turns. The ratio is the time against its floor; a bound is told in the floor as well, or in
milliseconds where there is none."""

GROUPS = [("load", "Loading"), ("open", "Opening and asking"), ("save", "Saving"), ("append", "Appending"),
          ("paint", "Painting drawings")]


def number(row, key, digits):
    return f"{row[key]:.{digits}f}" if key in row else ""


def bound_of(row):
    if "bound" not in row:
        return "for comparison"
    value = f"{row['bound_ratio']:.2f}" if "bound_ratio" in row else ""
    return f"{value} ({row['bound']})" if value else row["bound"]


def verdict(row):
    return {None: "", True: "yes", False: "**missed**"}[row.get("holds")]


def table(rows):
    yield "| Kind | ms | MB/s | floor | floor ms | ratio | bound | holds |"
    yield "|---|---:|---:|---|---:|---:|---|---|"
    for row in rows:
        name = row["kind"].split("/", 1)[1]
        if row["kind"].startswith("info/"):
            name = "`fltInfo`, " + name
        yield (f"| {name} | {number(row, 'ms', 3)} | {number(row, 'mb_per_s', 0)} | {row.get('floor', '')} | "
               f"{number(row, 'floor_ms', 3)} | {number(row, 'ratio', 2)} | {bound_of(row)} | {verdict(row)} |")


def lines(results):
    machine = results["machine"]
    yield HEAD
    yield ""
    yield (f"Machine: {machine['cores']} cores, {machine['processor']}; memory is copied at "
           f"{machine['copy_gb_per_s']:.1f} GB/s; {machine['compiler']}; measured on {machine['date']} in "
           f"{results['seconds'] / 60:.1f} minutes.")
    for group, title in GROUPS:
        rows = [row for row in results["rows"]
                if row["kind"].split("/")[0].replace("info", "open") == group]
        if rows:
            yield f"\n## {title}\n"
            yield from table(rows)
    yield "\n## Counted\n"
    yield "| Kind | measured | bound | holds |\n|---|---:|---:|---|"
    for row in results["counts"]:
        value = f"{row['value']:g}" if row["value"] >= 0 else "not counted"
        yield f"| {row['kind'].replace('/', ', ')} | {value} {row['unit']} | {row['bound']:g} | {verdict(row)} |"
    missed = [row["kind"] for row in results["rows"] + results["counts"] if row.get("holds") is False]
    yield "\nAll bounds hold." if not missed else "\nMissed: " + "; ".join(missed) + "."


def main():
    source = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT / "build-release/bench.json"
    target = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else ROOT / "docs/performance.md"
    before = target.read_text(encoding="utf-8") if target.exists() else ""
    start = before.find("\n" + HAND_WRITTEN)
    kept = before[start + 1:] if start >= 0 else ""
    text = "\n".join(lines(json.loads(source.read_text(encoding="utf-8")))) + "\n"
    target.write_text(text + ("\n" + kept if kept else ""), encoding="utf-8")


if __name__ == "__main__":
    main()
