"""Help, version, and every wrong way to call the tool."""
import unittest

from tool_support import FILES, ToolTest

WRONG_SELECTORS = ("", "image", "image:", "image:x", "image:-1", "image:+1", "image: 1", "image:1 ", "image:0x1",
                   "image:1234567890", "Image:0", "picture:0", "header:0", "0", ":0")


class Usage(ToolTest):
    def test_version(self):
        version, *codecs = self.check("--version").stdout.splitlines()
        self.assertRegex(version, r"^tavinitf \d+\.\d+\.\d+$")
        for name in ("libjpeg-turbo", "OpenJPEG", "DCMTK", "libtiff"):
            self.assertEqual(len([c for c in codecs if c.startswith(name + " ")]), 1, codecs)
        for codec in codecs:
            self.assertRegex(codec, r"^[A-Za-z-]+ \d+\.\d+(\.\d+)*$")

    def test_help_names_subcommands(self):
        text = self.check("--help").stdout
        for name in ("info", "headers", "verify", "limits", "render", "extract", "copy", "set", "create", "append"):
            self.assertIn(name, text)
        self.assertIn("Exit status: 0 done, 1 a file or the operation failed, 2 wrong usage.", text)

    def test_help_of_each_subcommand(self):
        self.assertIn("--json", self.check("info", "--help").stdout)
        text = self.check("render", "--help").stdout
        for option in ("--output", "--directory", "--jobs", "--fixed-canvas", "--stretch-dark", "--paint-each", "--bits"):
            self.assertIn(option, text)

    def test_limit_bounds_the_picture(self):
        out = self.folder / "limited.png"
        refused = self.run_tool("--limit", "1KB", "render", FILES / "color.ntf", "-o", out)
        self.assertEqual(refused.returncode, 1)
        self.assertIn('limit "picture" of 1024 bytes', refused.stderr)
        self.assertFalse(out.exists())
        self.check("--limit", "1MB", "render", FILES / "color.ntf", "-o", out)
        self.assertTrue(out.exists())
        for wrong in ("much", "-1", "1XB"):
            self.assertEqual(self.run_tool("--limit", wrong, "info", FILES / "color.ntf").returncode, 2, wrong)

    def test_wrong_usage_exits_with_2_and_writes_nothing(self):
        color = FILES / "color.ntf"
        out = self.folder / "out.png"
        wrong = (
            [],
            ["frobnicate"],
            ["info"],
            ["info", "--frobnicate", color],
            ["render"],
            ["render", color],
            ["render", "-o", out],
            ["render", color, "-o", out, "-d", self.folder],
            ["render", color, FILES / "grey.ntf", "-o", out],
            ["render", color, "-o", self.folder / "out.gif"],
            ["render", color, "-o", self.folder / "out"],
            ["render", color, "-o", self.folder / "out.pgm", "--bits", "24"],
            ["render", color, "-o", out, "--bits", "16"],
            ["render", color, "-o", out, "-j", "0"],
            ["render", color, "-o", out, "-j", "65"],
            ["render", color, "-o", out, "-j", "two"],
            ["render", color, color, "-d", self.folder],
            ["headers"],
            ["headers", color, color],
            ["headers", color, "--segment"],
            *(["headers", color, "--segment", s] for s in WRONG_SELECTORS),
            ["extract", color, "image:0"],
            ["extract", color, "-o", out],
            *(["extract", color, s, "-o", out] for s in (*WRONG_SELECTORS, "header", "des:0", "label:0")),
        )
        for arguments in wrong:
            with self.subTest(arguments=arguments):
                result = self.check(*arguments, status=2)
                self.assertEqual(result.stdout, "")
                self.assertNotEqual(result.stderr, "")
                self.assertEqual(self.left_behind(), [])

    def test_wrong_ending_names_the_right_ones(self):
        result = self.check("render", FILES / "color.ntf", "-o", "out.gif", status=2)
        self.assertIn('"out.gif" has none of the endings .png .ppm .pgm .bmp .tif .tiff .jpg .jpeg', result.stderr)

    def test_two_files_for_one_output_are_named(self):
        other = self.folder / "color.nsf"
        other.write_bytes(b"")
        result = self.check("render", FILES / "color.ntf", other, "-d", self.folder / "out", status=2)
        self.assertIn("would both be drawn to", result.stderr)
        self.assertEqual(self.left_behind(), ["color.nsf"])


if __name__ == "__main__":
    unittest.main()
