"""The one line on standard error: what was found, what is accepted, the status and its number."""
import os
import unittest

from tool_support import FILES, ToolTest

NOT_OPENED = {
    "clevel.ntf": 'complexity level "05" (only "03" is accepted) [ERR_UNSUPPORTED_CLEVEL -700001]',
    "fver.ntf": 'version "02.00" (only "02.10" is accepted) [ERR_NOT_NITF -78]',
    "fhdr.ntf": 'signature "%PDF" (only "NITF" and "NSIF" are accepted) [ERR_FILE_FORMAT -9]',
    "control_bytes.ntf": r'signature "\x01\x22\x5c\xff" (only "NITF" and "NSIF" are accepted) [ERR_FILE_FORMAT -9]',
    "fsclas.ntf": 'security classification "Q" (only "C", "R", "S", "T" and "U" are accepted) [ERR_FILE_FORMAT -9]',
    "imode.ntf": 'image 0: image mode "X" (only "B", "P", "R" and "S" are accepted) [ERR_FILE_FORMAT -9]',
    "real_valued.ntf": 'image 2: pixel value type "R" (only "INT" and "B" are accepted) '
                       "[ERR_UNSUPPORTED_PVTYPE -700000]",
    "deep_bands.ntf": 'image 0: bits per pixel "16" in 3 bands (16 bits are accepted in one band only) '
                      "[ERR_UNSUPPORTED_BPP -700002]",
    "streamed.ntf": "a length says that its true value stands in a streaming file header, and there is none "
                    "[ERR_INVALID_PARAMETER -13]",
    "udhdl.ntf": 'UDHDL "00002" (only 0 and lengths of at least 3 are accepted) [ERR_FILE_READ -7]',
    "udhdl_long.ntf": 'UDHDL "90000" announces more than the file\'s {size} bytes [ERR_FILE_READ -7]',
    "numi.ntf": 'NUMI "999" announces more than the file\'s {size} bytes [ERR_FILE_READ -7]',
    "nrows_cut.ntf": "ends inside image 0's NROWS field at byte {size} [ERR_FILE_READ -7]",
    "nrows_missing.ntf": "ends before image 0's NROWS field at byte {size} [ERR_FILE_READ -7]",
    "nothing.ntf": "ends before the file header's FHDR field at byte 0 [ERR_FILE_READ -7]",
}

NOT_DRAWN = {
    "coded.ntf": 'image 1: its data, compression "C8", are of no kind that can be decoded '
                 "[ERR_NOT_SUPPORTED -16]",
    "refused_coding.ntf": 'image 1: compression "C0" ("C0", "C2", "M0" and "M2" are not drawn) '
                          "[ERR_NOT_SUPPORTED -16]",
    "mixed.ntf": "graphic 0: its 10 bytes of data are no CGM drawing [ERR_FILE_FORMAT -9]",
    "data_cut.ntf": "image 0: its data end at byte {end}, the file at byte {size} [ERR_FILE_READ -7]",
    "huge.ntf": 'more than the limit "picture" of 2147483648 bytes is asked for (--limit picture=VALUE raises it) '
                "[ERR_NO_MEMORY -1]",
}


class Refusals(ToolTest):
    def expect(self, path, what, text):
        size = path.stat().st_size if path.exists() else 0
        line = f"{path}: {what}: {text.format(size=size, end=size + 37 * 23 * 3 - 100)}\n"
        result = self.check("render", path, "-o", self.folder / "out.png", status=1)
        self.assertEqual(result.stderr, line)
        self.assertEqual(result.stdout, "")
        self.assertFalse((self.folder / "out.png").exists())
        return line

    def test_files_that_do_not_open(self):
        for name, text in NOT_OPENED.items():
            with self.subTest(name=name):
                line = self.expect(FILES / name, "not opened", text)
                result = self.check("info", FILES / name, status=1)
                self.assertEqual((result.stdout, result.stderr), ("", line))
        self.assertEqual(self.left_behind(), [])

    def test_files_that_open_and_are_not_drawn(self):
        for name, text in NOT_DRAWN.items():
            with self.subTest(name=name):
                self.expect(FILES / name, "not drawn", text)
                self.check("info", FILES / name)
        self.assertEqual(self.left_behind(), [])

    def test_later_segment_beyond_the_end(self):
        line = self.check("info", FILES / "subheader_missing.ntf", status=1).stderr
        size = (FILES / "subheader_missing.ntf").stat().st_size
        self.assertRegex(line, rf"not opened: ends at byte {size}, before image 1's IM field at byte \d+ "
                               r"\[ERR_FILE_READ -7\]\n$")

    def test_paths_that_are_no_files(self):
        os.mkfifo(self.folder / "pipe.ntf")
        missing, pipe = self.folder / "missing.ntf", self.folder / "pipe.ntf"
        accepted = "(only a regular file is accepted)"
        self.expect(missing, "not opened", "no such file [ERR_FILE_NOT_FOUND -10]")
        self.expect(self.folder, "not opened", f"is a directory {accepted} [ERR_FILE_READ -7]")
        self.expect(pipe, "not opened", f"is no regular file {accepted} [ERR_FILE_READ -7]")

    def test_name_that_is_no_utf8(self):
        for name in (b"\xff.ntf", b"\xc0\x80.ntf", b"\xed\xa0\x80.ntf", b"\xf4\x90\x80\x80.ntf", b"x\xe2\x82"):
            with self.subTest(name=name):
                result = self.run_tool("info", os.fsdecode(name), errors="surrogateescape")
                self.assertEqual(result.returncode, 1)
                self.assertIn("not opened: its name is not valid UTF-8 [ERR_FILE_NOT_FOUND -10]", result.stderr)
                result = self.run_tool("info", "--json", os.fsdecode(name), errors="surrogateescape")
                self.assertEqual(result.returncode, 1)
                self.assertIn('"error"', result.stdout)


if __name__ == "__main__":
    unittest.main()
