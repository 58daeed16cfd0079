"""What docs/examples/render.cpp draws: arguments are the program and the folder of the files."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM, FILES = sys.argv[1], pathlib.Path(sys.argv[2])


def run(*arguments):
    result = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=60)
    return result.returncode, result.stderr


def expected_picture():
    """Three by two colours at the origin, a grey column of three at row 1, column 4, red elsewhere."""
    picture = [[(250, 20, 30)] * 5 for _ in range(4)]
    for row in range(2):
        for column in range(3):
            picture[row][column] = tuple(10 * (6 * plane + 3 * row + column) + 1 for plane in range(3))
    for row, grey in enumerate((100, 150, 200)):
        picture[1 + row][4] = (grey,) * 3
    return b"P6\n5 4\n255\n" + bytes(value for row in picture for pixel in row for value in pixel)


class Render(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.out = pathlib.Path(self.folder.name) / "out.ppm"

    def test_draws_every_pixel(self):
        self.assertEqual(run(FILES / "pictures.ntf", self.out), (0, ""))
        self.assertEqual(self.out.read_bytes(), expected_picture())

    def test_reports_a_missing_file(self):
        self.assertEqual(run("missing.ntf", self.out), (1, "missing.ntf: status -10\n"))
        self.assertFalse(self.out.exists())

    def test_reports_a_file_that_cannot_be_drawn(self):
        path = FILES / "not_drawable.ntf"
        self.assertEqual(run(path, self.out), (1, f"{path}: status -16\n"))
        self.assertFalse(self.out.exists())

    def test_reports_a_picture_that_cannot_be_written(self):
        self.assertEqual(run(FILES / "pictures.ntf", pathlib.Path(self.folder.name) / "none" / "out.ppm"), (1, ""))

    def test_wants_two_names(self):
        self.assertEqual(run(), (2, ""))
        self.assertEqual(run(FILES / "pictures.ntf"), (2, ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
