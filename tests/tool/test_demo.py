"""The README's picture is what scripts/demo.sh draws."""
import pathlib
import subprocess
import sys
import unittest

from tool_support import ToolTest, read_picture

MAKE_DEMO, PICTURE = map(pathlib.Path, sys.argv[1:3])


class Demo(ToolTest):
    def test_picture_is_up_to_date(self):
        """The landscape is computed in floating point, so another machine may differ in the last digit."""
        subprocess.run([MAKE_DEMO, self.folder / "demo.ntf"], check=True)
        self.check("render", self.folder / "demo.ntf", "-o", self.folder / "demo.png")
        drawn, shown = read_picture(self.folder / "demo.png"), read_picture(PICTURE)
        self.assertEqual((drawn.width, drawn.height, drawn.channels), (shown.width, shown.height, shown.channels))
        apart = max(abs(a - b) for a, b in zip(drawn.samples, shown.samples))
        self.assertLessEqual(apart, 2, "copy build/demo/demo.png to docs/demo.png")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
