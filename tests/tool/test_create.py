"""tavinitf create and append: every kind of picture, drawing and text, in order; what was there stays as it was."""
import os
import pathlib
import shutil
import struct
import subprocess
import unittest
import zlib

from nitf_fields import LENGTH_TABLES, Segments, number
from tool_support import FILES, Picture, ToolTest, color_picture, grey_picture, read_picture


def cgm(width, height):
    """A binary metafile: a filled rectangle of so many pixels at the origin, y downward."""
    def element(group, code, data=b""):
        head = struct.pack(">H", group << 12 | code << 5 | min(len(data), 31))
        if len(data) >= 31:
            head += struct.pack(">H", len(data))
        return head + data + b"\0" * (len(data) % 2)

    return (element(0, 1, b"\x04test") + element(1, 1, struct.pack(">h", 1)) + element(1, 11, struct.pack(">hhh", 1, -1, 0))
            + element(0, 3, b"\x04test") + element(2, 2, struct.pack(">h", 1))
            + element(2, 6, struct.pack(">hhhh", 0, 0, 32767, 32767)) + element(0, 4)
            + element(5, 22, struct.pack(">h", 1)) + element(5, 23, b"\xff\x00\x00")
            + element(4, 11, struct.pack(">hhhh", 0, 0, width, height)) + element(0, 5) + element(0, 2))


def png(width, height, depth, kind, rows, palette=None, interlaced=False, transparency=None):
    """Rows of bytes as they are coded; `interlaced` takes the rows of all passes."""
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    body = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, kind, 0, 0, interlaced))
            + (chunk(b"PLTE", palette) if palette else b"") + (chunk(b"tRNS", transparency) if transparency else b"")
            + chunk(b"IDAT", zlib.compress(body)) + chunk(b"IEND", b""))


class Make(ToolTest):
    def setUp(self):
        super().setUp()
        self.out = self.folder / "out.ntf"

    def write(self, name, data):
        path = self.folder / name
        path.write_bytes(data if isinstance(data, bytes) else data.encode())
        return path

    def create(self, *parts, out=None):
        result = self.check("create", out or self.out, *parts)
        self.assertEqual(result.stdout, "")
        self.assertEqual(self.check("verify", out or self.out).stdout, f"{out or self.out}: clean\n")
        return out or self.out

    def draw(self, path, bits=24):
        target = self.folder / "drawn.png"
        self.check("render", path, "-o", target, "--bits", bits)
        return read_picture(target)

    def kinds(self, path):
        return [(s["kind"], s["index"]) for s in Segments(path.read_bytes()).found]

    def values(self, path, kind, index):
        (segment,) = (s for s in Segments(path.read_bytes()).found if (s["kind"], s["index"]) == (kind, index))
        return {f["name"]: f.get("text", "").strip() for f in segment["fields"]}

    def data_of(self, path, wanted):
        data = path.read_bytes()
        values = {(f["name"], f.get("index")): f.get("text", "").encode("latin-1") for f in Segments(data).found[0]["fields"]}
        at = number(values["HL", None])
        for kind, count, subheader, _, contents, _ in LENGTH_TABLES:
            for i in range(number(values[count, None]) if kind else 0):
                at += number(values[subheader, i])
                length = number(values[contents, i])
                if (kind, i) == wanted:
                    return data[at : at + length]
                at += length
        raise AssertionError(wanted)

    def assertNear(self, picture, expected, apart):
        self.assertEqual((picture.width, picture.height, picture.channels), (expected.width, expected.height, expected.channels))
        self.assertLessEqual(max(abs(a - b) for a, b in zip(picture.samples, expected.samples)), apart)


