"""tavinitf verify: one wrong field makes one finding that names it, and no file is too damaged to be looked at."""
import json
import os
import pathlib
import random
import unittest

from nitf_fields import Segments
from tool_support import FILES, ToolTest

SAMPLES = pathlib.Path(os.environ.get("TAVI_SAMPLES") or os.environ["TAVI_SAMPLES_DEFAULT"]) / "nitf"
CLEAN = ("color.ntf", "dark.ntf", "empty_document.ntf", "grey.ntf", "jpeg.ntf", "large.ntf", "many_blocks.ntf", "tidy.ntf")
# Of the samples that open, those that are not clean, with the fields that are not.
SAMPLE_FINDINGS = {
    "csshpa_simplepoint.ntf": ["FL", "LD"],
    "ff_nitf_8bit_b.nitf": ["FL"],
    "ff_nitf_8bit_p.nitf": ["FL"],
    "ff_nitf_8bit_s.nitf": ["FL"],
    "i_3034f_geographic.ntf": ["FL"],
    "kwiver_mie_combined.ntf": ["IDLVL"] * 4,
    "two_images_jp2.ntf": ["IDLVL"],
}


class Verify(ToolTest):
    def setUp(self):
        super().setUp()
        self.data = (FILES / "tidy.ntf").read_bytes()

    def field(self, kind, index, name, place=None, sub_place=None):
        for segment in Segments(self.data).found:
            if (segment["kind"], segment["index"]) == (kind, index):
                for field in segment["fields"]:
                    if (field["name"], field.get("index"), field.get("sub_index")) == (name, place, sub_place):
                        return field
        raise AssertionError((kind, index, name))

    def verify(self, data, status=1):
        path = self.folder / "file.ntf"
        path.write_bytes(data)
        result = self.run_tool("verify", "--json", path)
        self.assertEqual(result.returncode, status, result.stdout)
        return json.loads(result.stdout)

    def expect(self, kind, index, name, value, expected, place=None, at=0, found=None, others=()):
        """`value` at byte `at` of a field makes the finding, with `others` as the names of further ones."""
        with self.subTest(field=name, value=value):
            field = self.field(kind, index, name, place)
            start = field["offset"] + at
            damaged = self.data[:start] + value + self.data[start + len(value) :]
            printed = self.verify(damaged)
            self.assertEqual(printed["verdict"], "findings")
            own = [f for f in printed["findings"] if f["field"] == name and f["segment"] == kind and f["index"] == index]
            rest = [f["field"] for f in printed["findings"] if f not in own]
            self.assertEqual(sorted(rest), sorted(others), printed["findings"])
            self.assertEqual(len(own), 1, printed["findings"])
            self.assertEqual(own[0]["expected"], expected)
            self.assertEqual(own[0].get("field_index"), place)
            self.assertEqual(own[0]["offset"], field["offset"] if found is None else start)
            if found is not None:
                self.assertEqual(own[0]["found"], found)

    def test_clean_files(self):
        for name in CLEAN:
            with self.subTest(name=name):
                result = self.check("verify", FILES / name)
                self.assertEqual(result.stdout, f"{FILES / name}: clean\n")
                printed = json.loads(self.check("verify", "--json", FILES / name).stdout)
                self.assertEqual((printed["verdict"], printed["findings"], printed["omitted"]), ("clean", [], 0))

    def test_text(self):
        size = len(self.data) + 3
        path = self.folder / "longer.ntf"
        path.write_bytes(self.data + b"abc")
        result = self.check("verify", path, status=1)
        self.assertEqual(result.stderr, "")
        fl = self.field("file header", 0, "FL")
        lines = result.stdout.splitlines()
        self.assertEqual(lines[0], f"{path}: 2 findings")
        self.assertEqual(lines[1], f"  file header: FL at byte 342: found \"{fl['text']}\", expected {size}, the file's size")
        self.assertRegex(lines[2], rf"lengths that reach to the file's end at byte {size}: all together end at byte "
                                   rf"{size - 3}$")
        self.assertEqual(len(lines), 3)

    def test_lengths(self):
        size = len(self.data)
        fl, hl = self.field("file header", 0, "FL")["text"], self.field("file header", 0, "HL")["text"]
        self.expect("file header", 0, "FL", b"%012d" % (int(fl) + 1), f"{size}, the file's size")
        self.expect("file header", 0, "FL", b" " * 12, "12 digits")
        lish = self.field("file header", 0, "LISH", 1)["text"]
        # The subheaders behind it would be looked for elsewhere, so the last one of the file is taken.
        ldsh = self.field("file header", 0, "LDSH", 0)["text"]
        ld = self.field("file header", 0, "LD", 0)["text"]
        shifted = bytearray(self.data)
        at = self.field("file header", 0, "LDSH", 0)["offset"]
        shifted[at : at + 4] = b"%04d" % (int(ldsh) + 2)
        at = self.field("file header", 0, "LD", 0)["offset"]
        shifted[at : at + 9] = b"%09d" % (int(ld) - 2)
        findings = self.verify(bytes(shifted))["findings"]
        self.assertIn(("LDSH", f"{int(ldsh)}, the length of the subheader of data extension 0"),
                      [(f["field"], f["expected"]) for f in findings])
        self.expect("file header", 0, "LD", b"%09d" % (int(ld) + 9), f"at most {int(ld)}, the bytes from the data's place at "
                    f"byte {size - int(ld)} to the file's end", place=0)
        self.expect("file header", 0, "LD", b"000000000", f"lengths that reach to the file's end at byte {size}: all together "
                    f"end at byte {size - int(ld)}", place=0)
        self.assertTrue(int(hl) and int(lish))

    def test_header_length(self):
        data = (FILES / "empty_document.ntf").read_bytes()
        at = 342 + 12
        self.assertEqual(int(data[at : at + 6]), len(data))
        findings = self.verify(data[:at] + b"%06d" % (len(data) + 1) + data[at + 6 :])["findings"]
        self.assertEqual([(f["field"], f["expected"]) for f in findings], [("HL", f"{len(data)}, the length of the file header")])

    def test_blocks(self):
        self.expect("image", 0, "NBPR", b"0003", "2, which blocks of 8 need for NCOLS 16", others=["LI"])
        self.expect("image", 0, "NBPC", b"0001", "2, which blocks of 4 need for NROWS 8", others=["LI"])
        self.expect("image", 0, "NROWS", b"00000000", "at least 1")
        self.expect("image", 0, "NPPBH", b"0000", "at least 1: an image of blocks without a size is not drawn", others=["LI"])
        self.expect("image", 0, "NBPR", b"0000", "at least 1", others=["LI"])
        self.expect("image", 0, "NCOLS", b"0000001x", "8 digits")

    def test_depths_and_bands(self):
        self.expect("image", 0, "ABPP", b"09", "1 to NBPP, 8")
        self.expect("image", 0, "ABPP", b"00", "1 to NBPP, 8")
        self.expect("image", 0, "NBPP", b"07", "01, 08, 12, 16, 32 or 64", others=["ABPP", "LI"])
        printed = self.patch("image", 0, "IREP", b"RGB     ")
        self.assertEqual([(f["field"], f["expected"]) for f in printed["findings"]], [("NBANDS", "3 with IREP RGB")])
        printed = self.patch("image", 0, "PVTYPE", b"B  ")
        self.assertEqual([(f["field"], f["expected"]) for f in printed["findings"]], [("NBPP", "01 with PVTYPE B")])
        printed = self.patch("image", 0, "IREP", b"RGB/LUT ")
        self.assertEqual([(f["field"], f["expected"]) for f in printed["findings"]],
                         [("NLUTS", "3 with IREP RGB/LUT: the image has no colours")])

    def patch(self, kind, index, name, value):
        at = self.field(kind, index, name)["offset"]
        return self.verify(self.data[:at] + value + self.data[at + len(value) :])

    def test_coding(self):
        self.expect("image", 0, "IMODE", b"S", "B, P or R: S is for several bands in several blocks")
        color = (FILES / "color.ntf").read_bytes()
        at = next(f["offset"] for s in Segments(color).found for f in s["fields"] if f["name"] == "IMODE")
        findings = self.verify(color[:at] + b"S" + color[at + 1 :])["findings"]
        self.assertEqual([f["field"] for f in findings], ["IMODE"])
        findings = self.verify((FILES / "refused_coding.ntf").read_bytes())["findings"]
        self.assertIn(("IC", "C0", 'one that is drawn; "C0", "C2", "M0", "M2" and unknown ones are not'),
                      [(f["field"], f["found"], f["expected"]) for f in findings])

    def test_data_length(self):
        data = (FILES / "grey.ntf").read_bytes() + b"z"
        at = next(f["offset"] for s in Segments(data).found for f in s["fields"] if f["name"] == "LI")
        longer = data[:342] + b"%012d" % len(data) + data[354:at] + b"%010d" % (29 * 17 + 1) + data[at + 10 :]
        (finding,) = self.verify(longer)["findings"]
        self.assertEqual((finding["field"], finding["field_index"], finding["found"], finding["expected"]),
                         ("LI", 0, "0000000494", "493, the blocks of image 0"))

    def test_masks(self):
        number = lambda value, width=4: value.to_bytes(width, "big")
        blocks = self.field("image", 1, "BMRnBNDm")
        pads = self.field("image", 1, "TMRnBNDm")
        start = self.field("image", 1, "IMDATOFF")
        least = pads["offset"] + pads["length"] - start["offset"]
        length = int(self.field("file header", 0, "LI", 1)["text"])
        self.assertEqual(blocks["numbers"], [0, 0xFFFFFFFF, 4, 8])
        self.assertEqual(pads["numbers"], [0xFFFFFFFF, 0xFFFFFFFF, 4, 0xFFFFFFFF])
        entry = lambda name, place, value, expected, others=(): self.expect_entry(name, place, value, expected, others)
        entry("BMRnBNDm", 3, number(9), "absent or at most 8, so that the block ends within the data")
        entry("BMRnBNDm", 0, number(0xFFFFFFFE), "absent or at most 8, so that the block ends within the data")
        entry("TMRnBNDm", 0, number(4), "absent or the block's own offset, which is 0")
        entry("TMRnBNDm", 1, number(4), "absent or the block's own offset, which is absent (FFFFFFFF)")
        low = f"at least {least}, the length of the mask table"
        for name, value, found, expected, others in (
                ("IMDATOFF", number(least - 1), str(least - 1), low, []),
                ("IMDATOFF", number(length + 1), str(length + 1), f"at most {length}, the length of the data",
                 ["BMRnBNDm"] * 3),
                ("TPXCDLNTH", number(0, 2), "0", "the bits of a pad pixel's code", None)):
            with self.subTest(name=name, value=value):
                field = self.field("image", 1, name)
                damaged = self.data[: field["offset"]] + value + self.data[field["offset"] + len(value) :]
                findings = self.verify(damaged)["findings"]
                own = [(f["found"], f["expected"]) for f in findings if f["field"] == name]
                self.assertEqual(own, [(found, expected)])
                if others is not None:
                    self.assertEqual([f["field"] for f in findings if f["field"] != name], others)
        printed = self.patch("image", 1, "BMRLNTH", number(6, 2))
        self.assertEqual([(f["field"], f["expected"]) for f in printed["findings"]], [("BMRLNTH", "0 or 4")])

    def expect_entry(self, name, place, value, expected, others):
        field = self.field("image", 1, name)
        at = field["offset"] + 4 * place
        findings = self.verify(self.data[:at] + value + self.data[at + 4 :])["findings"]
        own = [f for f in findings if f["field"] == name]
        self.assertEqual([(f["field_index"], f["offset"], f["expected"]) for f in own], [(place, at, expected)])
        rest = [f["field"] for f in findings if f["field"] != name]
        self.assertEqual(sorted(set(rest) - {"TMRnBNDm"}), sorted(others))

    def test_records(self):
        block = self.field("image", 0, "UDID")
        tag, length, over = b"USERDF", b"00005", block["length"] - 11
        self.assertTrue(block["text"].encode().startswith(tag + length))
        record = "a record: a tag of six printable characters and a length of five digits"
        for value, at, found, expected in (
                (b"0000x", 6, "USERDF0000x", record), (b"  0005", 5, None, record),
                (b"\xff", 2, "US\xffRDF00005", record), (b" ", 0, " SERDF00005", record),
                (b"00099", 6, "USERDF00099", f"a record that ends within the area, with at most {over} bytes")):
            with self.subTest(value=value):
                start = block["offset"] + at
                (finding,) = self.verify(self.data[:start] + value + self.data[start + len(value) :])["findings"]
                self.assertEqual((finding["field"], finding["offset"], finding["expected"]),
                                 ("UDID", block["offset"], expected))
                if found is not None:
                    self.assertEqual(finding["found"], found)

    def test_overflow(self):
        here = "the number of a segment with UDOFL 1"
        self.expect("data extension", 0, "DESITEM", b"002", here, others=["UDOFL"])
        self.expect("data extension", 0, "DESITEM", b"009", "the number of a segment of kind image", others=["UDOFL"])
        self.expect("data extension", 0, "DESOFLW", b"ABCDEF", "UDHD, XHD, UDID, IXSHD, SXSHD or TXSHD", others=["UDOFL"])
        self.expect("image", 0, "UDOFL", b"002", "000 or the number of a data extension: the file has no such one",
                    others=["DESITEM"])
        printed = self.patch("image", 0, "UDOFL", b"000")
        self.assertEqual([(f["field"], f["expected"]) for f in printed["findings"]], [("DESITEM", here)])
        size = len(self.data)
        cut = self.verify(self.data[: size - 1] + b"" )["findings"]
        self.assertEqual([f["field"] for f in cut], ["FL", "LD", "data"])

    def test_levels(self):
        gone = "000 or the display level of an image or a graphic: none has this one"
        self.expect("image", 1, "IDLVL", b"001", "a level of its own: image 0 has it already", others=["SALVL", "TXTALVL", "IALVL"])
        self.expect("image", 0, "IDLVL", b"000", "a level of 1 to 999", others=["IALVL"])
        self.expect("graphic", 0, "SALVL", b"007", gone)
        self.expect("text", 0, "TXTALVL", b"007", gone)
        self.expect("graphic", 0, "SDLVL", b"001", "a level of its own: image 0 has it already", others=["SALVL"])
        loop = "000 or the level of a segment that does not hang on this one: the attachments go round in a loop"
        self.expect("image", 1, "IALVL", b"002", loop)
        self.expect("image", 0, "IALVL", b"003", loop, others=["IALVL", "SALVL"])
        self.expect("image", 1, "IALVL", b"003", loop, others=["SALVL"])
        at = self.field("graphic", 0, "SALVL")["offset"]
        data = self.data[:at] + b"000" + self.data[at + 3 :]
        at = self.field("image", 1, "IALVL")["offset"]
        (finding,) = self.verify(data[:at] + b"003" + data[at + 3 :])["findings"]
        self.assertEqual((finding["field"], finding["expected"]), ("IALVL", "a level below its own, 002"))

    def test_dates(self):
        long, short = "CCYYMMDDhhmmss, hyphens or blanks where it is not known", "CCYYMMDD, hyphens or blanks where it is not known"
        for date in (b"20261301000000", b"20260100000000", b"20260101240000", b"2026010100006x", b"2026-1--------"):
            self.expect("file header", 0, "FDT", date, long)
        self.expect("image", 0, "IDATIM", b"20260132000000", long)
        self.expect("text", 0, "TXTDT", b"20260101006000", long)
        self.expect("graphic", 0, "SSDCDT", b"20260000", short)
        for date in (b"2026----------", b"--------------", b"              ", b"20261231235960", b"20260101000000"):
            with self.subTest(date=date):
                at = self.field("file header", 0, "FDT")["offset"]
                self.verify(self.data[:at] + date + self.data[at + 14 :], status=0)

    def test_files_that_do_not_open(self):
        for name, field, offset in (("clevel.ntf", "CLEVEL", 9), ("udhdl_long.ntf", "UDHDL", 394), ("numi.ntf", "NUMI", 360),
                                    ("streamed.ntf", "FL", 342), ("nothing.ntf", "FHDR", 0), ("fhdr.ntf", "FHDR", 0)):
            with self.subTest(name=name):
                result = self.check("verify", FILES / name, status=1)
                line = self.check("info", FILES / name, status=1).stderr
                self.assertEqual(result.stderr, line)
                reason = line.split(": not opened: ")[1].split(" [")[0]
                self.assertEqual(result.stdout, f"{FILES / name}: refused\n  file header: {field} at byte {offset}: {reason}\n")
                printed = json.loads(self.run_tool("verify", "--json", FILES / name).stdout)
                self.assertEqual(printed["verdict"], "refused")
                (finding,) = printed["findings"]
                self.assertEqual((finding["field"], finding["offset"]), (field, offset))
        result = self.check("verify", FILES / "deep_bands.ntf", status=1)
        self.assertIn("  image 0: NBPP at byte 837: bits per pixel \"16\" in 3 bands", result.stdout)
        result = self.check("verify", self.folder / "missing.ntf", status=1)
        self.assertEqual(result.stdout, f"{self.folder / 'missing.ntf'}: refused\n  no such file\n")

    def test_file_cut_inside_a_table(self):
        data = (FILES / "full.ntf").read_bytes()
        cut = next(f for s in Segments(data).found for f in s["fields"] if f.get("sub_index") == 2)
        (finding,) = self.verify(data[: cut["offset"] + 1])["findings"]
        self.assertEqual((finding["field"], finding["field_index"], finding["field_sub_index"]), ("LUTD", 1, 2))

    def test_many_wrong_entries_are_counted(self):
        data = bytearray((FILES / "many_blocks.ntf").read_bytes())
        table = next(f for s in Segments(bytes(data)).found for f in s["fields"] if f["name"] == "BMRnBNDm")
        data[table["offset"] : table["offset"] + table["length"]] = b"\x7f" * table["length"]
        printed = self.verify(bytes(data))
        self.assertEqual(len(printed["findings"]), 8)
        self.assertEqual(printed["omitted"], 20000 - 8)
        self.assertIn("  19992 more of the same fields", self.run_tool("verify", self.folder / "file.ntf").stdout)

    def test_no_damage_is_too_much(self):
        """Random bytes in the headers, and files cut anywhere: always a verdict, never a crash."""
        chance = random.Random(7)
        header = len(self.data) - 100
        for _ in range(150):
            damaged = bytearray(self.data)
            for _ in range(chance.randrange(1, 6)):
                damaged[chance.randrange(header)] = chance.choice(b"09 -x\x00\xff/")
            if chance.randrange(4) == 0:
                del damaged[chance.randrange(len(damaged)) :]
            self.folder.joinpath("file.ntf").write_bytes(damaged)
            result = self.run_tool("verify", "--json", self.folder / "file.ntf")
            self.assertIn(result.returncode, (0, 1))
            self.assertIn(json.loads(result.stdout)["verdict"], ("clean", "findings", "refused"))

    @unittest.skipUnless(SAMPLES.is_dir(), "no samples")
    def test_samples(self):
        for sample in json.loads((SAMPLES / "manifest.json").read_text())["files"]:
            with self.subTest(file=sample["file"]):
                printed = json.loads(self.run_tool("verify", "--json", SAMPLES / sample["file"]).stdout)
                if sample["open"] == 1:
                    self.assertEqual([f["field"] for f in printed["findings"]], SAMPLE_FINDINGS.get(sample["file"], []))
                else:
                    self.assertEqual((printed["verdict"], printed["error"]["number"]), ("refused", sample["open"]))


if __name__ == "__main__":
    unittest.main()
