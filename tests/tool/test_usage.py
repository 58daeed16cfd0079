"""Help, version, and every wrong way to call the tool."""
import unittest

from tool_support import FILES, ToolTest


class Usage(ToolTest):
    def test_version(self):
        self.assertRegex(self.check("--version").stdout, r"^tavinitf \d+\.\d+\.\d+\n$")

    def test_help_names_subcommands(self):
        text = self.check("--help").stdout
        self.assertIn("info", text)
        self.assertIn("render", text)
        self.assertIn("Exit status: 0 done, 1 a file or the operation failed, 2 wrong usage.", text)

    def test_help_of_each_subcommand(self):
        self.assertIn("--json", self.check("info", "--help").stdout)
        text = self.check("render", "--help").stdout
        for option in ("--output", "--directory", "--jobs", "--fixed-canvas", "--stretch-dark", "--paint-each", "--bits"):
            self.assertIn(option, text)

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
