#!/usr/bin/env python3
"""Writes docs/performance.md: what loads and opens cost, and what they may cost.

    scripts/bench.sh
    scripts/performance_table.py build-release/bench.json > docs/performance.md

A further argument tells under which circumstances it was measured. Run it on the machine that measured: it names the processor. Times are the shortest ones of each benchmark; bounds are
sums of other times of the same run, as the results' file tells them."""
import json
import sys

HEAD = """# What loading costs

Made by `scripts/performance_table.py` from the results of `scripts/bench.sh`. Each load is a whole `fltLoad` with a
callback that drops the rows: open the file, decode, compose, hand over. Pictures are 2048 x 2048, fax pages
5000 x 7000. Floors are measured in the same run: copying the finished composite once (`copy`), or the codec's library
alone decoding the same streams into memory that is there already (`floor`). The ratio is the load's time against its
floor; the bound is in the same unit."""

TEXT = {"copy/24 bits": "copy", "copy/8 bits": "copy",
        "copy/page of 24 bits": "copy", "copy/page of 8 bits": "copy", "floor/OpenJPEG": "OpenJPEG", "floor/libtiff": "libtiff",
        "floor/libjpeg-turbo, one stream": "libjpeg-turbo", "floor/libjpeg-turbo, 64 streams": "libjpeg-turbo"}
COMPOSITE = 3 * 2048 * 2048
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def shortest_times(results):
    times = {}
    for run in results["benchmarks"]:
        if run["run_type"] == "iteration" and not run.get("error_occurred"):
            time = run["real_time"] * MILLISECONDS[run["time_unit"]]
            times[run["run_name"]] = min(time, times.get(run["run_name"], time))
    return {name.split("/min_time")[0]: time for name, time in times.items()}


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        for line in info:
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    return "unnamed processor"


def parse(bound):
    return [(float(factor), name) for factor, name in (term.split(" * ", 1) for term in bound.split(" + "))]


def load_row(name, time, terms, times):
    bound = sum(factor * times[of] for factor, of in terms)
    floor = times[terms[0][1]]
    told = " + ".join(f"{factor:g} x {TEXT[of]}" for factor, of in terms)
    verdict = "" if time <= bound else " **missed**"
    return (f"| {name.removeprefix('load/')} | {time:.2f} | {floor:.2f} | {time / floor:.2f} | "
            f"{bound / floor:.2f} ({told}){verdict} |")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        results = json.load(file)
    context = results["context"]
    times = shortest_times(results)
    rate = COMPOSITE / times["copy/24 bits"] / 1e6
    print(HEAD)
    print(f"\nMachine: {context['num_cpus']} cores, {processor()}; it copies {rate:.1f} GB/s. "
          f"Measured on {context['date'][:10]}{', ' + sys.argv[2] if len(sys.argv) > 2 else ''}.\n")
    print("| Load | ms | floor ms | ratio | bound |\n|---|---:|---:|---:|---|")
    scans = []
    for key, value in context.items():
        name = key.removeprefix("bound of ")
        if name == key or name not in times:
            continue
        terms = parse(value)
        if terms[0][1] == "ms":
            scans.append((name, terms[0][0]))
        elif name.startswith("load/"):
            print(load_row(name, times[name], terms, times))
    print("\n| Other | measured | bound |\n|---|---:|---|")
    for name, bound in scans:
        # The bound is the time at 1 GB/s.
        told = "1 GB/s" if "scan" in name else "none, for comparison"
        missed = " **missed**" if "scan" in name and times[name] > bound else ""
        print(f"| {name.removeprefix('load/')} | {times[name]:.2f} ms, {bound / times[name]:.2f} GB/s | {told}{missed} |")
    opened = "open/one image"
    if opened in times:
        bound = 1e3 * sum(factor * times[of] for factor, of in parse(context["bound of " + opened]))
        missed = "" if 1e3 * times[opened] <= bound else " **missed**"
        print(f"| opening a file of one image | {1e3 * times[opened]:.1f} µs | {bound:.1f} µs "
              f"(60 µs where a copy runs at 10 GB/s){missed} |")
    calls, limit = context["system calls"].split(" of ")
    print(f"| system calls of it | {calls if int(calls) >= 0 else 'not counted'} | {limit} |")


if __name__ == "__main__":
    main()
