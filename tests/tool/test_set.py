"""tavinitf set: the asked fields change and nothing else does, or there is no output."""
import shutil
import unittest

from nitf_fields import Segments
from tool_support import FILES, ToolTest

TIDY = FILES / "tidy.ntf"


class Set(ToolTest):
    def setUp(self):
        super().setUp()
        self.data = TIDY.read_bytes()
        self.out = self.folder / "out.ntf"

    def place(self, kind, index, name, at=None):
        for segment in Segments(self.data).found:
            if (segment["kind"], segment["index"]) == (kind, index):
                for field in segment["fields"]:
                    if field["name"] == name and field.get("index") == at:
                        return field["offset"], field["length"]
        raise AssertionError(name)

    def expect(self, *edits):
        """Each edit: text, kind, index, field, its place, bytes. The output is the input with these bytes put in."""
        expected = bytearray(self.data)
        for _, kind, index, name, at, value in edits:
            offset, length = self.place(kind, index, name, at)
            self.assertEqual(len(value), length)
            expected[offset : offset + length] = value
        result = self.check("set", TIDY, self.out, *(edit[0] for edit in edits))
        self.assertEqual(result.stdout, "")
        self.assertEqual(self.out.read_bytes(), bytes(expected))
        self.assertEqual(self.left_behind(), ["out.ntf"])
        self.out.unlink()

    def refuse(self, edit, reason, source=TIDY, status="ERR_INVALID_PARAMETER -13", name=None):
        with self.subTest(edit=edit):
            result = self.check("set", source, self.out, edit, status=1)
            self.assertEqual(result.stderr, f"{name or source}: not {'written' if name else 'set'}: {reason} [{status}]\n")
            self.assertEqual(result.stdout, "")
            self.assertEqual(self.left_behind(), [])

    def test_every_form(self):
        header, image, graphic, text = "file header", "image", "graphic", "text"
        for edit in (("header:FTITLE=Delta of a river", header, 0, "FTITLE", None, b"Delta of a river".ljust(80)),
                     ("header:FTITLE=", header, 0, "FTITLE", None, b" " * 80),
                     ("header:FTITLE=a=b", header, 0, "FTITLE", None, b"a=b".ljust(80)),
                     ("header:OSTAID=ten chars!", header, 0, "OSTAID", None, b"ten chars!"),
                     ("header:FSCLSY=US", header, 0, "FSCLSY", None, b"US"),
                     ("header:FSDCXM=X1", header, 0, "FSDCXM", None, b"X1  "),
                     ("header:FDT=20260102030405", header, 0, "FDT", None, b"20260102030405"),
                     ("header:FSCOP=7", header, 0, "FSCOP", None, b"00007"),
                     ("header:FBKGC=1,128,255", header, 0, "FBKGC", None, b"\x01\x80\xff"),
                     ("header:FHDR=NSIF", header, 0, "FHDR", None, b"NSIF"),
                     ("image:0.IID1=river", image, 0, "IID1", None, b"river     "),
                     ("image:0.ICOM[1]=other words", image, 0, "ICOM", 1, b"other words".ljust(80)),
                     ("image:0.IGEOLO=" + "8" * 60, image, 0, "IGEOLO", None, b"8" * 60),
                     ("image:0.ICORDS=D", image, 0, "ICORDS", None, b"D"),
                     ("image:0.IREPBAND[0]=M", image, 0, "IREPBAND", 0, b"M "),
                     ("image:0.ICAT=MAP", image, 0, "ICAT", None, b"MAP     "),
                     ("image:0.IMAG=/2", image, 0, "IMAG", None, b"/2  "),
                     ("image:0.PJUST=L", image, 0, "PJUST", None, b"L"),
                     ("image:1.ILOC=-12,34", image, 1, "ILOC", None, b"-001200034"),
                     ("image:1.IDLVL=9", image, 1, "IDLVL", None, b"009"),
                     ("graphic:0.SNAME=arrow", graphic, 0, "SNAME", None, b"arrow".ljust(20)),
                     ("graphic:0.SLOC=99999,-9999", graphic, 0, "SLOC", None, b"99999-9999"),
                     ("graphic:0.SBND1=-5,6", graphic, 0, "SBND1", None, b"-000500006"),
                     ("graphic:0.SCOLOR=M", graphic, 0, "SCOLOR", None, b"M"),
                     ("text:0.TXTITL=Note", text, 0, "TXTITL", None, b"Note".ljust(80)),
                     ("text:0.TSDGDT=20260102", text, 0, "TSDGDT", None, b"20260102"),
                     ("text:0.TXTALVL=1", text, 0, "TXTALVL", None, b"001")):
            with self.subTest(edit=edit[0]):
                self.expect(edit)

    def test_several_at_once(self):
        self.expect(("image:0.IID1=one", "image", 0, "IID1", None, b"one       "),
                    ("image:1.IID1=two", "image", 1, "IID1", None, b"two       "),
                    ("graphic:0.SID=three", "graphic", 0, "SID", None, b"three     "))

    def test_onto_itself(self):
        path = self.folder / "in.ntf"
        shutil.copy(TIDY, path)
        self.check("set", path, path, "image:0.IID1=river")
        offset, _ = self.place("image", 0, "IID1")
        self.assertEqual(path.read_bytes(), self.data[:offset] + b"river     " + self.data[offset + 10 :])
        self.assertEqual(self.left_behind(), ["in.ntf"])

    def test_values_that_do_not_fit(self):
        self.refuse("image:0.IID1=eleven char", 'image 0: IID1 takes 10 characters, "eleven char" has 11')
        self.refuse("header:FSCOP=123456", 'file header: FSCOP takes 5 characters, "123456" has 6')
        self.refuse("header:FSCOP=-1", 'file header: FSCOP takes digits only, not "-1"')
        self.refuse("header:FDT=2026", 'file header: FDT takes exactly 14 characters, "2026" has 4')
        pair = 'takes two numbers of -9999 to 99999 with a comma between them, not'
        for value in ("12", "1,2,3", "100000,1", "-10000,1", "1,", "x,1", "1,-"):
            self.refuse(f"image:1.ILOC={value}", f'image 1: ILOC {pair} "{value}"')
        colour = "file header: FBKGC takes red, green, blue of 0 to 255 with commas between them, not"
        for value in ("1,2", "1,2,256", "1,2,3,4", "a,b,c", ""):
            self.refuse(f"header:FBKGC={value}", f'{colour} "{value}"')
        self.refuse("text:0.TXTITL=caf\u00e9", 'text 0: TXTITL takes printable ASCII characters only, not "caf\\xc3\\xa9"')
        none = "it is none of the values that the field may have"
        self.refuse("image:0.PVTYPE=X", f'image 0: PVTYPE cannot be "X": {none}')
        self.refuse("image:0.PJUST=M", f'image 0: PJUST cannot be "M": {none}')
        self.refuse("image:0.IMODE=Q", f'image 0: IMODE cannot be "Q": {none}')

    def test_fields_that_the_layout_follows_from(self):
        layout = "is a length or a number that the file's layout follows from"
        for edit, name in (("header:FL=1", "file header: FL"), ("header:NUMI=1", "file header: NUMI"),
                           ("header:LI[0]=1", "file header: LI[0]"), ("image:0.NBANDS=3", "image 0: NBANDS"),
                           ("image:0.NICOM=1", "image 0: NICOM"), ("image:0.NLUTS[0]=1", "image 0: NLUTS[0]"),
                           ("text:0.TXSHDL=3", "text 0: TXSHDL")):
            self.refuse(edit, f"{name} {layout}")
        for edit, name in (("image:0.UDID=x", "image 0: UDID"), ("image:1.TPXCD=x", "image 1: TPXCD"),
                           ("image:1.IMDATOFF=1", "image 1: IMDATOFF"), ("header:UDHD=x", "file header: UDHD")):
            self.refuse(edit, f"{name} is no text")
        self.refuse("image:0.ICORDS=", "image 0: ICORDS can only be another letter: IGEOLO would be too much")
        self.refuse("image:1.ICORDS=G", "image 1: ICORDS can only be blank: IGEOLO would be missing")
        same = "can only be a coding with the same fields: COMRAT or the mask table would be missing or too much"
        self.refuse("image:0.IC=C3", f"image 0: IC {same}")
        self.refuse("image:0.IC=NM", f"image 0: IC {same}")

    def test_fields_that_are_not_there(self):
        self.refuse("image:0.NOSUCH=1", "image 0: NOSUCH is no field that this header has")
        self.refuse("image:1.IGEOLO=1", "image 1: IGEOLO is no field that this header has")
        self.refuse("image:0.ICOM[2]=x", "image 0: ICOM[2] is no field that this header has")
        self.refuse("image:0.ICOM=x", "image 0: ICOM is repeated: say which, as ICOM[0]")
        self.refuse("image:2.IID1=x", "there is no image 2 (the file has 2)")
        self.refuse("text:1.TXTITL=x", "there is no text 1 (the file has 1)")

    def test_a_file_that_would_not_open_again(self):
        again = "it would not open again: "
        for edit, reason, status in (
                ("header:CLEVEL=05", 'complexity level "05" (only "03" is accepted)', "ERR_UNSUPPORTED_CLEVEL -700001"),
                ("header:FVER=02.00", 'version "02.00" (only "02.10" is accepted)', "ERR_NOT_NITF -78"),
                ("header:FSCLAS=X", 'security classification "X" (only "C", "R", "S", "T" and "U" are accepted)',
                 "ERR_FILE_FORMAT -9"),
                ("graphic:0.SFMT=Z", 'graphic 0: graphic type "Z" (only "C", "O" and "B" are accepted)', "ERR_FILE_FORMAT -9"),
                ("image:0.IM=XX", 'image 0: signature "XX" (only "IM" is accepted)', "ERR_FILE_FORMAT -9")):
            self.refuse(edit, again + reason, status=status, name=self.out)

    def test_a_file_that_a_save_would_change_otherwise(self):
        """The colour table of one band cannot be saved."""
        result = self.check("set", FILES / "full.ntf", self.out, "image:1.IID2=x", status=1)
        self.assertEqual(result.stderr, f"{self.out}: not written: more than was asked for would change: image 0: LUTD[0][0] "
                                        "10 bytes becomes others [ERR_NOT_SUPPORTED -16]\n")
        self.assertEqual(self.left_behind(), [])

    def test_what_the_writer_sets_is_told(self):
        result = self.check("set", FILES / "mixed.ntf", self.out, "header:FTITLE=x")
        self.assertEqual(result.stdout.splitlines(),
                         [f'{self.out}: file header: LRESH[0] "0003" becomes "0004"',
                          f"{self.out}: not carried over: 1 reserved extension segment, which the file header still lists"])

    def test_look_up_tables_and_roles_stay(self):
        """What the header records cannot hold comes through an edit of the same image."""
        self.check("set", TIDY, self.out, "image:0.IID1=river", "image:0.IDLVL=001")
        after = Segments(self.out.read_bytes()).found
        roles = [f["text"] for s in after if s["kind"] == "image" for f in s["fields"] if f["name"] == "IREPBAND"]
        self.assertEqual(roles, [f["text"] for s in Segments(self.data).found if s["kind"] == "image"
                                 for f in s["fields"] if f["name"] == "IREPBAND"])

    def test_wrong_usage(self):
        for edit in ("FTITLE=x", "header.FTITLE=x", "header:FTITLE", "image:0:IID1=x", "image:x.IID1=y", "image:0.=x",
                     "image:0.ICOM[x]=y", "image:0.ICOM[=y", "des:0.DESID=x", "label:0.LID=x", "image:0.I D=x"):
            with self.subTest(edit=edit):
                result = self.check("set", TIDY, self.out, edit, status=2)
                self.assertIn("is none of header:FIELD=VALUE", result.stderr)
                self.assertEqual(self.left_behind(), [])
        self.check("set", TIDY, self.out, status=2)
        self.check("set", TIDY, status=2)

    def test_failures(self):
        line = self.check("info", FILES / "clevel.ntf", status=1).stderr
        self.assertEqual(self.check("set", FILES / "clevel.ntf", self.out, "header:FTITLE=x", status=1).stderr, line)
        result = self.check("set", TIDY, self.folder, "header:FTITLE=x", status=1)
        self.assertEqual(result.stderr, f"{self.folder}: not written: is a directory [ERR_FILE_WRITE -5]\n")


if __name__ == "__main__":
    unittest.main()
