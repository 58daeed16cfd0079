"""What a file may ask for: each limit by its name, and how --limit changes it."""
import json
import os
import pathlib
import re
import sys
import unittest

from tool_support import FILES, ToolTest

PAGE = pathlib.Path(sys.argv.pop(1))

STATUSES = {name: "ERR_FILE_FORMAT -9" for name in ("jpeg", "scans", "jpeg2000", "fax", "streams", "images")}


class Limits(ToolTest):
    def limits(self, *arguments):
        return {limit["name"]: limit for limit in json.loads(self.check(*arguments, "limits", "--json").stdout)}

    def words(self, name, value):
        unit = self.limits()[name]["unit"]
        return f'more than the limit "{name}" of {value} {unit} is asked for (--limit {name}=VALUE raises it)'

    def files(self):
        """The file of each limit and the value that refuses it: make_test_files gives them such names."""
        for path in sorted(FILES.glob("limit_*.ntf")):
            _, name, value = path.stem.split("_")
            yield path, name, value

    def test_each_is_named_and_passes_without(self):
        out = self.folder / "out.png"
        seen = []
        for path, name, value in self.files():
            with self.subTest(limit=name):
                result = self.check("--limit", f"{name}={value}", "render", path, "-o", out, status=1)
                status = STATUSES.get(name, "ERR_NO_MEMORY -1")
                self.assertEqual(result.stderr, f"{path}: not drawn: {self.words(name, value)} [{status}]\n")
                self.assertEqual(result.stdout, "")
                self.assertFalse(out.exists())
                self.check("render", path, "-o", out)
                self.assertTrue(out.exists())
                out.unlink()
            seen.append(name)
        self.assertEqual(sorted(seen), sorted(self.limits()))

    def test_many_files_at_a_time(self):
        """Each thread tells of the limit that its own file met."""
        apart = ("paint", "cells", "jpeg", "scans", "jpeg2000", "fax", "streams")  # no file meets another one's
        chosen = [(path, name, value) for path, name, value in self.files() if name in apart]
        self.assertEqual(len(chosen), len(apart))
        tight = [option for path, name, value in chosen for option in ("--limit", f"{name}={value}")]
        paths = [path for path, name, value in chosen]
        for threads in (1, 8):
            result = self.check(*tight, "render", *paths, FILES / "clevel.ntf", "-d", self.folder, "-j", threads, status=1)
            lines = result.stderr.splitlines()
            self.assertEqual(len(lines), len(paths) + 1)
            for line, (path, name, value) in zip(lines, chosen):
                self.assertIn(self.words(name, value), line)
            self.assertNotIn("is asked for", lines[-1])

    def test_other_failures_are_no_limits(self):
        """Memory that cannot be had, a file that does not open and one that ends early."""
        out = self.folder / "out.png"
        path = FILES / "vast.ntf"
        env = {**os.environ, "ASAN_OPTIONS": "allocator_may_return_null=1"}
        result = self.check("--limit", "1EB", "render", path, "-o", out, status=1, env=env)
        # A sanitizer has a word of its own on that.
        lines = [line for line in result.stderr.splitlines() if not line.startswith("==")]
        self.assertEqual(lines, [f"{path}: not drawn: more memory is needed than there is or than one picture can have "
                                 "[ERR_NO_MEMORY -1]"])
        for name in ("clevel.ntf", "data_cut.ntf", "mixed.ntf", "coded.ntf"):
            result = self.check("--limit", "drawings=0", "render", FILES / name, "-o", out, status=1)
            self.assertNotIn("is asked for", result.stderr)

    def test_a_failure_behind_a_refusal_is_told_as_it_is(self):
        paths = [FILES / "huge.ntf", FILES / "mixed.ntf", FILES / "data_cut.ntf", FILES / "limit_images_1000.ntf"]
        lines = self.check("--limit", "images=0", "render", *paths, "-d", self.folder, status=1).stderr.splitlines()
        self.assertIn('"picture"', lines[0])
        self.assertIn("10 bytes of data are no CGM drawing", lines[1])
        self.assertIn("its data end at byte", lines[2])
        self.assertIn('"images"', lines[3])
        self.assertEqual(len(lines), 4)

    def test_info_extract_create_and_append(self):
        path = FILES / "drawings.ntf"
        result = self.check("--limit", "drawings=0", "info", path)
        self.assertIn(f"composite of unknown size: {self.words('drawings', 0)} [ERR_NO_MEMORY -1]", result.stdout)
        printed = json.loads(self.check("--limit", "drawings=0", "info", "--json", path).stdout)
        self.assertEqual(printed[0]["composite_error"]["text"], self.words("drawings", 0))
        out = self.folder / "out.svg"
        result = self.check("--limit", "drawings=0", "extract", path, "graphic:0", "-o", out, status=1)
        self.assertRegex(result.stderr, r"^.*: not extracted: graphic 0: its \d+ bytes of data cannot be loaded: ")
        self.assertIn(self.words("drawings", 0), result.stderr)
        picture = self.folder / "picture.ppm"
        picture.write_bytes(b"P6\n20 10\n255\n" + bytes(600))
        drawing = self.folder / "drawing.cgm"
        self.check("extract", path, "graphic:0", "-o", drawing)
        new = self.folder / "new.ntf"
        for parts, words in ((("--image", picture), f"{picture}: not appended: 20 x 10 pixels: {self.words('picture', 599)}"),
                             (("--graphic", f"{drawing}@0,0,9,9"),
                              f"{drawing}: not appended: cannot be loaded: {self.words('drawings', 0)}")):
            for command in (("create", new), ("append", FILES / "color.ntf", new)):
                limits = ("--limit", "picture=599", "--limit", "drawings=0")
                if command[0] == "append" and parts[0] == "--image":
                    limits = limits[:2]
                result = self.check(*limits, *command, *parts, status=1)
                self.assertEqual(result.stderr, f"{words} [ERR_NO_MEMORY -1]\n")
                self.assertFalse(new.exists())
        self.check("--limit", "picture=600", "create", new, "--image", picture)
        self.assertTrue(new.exists())

    def test_listing(self):
        limits = self.limits()
        lines = self.check("limits").stdout.splitlines()
        self.assertEqual(len(lines), len(limits))
        for line, (name, limit) in zip(lines, limits.items()):
            self.assertEqual(limit["value"], limit["preset"])
            self.assertEqual(line.split(maxsplit=3), [name, str(limit["value"]), limit["unit"], limit["reason"]])
            self.assertLess(len(line), 150)
        self.assertEqual(limits["picture"]["preset"], 2 << 30)

    def test_the_page_lists_the_same(self):
        rows = re.findall(r"^\| `(\w+)` \| (\d+) (\w+) \| .* \| `(\w+)` \| (.*) \|$", PAGE.read_text(), re.MULTILINE)
        wanted = [(name, str(limit["preset"]), limit["unit"], STATUSES.get(name, "ERR_NO_MEMORY").split()[0], limit["reason"])
                  for name, limit in self.limits().items()]
        self.assertEqual(rows, wanted)

    def test_values(self):
        for text, value in (("0", 0), ("1000", 1000), ("1000b", 1000), ("1k", 1 << 10), ("2KB", 2 << 10), ("3 KiB", 3 << 10),
                            ("4MB", 4 << 20), ("5G", 5 << 30), ("6tb", 6 << 40), ("7PiB", 7 << 50), ("1EB", 1 << 60),
                            ("15E", 15 << 60), ("18446744073709551615", 2**64 - 1)):
            with self.subTest(text=text):
                self.assertEqual(self.limits("--limit", f"cells={text}")["cells"]["value"], value)
                limits = self.limits("--limit", text)
                self.assertEqual(limits["picture"]["value"], value)
                self.assertEqual(limits["drawings"]["value"], value // 8)

    def test_the_last_counts_and_others_stay(self):
        before = self.limits()
        after = self.limits("--limit", "1GB", "--limit", "paint=5", "--limit", "picture=3", "--limit=paint=7")
        changed = {name: limit["value"] for name, limit in after.items() if limit != before[name]}
        self.assertEqual(changed, {"picture": 3, "drawings": 1 << 27, "paint": 7})
        self.assertEqual(self.limits("--limit", "picture=3", "--limit", "1GB")["picture"]["value"], 1 << 30)

    def test_bad_names_and_values(self):
        out = self.folder / "out.png"
        for wrong in ("nonsense=5", "=5", "Picture=5", "picture =5", "picture=", "picture=much", "picture=-1", "picture=+1",
                      "picture=1XB", "picture=1KK", "picture=0x10", "picture=16EB", "picture=18446744073709551616",
                      "picture=1.5GB", "picture=5=6", "", "much", "-1", "1XB", "=", "iB", "B"):
            with self.subTest(wrong=wrong):
                result = self.run_tool(f"--limit={wrong}", "render", FILES / "color.ntf", "-o", out)
                self.assertEqual(result.returncode, 2)
                self.assertIn("--limit", result.stderr)
                self.assertEqual(result.stdout, "")
                self.assertFalse(out.exists())
        self.assertIn('"nonsense" is no limit; "tavinitf limits" lists them',
                      self.run_tool("--limit", "nonsense=5", "limits").stderr)
        self.assertIn('"picture=much" has no size such as 8GB or 500000',
                      self.run_tool("--limit", "picture=much", "limits").stderr)
        self.assertEqual(self.run_tool("--limit").returncode, 2)


if __name__ == "__main__":
    unittest.main()
