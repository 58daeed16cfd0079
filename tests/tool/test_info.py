"""tavinitf info: text, JSON, places of segments, exit status."""
import json
import subprocess
import unittest

from tool_support import FILES, TOOL, ToolTest


class Info(ToolTest):
    def info(self, *names, status=0):
        return json.loads(self.check("info", "--json", *(FILES / name for name in names), status=status).stdout)

    def test_file_header_and_composite(self):
        (file,) = self.info("color.ntf")
        size = (FILES / "color.ntf").stat().st_size
        self.assertEqual(list(file), ["file", "size", "FHDR", "FVER", "CLEVEL", "FL", "HL", "composite",
                                      "reserved_segments", "tres", "segments"])
        self.assertEqual(file["file"], str(FILES / "color.ntf"))
        self.assertEqual(file["size"], size)
        self.assertEqual((file["FHDR"], file["FVER"], file["CLEVEL"]), ("NITF", "02.10", "03"))
        self.assertEqual(file["FL"], f"{size:012}")
        self.assertEqual(file["HL"], "000404")
        self.assertEqual(file["composite"], {"width": 37, "height": 23})
        self.assertEqual(file["reserved_segments"], 0)

    def test_image_fields(self):
        (file,) = self.info("color.ntf")
        (image,) = file["segments"]
        expected = {"kind": "image", "index": 0, "subheader_offset": 404,
                    "data_length": 37 * 23 * 3, "NROWS": "00000023", "NCOLS": "00000037", "PVTYPE": "INT",
                    "IREP": "RGB", "ABPP": "08", "IC": "NC", "NBANDS": "3", "IMODE": "B", "NBPR": "0001",
                    "NBPC": "0001", "NPPBH": "0037", "NPPBV": "0023", "NBPP": "08", "IDLVL": "001", "IALVL": "000",
                    "ILOC": "0000000000", "bands": 3, "mask": False}
        self.assertEqual({key: image[key] for key in expected}, expected)
        self.assertEqual(image["data_offset"], image["subheader_offset"] + image["subheader_length"])
        self.assertEqual(image["data_offset"] + image["data_length"], file["size"])

    def test_every_kind_of_segment_in_file_order(self):
        (file,) = self.info("mixed.ntf")
        kinds = [(s["kind"], s["index"]) for s in file["segments"]]
        self.assertEqual(kinds, [("image", 0), ("image", 1), ("graphic", 0), ("text", 0), ("data extension", 0)])
        masked, graphic, text, extension = file["segments"][1:]
        self.assertTrue(masked["mask"])
        self.assertEqual((masked["IDLVL"], masked["IALVL"], masked["ILOC"]), ("005", "001", "00002-0001"))
        self.assertEqual((graphic["SFMT"], graphic["SDLVL"], graphic["SALVL"], graphic["SLOC"], graphic["data_length"]),
                         ("C", "007", "001", "0001200034", 10))
        self.assertEqual((text["TXTFMT"], text["data_length"]), ("UT1", 21))
        self.assertEqual((extension["DESID"], extension["data_length"]), ("TRE_OVERFLOW", 5))
        self.assertEqual(file["reserved_segments"], 1)
        data = (FILES / "mixed.ntf").read_bytes()
        for segment, signature in zip(file["segments"], (b"IM", b"IM", b"SY", b"TE", b"DE")):
            self.assertEqual(data[segment["subheader_offset"] :][:2], signature)
        self.assertEqual(data[text["data_offset"] :][: text["data_length"]], b"a" * 21)
        self.assertEqual(data[extension["data_offset"] :][: extension["data_length"]], b"x" * 5)

    def test_size_that_cannot_be_told_is_no_failure(self):
        """Sizing a graphic needs its drawing, and this one is no drawing."""
        (file,) = self.info("mixed.ntf")
        self.assertIsNone(file["composite"])
        self.assertEqual(file["composite_error"]["status"], "ERR_FILE_FORMAT")
        self.assertEqual(file["composite_error"]["number"], -9)
        text = self.check("info", FILES / "mixed.ntf").stdout
        self.assertIn("composite of unknown size: graphic 0: its 10 bytes of data are no CGM drawing "
                      "[ERR_FILE_FORMAT -9]", text)

    def test_document_without_segments(self):
        (file,) = self.info("empty_document.ntf")
        self.assertEqual(file["segments"], [])
        self.assertEqual(file["composite"], {"width": 2048, "height": 2048})
        self.assertIn("no segments", self.check("info", FILES / "empty_document.ntf").stdout)

    def test_text_output(self):
        size = (FILES / "color.ntf").stat().st_size
        lines = self.check("info", FILES / "color.ntf").stdout.splitlines()
        self.assertEqual(lines[0], f"{FILES / 'color.ntf'}: NITF 02.10, complexity level 03, {size} bytes")
        self.assertEqual(lines[1], f"  FL {size:012} HL 000404")
        self.assertEqual(lines[2], "  composite 37 x 23 pixels")
        self.assertEqual(lines[3], "  image 0: NROWS 00000023 NCOLS 00000037 PVTYPE INT IREP RGB ABPP 08 IC NC NBANDS 3 "
                                   "IMODE B NBPR 0001 NBPC 0001 NPPBH 0037 NPPBV 0023 NBPP 08 IDLVL 001 IALVL 000 "
                                   "ILOC 0000000000 mask no")
        self.assertRegex(lines[4], r"^    subheader at 404, \d+ bytes; data at \d+, 2553 bytes$")
        self.assertEqual(len(lines), 5)

    def test_many_files_of_which_one_is_refused(self):
        result = self.check("info", "--json", FILES / "color.ntf", FILES / "clevel.ntf", FILES / "grey.ntf", status=1)
        first, refused, last = json.loads(result.stdout)
        self.assertEqual(first["segments"][0]["IREP"], "RGB")
        self.assertEqual(last["segments"][0]["IREP"], "MONO")
        self.assertEqual(refused, {"file": str(FILES / "clevel.ntf"),
                                   "error": {"status": "ERR_UNSUPPORTED_CLEVEL", "number": -700001,
                                             "text": 'complexity level "05" (only "03" is accepted)'}})
        self.assertEqual(len(result.stderr.splitlines()), 1)

    def test_json_stays_json_whatever_bytes_a_field_holds(self):
        damaged = bytearray((FILES / "color.ntf").read_bytes())
        place = damaged.index(b"RGB     ")
        damaged[place : place + 8] = b"\xff\x00\"\\\n\x80 \xe9"
        (self.folder / "odd.ntf").write_bytes(damaged)
        (file,) = json.loads(self.check("info", "--json", self.folder / "odd.ntf").stdout)
        self.assertEqual(file["segments"][0]["IREP"], "\xff\x00\"\\\n\x80 \xe9")
        text = self.check("info", self.folder / "odd.ntf").stdout
        self.assertIn(r"IREP \xff\x00\x22\x5c\x0a\x80 \xe9 ABPP", text)

    def test_full_disk_behind_standard_output_is_a_failure(self):
        with open("/dev/full", "w") as full:
            result = subprocess.run([TOOL, "info", FILES / "color.ntf"], stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, "tavinitf: standard output cannot be written\n")


if __name__ == "__main__":
    unittest.main()
