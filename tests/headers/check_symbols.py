#!/usr/bin/env python3
"""Compares what the shared libraries export and import with what is declared.

  check_symbols.py exports LIBRARY LIST      exports of LIBRARY are the names in the text file LIST
  check_symbols.py declared LIBRARY HEADER MACRO
                                             exports of LIBRARY are the names HEADER declares with MACRO
  check_symbols.py imports LIBRARY HEADER MACRO [--coverage]
                                             LIBRARY takes nothing but what HEADER declares and the standard library

The NM environment variable names the nm to use. ldd and readelf are used as well.
"""

import os
import re
import subprocess
import sys

# The language's libraries, and the runtimes of the sanitizers, which stand before them in such builds.
STANDARD_LIBRARY = re.compile(r"^(lib(c|m|stdc\+\+|gcc_s|asan|ubsan|lsan|tsan)\.so[.\d]*|ld-linux.*)$")
HOST_LIBRARY = re.compile(r"^libTaviHost\.so[.\d]*$")
OPTIONAL_NAMES = re.compile(r"^(_ITM_\w+|__gmon_start__)$")
# The library reaches files, the environment and threads through its host or not at all.
FORBIDDEN = re.compile(
    r"^(f?open(64)?|openat(64)?|creat|fdopen|freopen(64)?|read|pread(64)?|write|pwrite(64)?|fread|fwrite|fseeko?(64)?|"
    r"lseek(64)?|mmap(64)?|socket|connect|system|popen|fork|exec\w*|dlopen|dlsym|getenv|setenv|secure_getenv|"
    r"pthread_create|thrd_create|printf|puts|putchar|fprintf|fputs|__printf_chk|__fprintf_chk|exit|"
    r"_ZNSt13basic_filebuf.*|_ZNSt14basic_ifstream.*|_ZNSt14basic_ofstream.*|_ZNSt6thread.*|_ZSt4cout|_ZSt4cerr)$")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def symbols(library, selection):
    """Names without their versions. The name of a version node has type A and is no symbol of its own."""
    found = set()
    for line in run(os.environ.get("NM", "nm"), "-D", selection, library).splitlines():
        fields = line.split()
        if fields[-2] != "A":
            found.add(fields[-1].split("@")[0])
    return found


def exported(library):
    return symbols(library, "--defined-only")


def imported(library):
    return symbols(library, "--undefined-only")


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


def standard_names(library):
    """What the standard libraries that the library loads provide, and the names of all others that it loads."""
    names = set()
    others = []
    for line in run("ldd", library).splitlines():
        name = os.path.basename(line.split()[0])
        path = re.search(r"(/\S+) \(", line)
        if STANDARD_LIBRARY.match(name) and path:
            names |= exported(path.group(1))
    for name in re.findall(r"\(NEEDED\).*\[(.+)\]", run("readelf", "-d", library)):
        if not STANDARD_LIBRARY.match(name) and not HOST_LIBRARY.match(name):
            others.append(name)
    return names, others


def check_imports(library, host_names, coverage):
    standard, others = standard_names(library)
    faults = [f"{name} is needed: only the host and the standard library may be" for name in others]
    imports = imported(library)
    for name in sorted(imports - host_names):
        if OPTIONAL_NAMES.match(name):
            continue
        if name not in standard:
            faults.append(f"{name} is neither declared by the host's header nor of the standard library")
        elif FORBIDDEN.match(name) and not coverage:
            faults.append(f"{name} goes round the host")
    host_imports = len(imports & host_names)
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
