"""The README's picture is what scripts/demo.sh draws, from a file that nothing is wrong with."""
import pathlib
import subprocess
import sys
import unittest

from tool_support import TOOL, ToolTest, read_picture

MAKE_FILE, MAKE_DEMO, PICTURE = map(pathlib.Path, sys.argv[1:4])


class Demo(ToolTest):
    def test_picture_is_up_to_date(self):
        """The landscape is computed in floating point, coded and drawn with fonts: another machine may differ a little."""
        subprocess.run([MAKE_FILE, TOOL, MAKE_DEMO, self.folder], check=True)
        self.check("verify", self.folder / "demo.ntf")
        self.check("render", self.folder / "demo.ntf", "-o", self.folder / "demo.png")
        drawn, shown = read_picture(self.folder / "demo.png"), read_picture(PICTURE)
        self.assertEqual((drawn.width, drawn.height, drawn.channels), (shown.width, shown.height, shown.channels))
        far = sum(abs(a - b) > 8 for a, b in zip(drawn.samples, shown.samples))
        self.assertLessEqual(far, len(shown.samples) // 200, "copy build/demo/demo.png to docs/demo.png")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
