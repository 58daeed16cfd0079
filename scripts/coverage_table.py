#!/usr/bin/env python3
"""Writes docs/coverage.md: which coded images the tests have decoded.

    TAVI_COVERAGE_RECORD=record.tsv build/bin/coded_tests
    scripts/coverage_table.py record.tsv > docs/coverage.md

The tests add a line to the record for each picture that came out right: IC, bits, bands, IMODE, how the streams stand
in the data, and what coded them."""
import sys

HEAD = """# Coded images that the tests decode

Made by `scripts/coverage_table.py` from what `coded_tests` recorded; each row is a kind of picture that was coded, put
into a file, loaded through `fltLoad` and compared. Lossless kinds are compared exactly, vector quantised ones with a
decoder of the tests' own, the others with their codec's own decoder within 2 levels (12-bit JPEG: within 6 levels of
the samples that were coded; samples above 8 bits are shown at 8 bits, within 1 level).

| IC | Bits | Bands | IMODE | Streams | Coded by |
|---|---|---|---|---|---|"""


def main():
    with open(sys.argv[1], encoding="utf-8") as record:
        lines = [line.rstrip("\n").split("\t") for line in record]
    kinds = {}
    for ic, bits, bands, mode, layout, codec in lines:
        kinds.setdefault((ic, layout, codec, mode), set()).add((int(bits), int(bands)))
    print(HEAD)
    for ic, layout, codec, mode in sorted(kinds):
        for bands in sorted({b for _, b in kinds[ic, layout, codec, mode]}):
            bits = sorted({d for d, b in kinds[ic, layout, codec, mode] if b == bands})
            print(f"| {ic} | {', '.join(map(str, bits))} | {bands} | {mode} | {layout} | {codec} |")


if __name__ == "__main__":
    main()
