#!/usr/bin/env python3
"""Is every host operation that the library calls and that gives a result listed among those that are made to fail?

  check_operations.py LIBRARY HEADER LIST

NM in the environment names the nm to use. That the operations listed do fail, the fault tests themselves see to.
"""
import os
import re
import subprocess
import sys


def imported(library):
    lines = subprocess.run([os.environ.get("NM", "nm"), "-D", "--undefined-only", library],
                           check=True, capture_output=True, text=True).stdout.splitlines()
    return {line.split()[-1].split("@")[0] for line in lines}


def with_result(header):
    with open(header, encoding="utf-8") as text:
        source = re.sub(r"/\*.*?\*/", " ", text.read(), flags=re.S)
    source = re.sub(r"^[ \t]*#.*$", " ", source, flags=re.M)
    found = re.findall(r"TAVI_HOST_API\s+([^;(]*?)(\w+)\s*\(", source)
    return {name for result, name in found if result.strip() != "void"}


def main(library, header, listed):
    with open(listed, encoding="utf-8") as text:
        names = [line.split()[0] for line in text if line.strip() and not line.startswith("#")]
    expected = imported(library) & with_result(header)
    faults = [f"{name} can fail and is not listed: let the fault host fail it" for name in sorted(expected - set(names))]
    faults += [f"{name} is listed and not called by the library" for name in sorted(set(names) - expected)]
    faults += [f"{name} is listed twice" for name in sorted(set(n for n in names if names.count(n) > 1))]
    if not expected:
        faults.append("no operation at all: the header or the library cannot be right")
    for fault in faults:
        print(f"{listed}: {fault}")
    print(f"{len(expected)} operations, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
