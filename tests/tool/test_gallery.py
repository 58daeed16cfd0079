"""The pictures of docs/gallery.md are what scripts/gallery.sh draws, as far as fonts and rounding let them be."""
import pathlib
import subprocess
import sys
import unittest

from tool_support import ToolTest, read_picture

MAKE_GALLERY, DOCS = map(pathlib.Path, sys.argv[1:3])


class Gallery(ToolTest):
    def test_pictures_are_up_to_date(self):
        subprocess.run([MAKE_GALLERY, self.folder], check=True)
        page = (DOCS / "gallery.md").read_text()
        names = sorted(p.stem for p in self.folder.iterdir())
        self.assertEqual(names, ["annotations", "elements", "placement"])
        for name in names:
            with self.subTest(name=name):
                self.assertIn(f"(gallery-{name}.png)", page)
                self.check("render", self.folder / f"{name}.ntf", "-o", self.folder / "out.png")
                drawn, shown = read_picture(self.folder / "out.png"), read_picture(DOCS / f"gallery-{name}.png")
                self.assertEqual((drawn.width, drawn.height), (shown.width, shown.height))
                apart = sum(abs(a - b) for a, b in zip(drawn.samples, shown.samples)) / len(shown.samples)
                self.assertLess(apart, 1.5, "run scripts/gallery.sh")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
