"""tavinitf headers against a second reader of the format, and the tagged records that info finds in the blocks."""
import json
import os
import pathlib
import subprocess
import unittest

from nitf_fields import DELIMITER, Segments, tagged_records
from tool_support import FILES, TOOL, ToolTest

SAMPLES = pathlib.Path(os.environ.get("TAVI_SAMPLES") or os.environ["TAVI_SAMPLES_DEFAULT"]) / "nitf"
OPENING = ("color.ntf", "grey.ntf", "mixed.ntf", "coded.ntf", "huge.ntf", "empty_document.ntf", "full.ntf", "large.ntf",
           "jpeg.ntf", "data_cut.ntf", "many_blocks.ntf")


def streamed(header_and_image, replacement, size):
    """A file that announces `size` bytes of replacement, with a delimiter in the place from which it is taken.

    Seven digits and a delimiter stand 207 bytes before a second delimiter, behind which the replacement is read. The
    second one is searched for from the end in steps of 252 bytes, and begins one here: so it is found first.
    """
    start, found = 0, 207
    after = found + len(DELIMITER) + len(replacement)
    ends = 11 + size
    tail = bytearray(b"." * (max(after, ends + 11) + 252))
    tail = tail[: found + 255 + 252 * ((len(tail) - found - 255) // 252 + 1)]
    digits = f"{size:07}".encode()
    for place, content in ((start, digits + DELIMITER), (found, DELIMITER + replacement),
                           (ends, b"\x0e\xca\x14\xbf" + digits)):
        tail[place : place + len(content)] = content
    return header_and_image + tail


class Headers(ToolTest):
    def headers(self, path, *options, status=0):
        return json.loads(self.check("headers", "--json", path, *options, status=status).stdout)

    def write(self, data, name="made.ntf"):
        (self.folder / name).write_bytes(data)
        return self.folder / name

    def compare(self, path):
        listed, expected = self.headers(path), Segments(path.read_bytes()).found
        self.assertEqual(list(listed), ["file", "size", "segments"])
        self.assertEqual((listed["file"], listed["size"]), (str(path), path.stat().st_size))
        self.assertEqual([(s["kind"], s["index"]) for s in listed["segments"]],
                         [(s["kind"], s["index"]) for s in expected])
        for segment, wanted in zip(listed["segments"], expected):
            for field, wanted_field in zip(segment["fields"], wanted["fields"]):
                self.assertEqual(field, wanted_field, (segment["kind"], segment["index"]))
            self.assertEqual(len(segment["fields"]), len(wanted["fields"]))
        return expected

    def compare_records(self, path, segments):
        (file,) = json.loads(self.check("info", "--json", path).stdout)
        found = [file["tres"]] + [s["tres"] for s in file["segments"]]
        self.assertEqual(found, [tagged_records(s) for s in segments])
        return found

    def test_built_files(self):
        for name in OPENING:
            with self.subTest(name=name):
                self.compare_records(FILES / name, self.compare(FILES / name))

    def test_full_file_has_every_field(self):
        names = {field["name"] for s in self.compare(FILES / "full.ntf") for field in s["fields"]}
        for name in ("UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "TXSHD", "LUTD", "ICOM", "IGEOLO", "COMRAT", "XBANDS",
                     "TPXCD", "BMRnBNDm", "TMRnBNDm", "DESOFLW", "DESSHF", "LRESH", "LRE", "FBKGC"):
            self.assertIn(name, names)

    @unittest.skipUnless(SAMPLES.is_dir(), "no samples")
    def test_samples(self):
        manifest = json.loads((SAMPLES / "manifest.json").read_text())
        accepted = [sample["file"] for sample in manifest["files"] if sample["open"] == 1]
        self.assertTrue(accepted)
        records = 0
        for name in accepted:
            with self.subTest(file=name):
                records += sum(map(len, self.compare_records(SAMPLES / name, self.compare(SAMPLES / name))))
        self.assertGreater(records, 10)

    def test_exact_bytes_in_ascii_output(self):
        result = subprocess.run([TOOL, "headers", "--json", FILES / "full.ntf"], capture_output=True, check=True)
        self.assertTrue(result.stdout.isascii())
        image = json.loads(result.stdout)["segments"][1]
        (name,) = [f for f in image["fields"] if f["name"] == "IID1"]
        data = (FILES / "full.ntf").read_bytes()
        self.assertEqual(name["text"].encode("latin-1"), data[name["offset"] :][: name["length"]])
        self.assertEqual(name["text"], "\xff\x01\"\\ \x80 \n\t ")

    def test_names_of_files(self):
        path = self.write((FILES / "grey.ntf").read_bytes(), "gr\u00e4\u6f22\".ntf")
        self.assertEqual(self.headers(path)["file"], str(path))

    def test_replacement_in_a_streaming_header(self):
        plain = bytearray((FILES / "grey.ntf").read_bytes())
        fields = {(f.get("index"), f["name"]): f for s in Segments(plain).found for f in s["fields"]}

        def put(data, name, text):
            at = fields[None, name]["offset"]
            data[at : at + len(text)] = text

        nines, new = bytearray(plain), bytearray(plain)
        put(nines, "FL", b"9" * 12)
        put(nines, "NROWS", b"9" * 8)
        put(new, "FTITLE", b"Replaced")
        put(new, "IID1", b"Replaced")
        data_at = len(plain) - 29 * 17
        for size, again in ((200 + data_at, "all"), (404, "header"), (150, "part"), (3, "none")):
            with self.subTest(size=size):
                path = self.write(streamed(bytes(nines), bytes(new[:data_at]), size))
                header, image = (s["fields"] for s in self.compare(path))
                counts = [sum(f["name"] == name for f in s) for s, name in
                          ((header, "FHDR"), (header, "FTITLE"), (header, "XHDL"), (image, "IM"), (image, "IMAG"))]
                self.assertEqual(counts, {"all": [2, 2, 2, 2, 2], "header": [2, 2, 2, 1, 1], "part": [2, 2, 1, 2, 1],
                                          "none": [1, 1, 1, 2, 1]}[again])
                if again == "all":
                    self.assertEqual([f["text"][:8] for f in image if f["name"] == "IID1"], ["Test ima", "Replaced"])

    def test_text_for_people(self):
        lines = self.check("headers", FILES / "full.ntf").stdout.splitlines()
        self.assertEqual(lines[:3], ["file header", "      offset  length  field", "           0       4  FHDR          NITF"])
        self.assertIn("          39      80  FTITLE        A title with blanks behind it", lines)
        self.assertIn("         297       3  FBKGC         1 128 255", lines)
        shown = {}
        for line in lines:
            if line.startswith("  "):
                shown.setdefault(line[22:36].rstrip(), line[36:])  # of repeated names, the first segment's
        self.assertEqual(shown["IID1"], r"\xff\x01\x22\x5c \x80 \x0a")
        self.assertEqual(shown["IID2"], "between blanks")
        self.assertEqual(shown["LISH[2]"], "000574")
        self.assertEqual(shown["LUTD[0][0]"], "1 2 3 4 5 6 7 8 ... (10 numbers)")
        self.assertEqual(shown["LUTD[1][2]"], "9 11")
        self.assertEqual(shown["BMRnBNDm"], "0 4294967295 4 8 12 16 20 16909060")
        self.assertIn("BMRnBNDm      0 1 2 3 4 5 6 7 ... (20000 numbers)",
                      self.check("headers", FILES / "many_blocks.ntf").stdout)
        self.assertEqual(shown["IMDATOFF"], "78")
        self.assertEqual(shown["UDID"], "USERDF03000" + "u" * 69 + " ... (3022 bytes)")
        self.assertTrue(all(line == line.rstrip() for line in lines))
        self.assertEqual([line for line in lines if not line.startswith(" ")],
                         ["file header", *(f"image {i}" for i in range(4)), "graphic 0", "graphic 1", "text 0", "text 1",
                          "data extension 0", "data extension 1"])
        fields = sum(len(s["fields"]) for s in self.headers(FILES / "full.ntf")["segments"])
        self.assertEqual(len(lines), fields + 2 * 11)

    def test_one_segment(self):
        all_segments = self.headers(FILES / "full.ntf")["segments"]
        words = {"file header": "header", "data extension": "des"}
        for segment in all_segments:
            word = words.get(segment["kind"], segment["kind"])
            selector = word if word == "header" else f"{word}:{segment['index']}"
            with self.subTest(selector=selector):
                self.assertEqual(self.headers(FILES / "full.ntf", "--segment", selector)["segments"], [segment])
                lines = self.check("headers", "--segment", selector, FILES / "full.ntf").stdout.splitlines()
                self.assertEqual(len(lines), len(segment["fields"]) + 2)
        self.assertEqual(self.headers(FILES / "full.ntf", "--segment", "image:0001")["segments"], [all_segments[2]])

    def test_segment_that_is_not_there(self):
        for selector, text in (("image:4", "image 4 (the file has 4)"), ("text:999999999", "text 999999999 (the file has 2)"),
                               ("label:0", "label 0 (the file has 0)"), ("des:2", "data extension 2 (the file has 2)")):
            for form in ([], ["--json"]):
                result = self.check("headers", FILES / "full.ntf", "--segment", selector, *form, status=1)
                self.assertEqual(result.stdout, "")
                self.assertEqual(result.stderr, f"{FILES / 'full.ntf'}: not listed: there is no {text} "
                                                "[ERR_INVALID_PARAMETER -13]\n")

    def test_refused_file_is_listed_up_to_the_refused_field(self):
        last = {"clevel.ntf": ("file header", "CLEVEL", "05"), "imode.ntf": ("image", "IMODE", "X"),
                "nrows_cut.ntf": ("image", "NROWS", "000"), "nrows_missing.ntf": ("image", "NROWS", ""),
                "real_valued.ntf": ("image", "PVTYPE", "R  "), "nothing.ntf": ("file header", "FHDR", "")}
        for name, (kind, field, text) in last.items():
            with self.subTest(name=name):
                result = self.check("headers", "--json", FILES / name, status=1)
                self.assertEqual(result.stderr, self.check("info", FILES / name, status=1).stderr)
                listed = json.loads(result.stdout)
                self.assertEqual(list(listed), ["file", "size", "segments", "error"])
                self.assertIn(f"[{listed['error']['status']} {listed['error']['number']}]", result.stderr)
                self.assertIn(listed["error"]["text"], result.stderr)
                segment = listed["segments"][-1]
                self.assertEqual((segment["kind"], segment["fields"][-1]["name"], segment["fields"][-1]["text"]),
                                 (kind, field, text))
                self.assertEqual(segment["fields"][-1]["length"], len(text))
                people = self.check("headers", FILES / name, status=1)
                self.assertEqual(people.stderr, result.stderr)
                self.assertEqual(people.stdout.splitlines()[-1].split()[2:], [field, text.strip()] if text else [field])

    def test_number_that_the_file_ends_in(self):
        data = (FILES / "full.ntf").read_bytes()
        (mask,) = [f for s in Segments(data).found for f in s["fields"] if f["name"] == "IMDATOFF"]
        path = self.write(data[: mask["offset"] + 3])
        field = self.headers(path, status=1)["segments"][-1]["fields"][-1]
        self.assertEqual(field, {"name": "IMDATOFF", "offset": mask["offset"], "length": 3, "text": "\0\0\0"})

    def test_files_of_which_nothing_can_be_read(self):
        for path in (self.folder / "missing.ntf", self.folder, b"\xff.ntf"):
            result = self.run_tool("headers", "--json", os.fsdecode(path), errors="surrogateescape")
            self.assertEqual(result.returncode, 1)
            listed = json.loads(result.stdout)
            self.assertEqual((listed["size"], sum(len(f["text"]) for s in listed["segments"] for f in s["fields"])), (0, 0))
            self.assertEqual(len(result.stderr.splitlines()), 1)

    def test_what_is_no_regular_file_is_refused_at_once(self):
        os.mkfifo(self.folder / "pipe.ntf")
        for path in (self.folder / "pipe.ntf", self.folder):
            with self.subTest(path=path):
                result = self.check("headers", path, status=1)
                self.assertNotIn("FHDR", result.stdout)
                self.assertEqual(result.stderr.count("\n"), 1)

    def test_records_that_are_out_of_order(self):
        found = self.compare_records(FILES / "full.ntf", Segments((FILES / "full.ntf").read_bytes()).found)
        odd = [(r["tag"], r["length"], r["overruns"]) for r in found[0] if r["block"] == "XHD"]
        self.assertEqual(odd, [("FIRST ", 10, False), ("BADLEN", 0, False), ("\xff\"\\\0od", 12, False),
                               ("OVERUN", 99999, True)])
        data = (FILES / "full.ntf").read_bytes()
        for at in range(1, 67):  # the block ends anywhere in its records
            block = data[data.index(b"FIRST 00010") :][:at]
            header = bytearray((FILES / "empty_document.ntf").read_bytes())
            path = self.write(bytes(header[:-5]) + f"{at + 3:05}".encode() + b"000" + block)
            (tres,) = self.compare_records(path, self.compare(path))
            self.assertEqual(b"".join(block[r["offset"] - len(header) - 3 :][: 11 + r["length"]] for r in tres),
                             block)
            self.assertFalse(any(r["overruns"] for r in tres[:-1]))
        lines = self.check("info", FILES / "full.ntf").stdout.splitlines()
        self.assertIn("  TRE HEADER in UDHD at 525, 3 bytes", lines)
        self.assertIn("  TRE OVERUN in XHD at 602, 99999 bytes, runs past its block", lines)
        self.assertIn("    TRE USERDF in UDID at 1310, 3000 bytes", lines)

    def test_full_disk_behind_standard_output_is_a_failure(self):
        with open("/dev/full", "w") as full:
            result = subprocess.run([TOOL, "headers", "--json", FILES / "full.ntf"], stdout=full, stderr=subprocess.PIPE,
                                    text=True)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, "tavinitf: standard output cannot be written\n")


if __name__ == "__main__":
    unittest.main()
