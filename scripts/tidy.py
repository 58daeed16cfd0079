#!/usr/bin/env python3
"""Runs clang-tidy over Common, Host and apps, and only over what changed since it last passed.

A source is done again when its text, a project header that it includes, its compile command, .clang-tidy or
clang-tidy itself changed. Usage: scripts/tidy.py [build folder] [source...]
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("Common", "Host", "apps")


def commands(build):
    """The compile command of each source that is ours to check, keyed by its path."""
    entries = json.loads((build / "compile_commands.json").read_text())
    found = {}
    for entry in entries:
        source = pathlib.Path(entry["directory"], entry["file"]).resolve()
        if source.is_relative_to(ROOT) and source.relative_to(ROOT).parts[0] in FOLDERS:
            found.setdefault(source, entry["command"])
    return found


def dependencies(build):
    """For each source the project files that went into its object, as the build noted them."""
    text = subprocess.run(["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    found = {}
    for block in text.split("\n\n"):
        files = [(build / line.strip()).resolve() for line in block.splitlines() if line.startswith("    ")]
        if files:
            found.setdefault(files[0], [f for f in files if f.is_relative_to(ROOT)])
    return found


def fingerprint(source, command, files, common):
    digest = hashlib.sha256(common)
    digest.update(command.encode())
    for file in sorted({source, *files}):
        digest.update(str(file.relative_to(ROOT)).encode())
        digest.update(file.read_bytes() if file.exists() else b"-")
    return digest.hexdigest()


def check(build, source):
    result = subprocess.run(["clang-tidy", "--quiet", "-p", build, source], capture_output=True, text=True)
    return result.returncode == 0, result.stdout


def main():
    build = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build").resolve()
    chosen = {pathlib.Path(name).resolve() for name in sys.argv[2:]}
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    common = version + (ROOT / ".clang-tidy").read_bytes()
    passed_folder = build / "tidy-passed"
    passed_folder.mkdir(exist_ok=True)
    needed = dependencies(build)
    todo = {}
    sources = {s: c for s, c in commands(build).items() if not chosen or s in chosen}
    for source, command in sources.items():
        mark = passed_folder / fingerprint(source, command, needed.get(source, []), common)
        if not mark.exists():
            todo[source] = mark
    print(f"clang-tidy: {len(todo)} of {len(sources)} sources to check", flush=True)
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = {pool.submit(check, build, source): source for source in todo}
        for run in concurrent.futures.as_completed(runs):
            source = runs[run]
            ok, output = run.result()
            if ok:
                todo[source].touch()
            else:
                failed += 1
                print(f"clang-tidy: {source.relative_to(ROOT)}\n{output}", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