class Create(Make):
    def test_empty(self):
        self.create()
        self.assertEqual(self.kinds(self.out), [("file header", 0)])
        self.assertEqual(self.out.stat().st_size, 388)
        self.assertRegex(self.values(self.out, "file header", 0)["FDT"], r"^20\d{12}$")

    def test_date(self):
        picture = self.write("p.pgm", b"P5 2 2 255\n" + bytes(4))
        self.create("--date", "20260102030405", "--image", picture)
        self.assertEqual(self.values(self.out, "file header", 0)["FDT"], "20260102030405")
        self.assertEqual(self.values(self.out, "image", 0)["IDATIM"], "20260102030404")
        for date in ("2026", "2026010203040x"):
            self.check("create", self.folder / "no.ntf", "--date", date, status=2)

    def test_every_picture_format(self):
        """The tool's own pictures, which other tests read without its help."""
        smooth = Picture(24, 16, 3, [v for y in range(16) for x in range(24) for v in (x * 10, y * 15, 128)])
        source = self.write("smooth.ppm", b"P6\n24 16\n255\n" + smooth.samples)
        first = self.create("--image", source, "--quality", 100, "--rgb", out=self.folder / "first.ntf")
        self.assertNear(self.draw(first), smooth, 3)
        for ending in ("png", "ppm", "jpg", "tif"):
            with self.subTest(ending=ending):
                picture = self.folder / f"picture.{ending}"
                self.check("render", first, "-o", picture)
                self.create("--image", picture, "--quality", 100, "--rgb")
                self.assertNear(self.draw(self.out), read_picture(picture), 3)
        for ending in ("png", "pgm", "jpg", "tif"):
            with self.subTest(ending=ending):
                picture = self.folder / f"grey.{ending}"
                self.check("render", first, "-o", picture, "--bits", 8)
                self.create("--image", picture, "--quality", 100)
                self.assertEqual(self.values(self.out, "image", 0)["IREP"], "MONO")
                self.assertNear(self.draw(self.out, 8), read_picture(picture), 3)

    def test_other_depths_of_pictures(self):
        flat = lambda width, height, *color: Picture(width, height, 3, bytes(color) * (width * height))
        cases = {
            "p2.pgm": ("P2 # words\n#more\n8 8\n15\n" + "9 " * 64, flat(8, 8, 153, 153, 153)),
            "p3.ppm": ("P3\n8 8 100\n" + "100 50 0\n" * 64, flat(8, 8, 255, 128, 0)),
            "deep.pgm": (b"P5 8 8 65535\n" + b"\x80\x00" * 64, flat(8, 8, 128, 128, 128)),
            "odd.ppm": (b"P6 8 8 200\n" + bytes((200, 100, 0)) * 64, flat(8, 8, 255, 128, 0)),
            "deep.png": (png(8, 8, 16, 2, [b"\xff\xff\x80\x00\x00\x00" * 8] * 8), flat(8, 8, 255, 128, 0)),
            "bits.png": (png(8, 8, 1, 0, [b"\xff"] * 8), flat(8, 8, 255, 255, 255)),
            "palette.png": (png(8, 8, 8, 3, [b"\1" * 8] * 8, palette=b"\0\0\0\x10\x20\x30"), flat(8, 8, 16, 32, 48)),
            "alpha.png": (png(8, 8, 8, 6, [b"\0\0\0\x80" * 8] * 8), flat(8, 8, 127, 127, 127)),
            "grey_alpha.png": (png(8, 8, 8, 4, [b"\x40\0" * 8] * 8), flat(8, 8, 255, 255, 255)),
        }
        # The passes of Adam7 for 8 x 8: rows of 1, 1, 2, 2 2, 4 4, 4 4 4 4, 8 8 8 8 pixels.
        rows = [1, 1, 2, 2, 2, 4, 4, 4, 4, 4, 4, 8, 8, 8, 8]
        cases["interlaced.png"] = (png(8, 8, 8, 2, [b"\x20\x40\x60" * n for n in rows], interlaced=True), flat(8, 8, 32, 64, 96))
        for name, (data, expected) in cases.items():
            with self.subTest(name=name):
                self.create("--image", self.write(name, data), "--quality", 100, "--rgb")
                self.assertNear(self.draw(self.out), expected, 3)

    def test_quality_and_colours_belong_to_the_image_before(self):
        picture = self.folder / "p.ppm"
        self.check("render", FILES / "color.ntf", "-o", picture)
        self.create("--image", picture, "--quality", 5, "--image", picture, "--image", picture, "--rgb", "--quality", 100)
        lengths = [len(self.data_of(self.out, ("image", i))) for i in range(3)]
        self.assertLess(lengths[0], lengths[1])
        self.assertLess(lengths[1], lengths[2])
        self.assertEqual([self.values(self.out, "image", i)["IREP"] for i in range(3)], ["YCbCr601", "YCbCr601", "RGB"])
        self.assertEqual([self.values(self.out, "image", i)["IDLVL"] for i in range(3)], ["001", "002", "003"])

    def test_all_kinds_in_order(self):
        picture = self.write("p.ppm", b"P6 40 30 255\n" + bytes([40, 80, 120]) * 1200)
        drawing, note = self.write("box.cgm", cgm(20, 10)), self.write("note.txt", "first\n")
        self.create("--text", note, "--image", picture, "--rgb", "--quality", 100, "--graphic", f"{drawing}@5,6,25,16",
                    "--text", note, "--image", self.write("q.pgm", b"P5 4 4 255\n" + bytes([9]) * 16))
        self.assertEqual(self.kinds(self.out), [("file header", 0), ("image", 0), ("image", 1), ("graphic", 0), ("text", 0), ("text", 1)])
        graphic = self.values(self.out, "graphic", 0)
        self.assertEqual((graphic["SDLVL"], graphic["SALVL"], graphic["SBND1"], graphic["SBND2"]),
                         ("002", "001", "0000500006", "0002500016"))
        self.assertEqual([self.values(self.out, "text", i)["TXTALVL"] for i in range(2)], ["000", "001"])
        self.assertEqual([self.values(self.out, "image", i)["IDLVL"] for i in range(2)], ["001", "003"])
        self.assertEqual(self.data_of(self.out, ("text", 1)), b"first\n")
        drawn = self.draw(self.out)
        self.assertEqual((drawn.width, drawn.height), (40, 30))
        self.assertEqual(drawn.at(1, 1)[0], drawn.at(1, 1)[1])
        self.assertGreater(drawn.at(15, 11)[0], 240)
        self.assertLess(drawn.at(15, 11)[2], 20)
        for x, y in ((2, 11), (28, 11), (15, 4), (15, 19)):
            self.assertLess(drawn.at(x, y)[0], 60, (x, y))

    def refuse(self, parts, line, status=1):
        with self.subTest(parts=parts):
            before = self.left_behind()
            result = self.check("create", self.out, *parts, status=status)
            self.assertEqual((result.stdout, result.stderr), ("", line + "\n"))
            self.assertEqual(self.left_behind(), before)

    def test_refused_parts(self):
        missing = self.folder / "missing"
        os.mkfifo(self.folder / "pipe")
        for option, tail in (("--image", ""), ("--graphic", "@0,0,1,1"), ("--text", "")):
            self.refuse([option, f"{missing}{tail}"], f"{missing}: not appended: no such file [ERR_FILE_NOT_FOUND -10]")
            for path in (self.folder, self.folder / "pipe"):
                self.refuse([option, f"{path}{tail}"], f"{path}: not appended: is no regular file (only a regular file is "
                                                       "accepted) [ERR_FILE_OPEN -14]")
        none = self.write("none.png", "no picture")
        self.refuse(["--image", none], f"{none}: not appended: is no PNG, JPEG, PGM, PPM or TIFF picture [ERR_FILE_FORMAT -9]")
        self.refuse(["--graphic", f"{none}@0,0,9,9"], f"{none}: not appended: is no CGM drawing that can be loaded "
                                                      "[ERR_FILE_FORMAT -9]")
        for name, size in (("wide.pgm", "10000 1"), ("high.pgm", "1 10000")):
            path = self.write(name, f"P5 {size} 255\n")
            shown = size.replace(" ", " x ")
            self.refuse(["--image", path], f"{path}: not appended: {shown} pixels (a side may have at most 9999) "
                                           "[ERR_INVALID_PARAMETER -13]")
        text = self.write("long.txt", b"x" * 100000)
        self.refuse(["--text", text], f"{text}: not appended: 100000 bytes (a text may have at most 99999) "
                                      "[ERR_INVALID_PARAMETER -13]")
        cut = "cannot be read: it ends before its last row [ERR_FILE_FORMAT -9]"
        for name, data in (("cut.pgm", b"P5 4 4 255\n123"), ("cut.ppm", b"P6 4 4"), ("cut2.pgm", b"P2 2 2 9 1 2 3")):
            path = self.write(name, data)
            self.refuse(["--image", path], f"{path}: not appended: {cut}")
        path = self.write("letters.pgm", b"P5 x 4 255\n")
        self.refuse(["--image", path], f"{path}: not appended: cannot be read: there is no number where one belongs "
                                       "[ERR_FILE_FORMAT -9]")

    def test_damaged_pictures_end_in_one_line(self):
        first = self.create("--image", self.write("p.ppm", b"P6 24 16 255\n" + bytes(range(192)) * 6))
        for ending in ("png", "jpg", "tif", "ppm"):
            picture = self.folder / f"p.{ending}"
            self.check("render", first, "-o", picture)
            whole = picture.read_bytes()
            for keep in (3, 10, 40, len(whole) // 2):
                with self.subTest(ending=ending, keep=keep):
                    picture.write_bytes(whole[:keep])
                    result = self.run_tool("create", self.folder / "no.ntf", "--image", picture)
                    self.assertEqual((len(result.stderr.splitlines()), result.returncode), (1, 1))

    def test_wrong_usage(self):
        picture = self.write("p.pgm", b"P5 2 2 255\n" + bytes(4))
        for parts in (["--quality", 5, "--image", picture], ["--rgb"], ["--text", picture, "--rgb"],
                      ["--image", picture, "--quality", 0], ["--image", picture, "--quality", 101],
                      ["--graphic", picture], ["--graphic", f"{picture}@1,2,3"], ["--graphic", f"{picture}@1,2,3,4,5"],
                      ["--graphic", f"{picture}@5,0,5,9"], ["--graphic", f"{picture}@0,9,5,9"],
                      ["--graphic", f"{picture}@-1,0,5,9"], ["--graphic", f"{picture}@0,0,100000,9"], ["--image"]):
            with self.subTest(parts=parts):
                self.check("create", self.out, *parts, status=2)
                self.assertFalse(self.out.exists())
        self.check("create", status=2)

    def test_outputs_that_cannot_be_written(self):
        missing = self.folder / "missing" / "out.ntf"
        result = self.check("create", missing, status=1)
        self.assertEqual(result.stderr, f"{missing}: not written: No such file or directory [ERR_FILE_WRITE -5]\n")
        result = self.check("create", self.folder, status=1)
        self.assertEqual(result.stderr, f"{self.folder}: not written: is a directory [ERR_FILE_WRITE -5]\n")

    @unittest.skipUnless(shutil.which("gdalinfo"), "no independent reader")
    def test_an_independent_reader_accepts_it(self):
        picture = self.folder / "p.ppm"
        self.check("render", FILES / "color.ntf", "-o", picture)
        drawing, note = self.write("box.cgm", cgm(20, 10)), self.write("note.txt", "note")
        for options in ([], ["--rgb"]):
            self.create("--image", picture, *options, "--graphic", f"{drawing}@5,6,25,16", "--text", note)
            result = subprocess.run(["gdalinfo", "-checksum", self.out], capture_output=True, text=True)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("Size is 37, 23", result.stdout)
            self.assertNotIn("ERROR", result.stderr)


class Append(Make):
    def append(self, source, *parts):
        result = self.check("append", source, self.out, *parts)
        self.assertEqual((result.stdout, result.stderr), ("", ""))
        return self.out

    def assertKept(self, source, result, but=()):
        """Every field and all data of the source, but for the file header's counts and lengths."""
        for segment in Segments(source.read_bytes()).found:
            (now,) = (s for s in Segments(result.read_bytes()).found
                      if (s["kind"], s["index"]) == (segment["kind"], segment["index"]))
            strip = lambda field: {key: value for key, value in field.items() if key != "offset"}
            after = [strip(f) for f in now["fields"]]
            for field in segment["fields"]:
                if field["name"] not in ("FL", "HL", "NUMI", "NUMS", "NUMT", *but):
                    self.assertIn(strip(field), after)
            if segment["kind"] != "file header":
                wanted = segment["kind"], segment["index"]
                self.assertEqual(self.data_of(result, wanted), self.data_of(source, wanted))

    def test_every_kind_behind_every_kind(self):
        source = FILES / "tidy.ntf"
        picture = self.write("p.pgm", b"P5 4 4 255\n" + bytes([9]) * 16)
        drawing, note = self.write("box.cgm", cgm(20, 10)), self.write("note.txt", "new text")
        parts = {"image": ("--image", picture), "graphic": ("--graphic", f"{drawing}@5,6,25,16"), "text": ("--text", note)}
        for chosen in (["image"], ["graphic"], ["text"], ["text", "graphic", "graphic", "image", "text"]):
            with self.subTest(chosen=chosen):
                self.append(source, *(option for kind in chosen for option in parts[kind]))
                self.assertKept(source, self.out)
                found = [kind for kind, _ in self.kinds(self.out)]
                before = [kind for kind, _ in self.kinds(source)]
                for kind in set(before) | set(chosen):
                    self.assertEqual(found.count(kind), before.count(kind) + chosen.count(kind))
                self.check("verify", self.out)
        self.assertEqual(self.data_of(self.out, ("text", 2)), b"new text")
        self.assertEqual(sorted(self.left_behind()), ["box.cgm", "note.txt", "out.ntf", "p.pgm"])

    def test_onto_itself(self):
        path = self.folder / "in.ntf"
        shutil.copy(FILES / "tidy.ntf", path)
        note = self.write("note.txt", "new text")
        self.append(FILES / "tidy.ntf", "--text", note)
        self.check("append", path, path, "--text", note)
        self.assertEqual(path.read_bytes(), self.out.read_bytes())

    def test_what_was_drawn_stays(self):
        picture = self.write("p.pgm", b"P5 3 2 255\n" + bytes(6))
        self.append(FILES / "color.ntf", "--image", picture, "--quality", 100)
        drawn, before = self.draw(self.out), color_picture()
        self.assertEqual((drawn.width, drawn.height), (before.width, before.height))
        for y in range(before.height):
            for x in range(before.width):
                self.assertEqual(drawn.at(x, y), (0, 0, 0) if x < 3 and y < 2 else before.at(x, y))
        self.assertEqual(grey_picture().width, 29)

    def test_what_is_not_carried_over_is_told(self):
        note = self.write("note.txt", "x")
        result = self.check("append", FILES / "mixed.ntf", self.out, "--text", note)
        self.assertEqual(result.stdout.splitlines(),
                         [f'{self.out}: file header: LRESH[0] "0003" becomes "0004"',
                          f"{self.out}: not carried over: 1 reserved extension segment, which the file header still lists"])
        self.assertKept(FILES / "mixed.ntf", self.out, but=("LRESH",))

    def test_a_file_that_a_save_would_change_otherwise(self):
        result = self.check("append", FILES / "full.ntf", self.out, "--text", self.write("note.txt", "x"), status=1)
        self.assertEqual(result.stderr, f"{self.out}: not written: saving would change what was there: image 0: LUTD[0][0] "
                                        "10 bytes becomes others [ERR_NOT_SUPPORTED -16]\n")
        self.assertFalse(self.out.exists())

    def test_the_thousandth(self):
        note = self.write("note.txt", "x")
        many = self.folder / "many.ntf"
        self.check("create", many, *(["--text", note] * 999))
        result = self.check("append", many, self.out, "--text", note, status=1)
        self.assertEqual(result.stderr, f"{note}: not appended: the file holds 999 texts, the most there can be [status 0]\n")
        self.assertFalse(self.out.exists())
        self.append(many, "--image", self.write("p.pgm", b"P5 1 1 255\n0"))

    def test_levels_have_three_digits(self):
        data = bytearray((FILES / "grey.ntf").read_bytes())
        at = next(f["offset"] for s in Segments(bytes(data)).found for f in s["fields"] if f["name"] == "IDLVL")
        data[at : at + 3] = b"999"
        source = self.write("high.ntf", bytes(data))
        picture = self.write("p.pgm", b"P5 1 1 255\n0")
        result = self.check("append", source, self.out, "--image", picture, "--image", picture, status=1)
        self.assertRegex(result.stderr, r"not written: the new segments do not fit: image 2: IDLVL \"100\", expected a level "
                                        r"of its own: image 1 has it already \[ERR_INVALID_PARAMETER -13\]\n$")
        self.assertFalse(self.out.exists())

    def test_failures(self):
        note = self.write("note.txt", "x")
        line = self.check("info", FILES / "clevel.ntf", status=1).stderr
        self.assertEqual(self.check("append", FILES / "clevel.ntf", self.out, "--text", note, status=1).stderr, line)
        self.check("append", FILES / "tidy.ntf", self.out, status=2)
        self.check("append", FILES / "tidy.ntf", status=2)
        path = FILES / "data_cut.ntf"
        self.assertRegex(self.check("append", path, self.out, "--text", note, status=1).stderr,
                         rf"^{path}: not saved: image 0: its data end at byte \d+, the file at byte \d+ \[ERR_FILE_READ -7\]\n$")
        self.assertEqual(self.left_behind(), ["note.txt"])


if __name__ == "__main__":
    unittest.main()
