"""tavinitf extract: the bytes of a segment's data, and nothing at all when it cannot have them. Coded data as drawn."""
import os
import struct
import unittest
import xml.etree.ElementTree

from nitf_fields import LENGTH_TABLES, Segments, number
from tool_support import FILES, Picture, ToolTest


def extents(data):
    """(word, index, offset, length) of each segment's data."""
    values = {(f["name"], f.get("index")): f.get("text", "").encode("latin-1")
              for f in Segments(data).found[0]["fields"]}
    at = number(values["HL", None])
    for kind, count, subheader, _, contents, _ in LENGTH_TABLES:
        for i in range(number(values[count, None]) if kind else 0):
            at += number(values[subheader, i])
            length = number(values[contents, i])
            yield kind, i, at, length
            at += length


class Extract(ToolTest):
    def extract(self, path, selector, name="out.bin"):
        target = self.folder / name
        result = self.check("extract", path, selector, "-o", target)
        self.assertEqual(result.stdout, "")
        self.assertEqual(self.left_behind(), [name])
        data = target.read_bytes()
        target.unlink()
        return data

    def refuse(self, path, selector, line, target=None, left=()):
        result = self.check("extract", path, selector, "-o", target or self.folder / "out.bin", status=1)
        self.assertEqual((result.stdout, result.stderr), ("", line + "\n"))
        self.assertEqual(self.left_behind(), list(left))

    def test_slices_of_the_file(self):
        for name in ("full.ntf", "mixed.ntf", "large.ntf", "jpeg.ntf"):
            data, count = (FILES / name).read_bytes(), 0
            for kind, index, offset, length in extents(data):
                if kind != "data extension":
                    with self.subTest(name=name, segment=f"{kind}:{index}"):
                        self.assertEqual(self.extract(FILES / name, f"{kind}:{index}"), data[offset : offset + length])
                        count += 1
            self.assertGreater(count, 0)

    def test_known_data(self):
        self.assertEqual(self.extract(FILES / "full.ntf", "text:0"), b"text\0\xff\r\n")
        self.assertEqual(self.extract(FILES / "full.ntf", "text:1"), b"")
        self.assertEqual(self.extract(FILES / "full.ntf", "graphic:1"), b"second")
        self.assertEqual(self.extract(FILES / "mixed.ntf", "text:0"), b"a" * 21)
        self.assertEqual(len(self.extract(FILES / "large.ntf", "image:0")), 1500 * 1001)
        self.assertEqual(self.extract(FILES / "jpeg.ntf", "image:0")[:4], b"\xff\xd8\xff\xdb")

    def test_output_is_replaced(self):
        target = self.folder / "out.txt"
        target.write_bytes(b"before" * 100)
        self.check("extract", FILES / "mixed.ntf", "text:0", "--output", target)
        self.assertEqual(target.read_bytes(), b"a" * 21)

    def test_segment_that_is_not_there(self):
        for selector, text in (("image:4", "image 4 (the file has 4)"), ("graphic:2", "graphic 2 (the file has 2)"),
                               ("text:12", "text 12 (the file has 2)")):
            self.refuse(FILES / "full.ntf", selector, f"{FILES / 'full.ntf'}: not extracted: there is no {text} "
                                                      "[ERR_INVALID_PARAMETER -13]")

    def test_data_beyond_the_end_of_the_file(self):
        path = FILES / "large_cut.ntf"
        self.refuse(path, "image:0", f"{path}: not extracted: image 0: its data end at byte "
                                     f"{(FILES / 'large.ntf').stat().st_size}, the file at byte {path.stat().st_size} "
                                     "[ERR_FILE_READ -7]")
        whole = (FILES / "large.ntf").read_bytes()
        cut = self.folder / "cut.ntf"
        cut.write_bytes(whole[:-1])
        self.refuse(cut, "image:0", f"{cut}: not extracted: image 0: its data end at byte {len(whole)}, the file at byte "
                                    f"{len(whole) - 1} [ERR_FILE_READ -7]", left=["cut.ntf"])

    def test_file_that_does_not_open(self):
        for name in ("clevel.ntf", "nrows_cut.ntf", "nothing.ntf", "missing.ntf"):
            line = self.check("info", FILES / name, status=1).stderr.rstrip("\n")
            self.refuse(FILES / name, "image:0", line)

    def test_output_that_cannot_be_written(self):
        missing = self.folder / "missing" / "out.bin"
        self.refuse(FILES / "mixed.ntf", "text:0", f"{missing}: not written: No such file or directory "
                                                   "[ERR_FILE_WRITE -5]", target=missing)
        self.refuse(FILES / "mixed.ntf", "text:0", f"{self.folder}: not written: is a directory [ERR_FILE_WRITE -5]",
                    target=self.folder)

    def test_the_file_itself_is_not_overwritten(self):
        original = (FILES / "mixed.ntf").read_bytes()
        path, link = self.folder / "mixed.ntf", self.folder / "link.ntf"
        path.write_bytes(original)
        os.symlink(path, link)
        for target in (path, link):
            self.refuse(path, "text:0", f"{target}: not written: is the file that is read [ERR_FILE_WRITE -5]",
                        target=target, left=["link.ntf", "mixed.ntf"])
        self.assertEqual(path.read_bytes(), original)

    def test_drawing_as_a_picture(self):
        data = self.extract(FILES / "drawings.ntf", "graphic:0", "drawing.svg")
        root = xml.etree.ElementTree.fromstring(data)
        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        self.assertEqual([float(root.get(side).rstrip("pxt")) for side in ("width", "height")], [40, 30])
        data = self.extract(FILES / "drawings.ntf", "graphic:0", "drawing.PNG")
        self.assertEqual((data[:8], struct.unpack(">II", data[16:24])), (b"\x89PNG\r\n\x1a\n", (40, 30)))
        data = self.extract(FILES / "drawings.ntf", "graphic:0", "drawing.pdf")
        self.assertEqual(data[:5], b"%PDF-")
        self.assertIn(b"%%EOF", data[-10:])

    def test_drawing_as_it_stands(self):
        for name in ("drawing.cgm", "drawing", "drawing.svg.bin"):
            self.assertEqual(self.extract(FILES / "drawings.ntf", "graphic:0", name)[:2], b"\x00\x2a")

    def test_drawing_over_an_image(self):
        picture = self.render("drawings.ntf", "out.png")
        self.assertEqual([picture.at(x, 20) for x in (5, 20, 40, 55)],
                         [(100, 100, 100), (255, 0, 0), (0, 0, 255), (100, 100, 100)])
        self.assertEqual([picture.at(20, y) for y in (2, 37)], [(100, 100, 100)] * 2)

    def test_graphic_that_is_no_drawing(self):
        path = FILES / "full.ntf"
        for ending in ("svg", "png", "pdf"):
            self.refuse(path, "graphic:1", f"{path}: not extracted: graphic 1: its 6 bytes of data are no CGM drawing "
                                           "[ERR_FILE_FORMAT -9]", target=self.folder / f"out.{ending}")
        path = FILES / "drawings.ntf"
        self.refuse(path, "graphic:2", f'{path}: not extracted: graphic 2: graphic type "B" (only drawings, "C", become '
                                       "pictures) [ERR_NOT_SUPPORTED -16]", target=self.folder / "out.svg")
        self.refuse(path, "graphic:0", f"{self.folder / 'none' / 'out.svg'}: not written: No such file or directory "
                                       "[ERR_FILE_WRITE -5]", target=self.folder / "none" / "out.svg")

    def test_coded_data_are_drawn(self):
        self.assertEqual(self.render("jpeg.ntf", "jpeg.png"), Picture(8, 8, 3, [136] * 192))


if __name__ == "__main__":
    unittest.main()
