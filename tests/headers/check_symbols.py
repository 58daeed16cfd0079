#!/usr/bin/env python3
"""Compares what the shared libraries export and import with what is declared.

  check_symbols.py exports LIBRARY LIST      exports of LIBRARY are the names in the text file LIST
  check_symbols.py declared LIBRARY HEADER MACRO
                                             exports of LIBRARY are the names HEADER declares with MACRO
  check_symbols.py imports LIBRARY HEADER MACRO [--coverage]
                                             LIBRARY takes nothing but what HEADER declares and the standard library

The NM environment variable names the nm to use.
"""

import os
import re
import subprocess
import sys

STANDARD_VERSIONS = ("GLIBC_", "GLIBCXX_", "CXXABI_", "GCC_")
RUNTIME_PREFIXES = ("_ITM_", "__asan_", "__ubsan_", "__sanitizer_", "__lsan_", "__tsan_")
RUNTIME_NAMES = {"__gmon_start__", "__cxa_finalize"}
# The library reaches files, the environment and threads through its host or not at all.
FORBIDDEN = re.compile(
    r"^(f?open(64)?|openat(64)?|creat|fdopen|freopen(64)?|read|pread(64)?|write|pwrite(64)?|fread|fwrite|fseeko?(64)?|"
    r"lseek(64)?|mmap(64)?|socket|connect|system|popen|fork|exec\w*|dlopen|dlsym|getenv|setenv|secure_getenv|"
    r"pthread_create|thrd_create|printf|puts|putchar|fprintf|fputs|__printf_chk|__fprintf_chk|exit|"
    r"_ZNSt13basic_filebuf.*|_ZNSt14basic_ifstream.*|_ZNSt14basic_ofstream.*|_ZNSt6thread.*|_ZSt4cout|_ZSt4cerr)$")


def symbols(library, selection):
    nm = os.environ.get("NM", "nm")
    lines = subprocess.run([nm, "-D", selection, library], check=True, capture_output=True, text=True).stdout
    found = set()
    for line in lines.splitlines():
        name = line.split()[-1]
        found.add(name)
    return found


def exported(library):
    # The name of a version node is an absolute symbol of type A and no export.
    nm = os.environ.get("NM", "nm")
    lines = subprocess.run([nm, "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    found = set()
    for line in lines.splitlines():
        fields = line.split()
        if fields[-2] != "A":
            found.add(fields[-1].split("@")[0])
    return found


def listed(path):
    with open(path, encoding="utf-8") as text:
        return {line.strip() for line in text if line.strip() and not line.startswith("#")}


def declared(header, macro):
    with open(header, encoding="utf-8") as text:
        source = text.read()
    source = re.sub(r"/\*.*?\*/", " ", source, flags=re.S)
    source = re.sub(r"^[ \t]*#.*$", " ", source, flags=re.M)
    names = set()
    for declaration in re.findall(re.escape(macro) + r"\b([^;]*);", source):
        names.add(re.search(r"(\w+)\s*\(", declaration).group(1))
    if not names:
        sys.exit(f"{header} declares nothing with {macro}")
    return names


def compare(what, expected, actual):
    missing = sorted(expected - actual)
    surplus = sorted(actual - expected)
    for name in missing:
        print(f"{what}: {name} is missing")
    for name in surplus:
        print(f"{what}: {name} is not documented")
    print(f"{what}: {len(actual)} names, {len(missing)} missing, {len(surplus)} undocumented")
    return 1 if missing or surplus else 0


def check_imports(library, host_names, coverage):
    faults = []
    host_imports = 0
    for entry in sorted(symbols(library, "--undefined-only")):
        name, _, version = entry.partition("@")
        version = version.lstrip("@")
        if name in host_names:
            host_imports += 1
        elif name in RUNTIME_NAMES or name.startswith(RUNTIME_PREFIXES):
            continue
        elif not version.startswith(STANDARD_VERSIONS):
            faults.append(f"{entry} is neither declared by the host's header nor of the standard library")
        elif FORBIDDEN.match(name) and not coverage:
            faults.append(f"{entry} goes round the host")
    if host_imports == 0:
        faults.append("no host operation is imported at all: the list cannot be right")
    for fault in faults:
        print(f"{library}: {fault}")
    print(f"{library}: {host_imports} host operations, {len(faults)} faults")
    return 1 if faults else 0


def main(arguments):
    mode, library = arguments[0], arguments[1]
    if mode == "exports":
        return compare(library, listed(arguments[2]), exported(library))
    if mode == "declared":
        return compare(library, declared(arguments[2], arguments[3]), exported(library))
    if mode == "imports":
        return check_imports(library, declared(arguments[2], arguments[3]), "--coverage" in arguments[4:])
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
