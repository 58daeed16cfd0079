"""What docs/examples/create.cpp makes: arguments are that program and the one that draws."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CREATE, RENDER = sys.argv[1], sys.argv[2]
WIDTH, HEIGHT = 320, 200


def run(program, *arguments):
    result = subprocess.run([program, *map(str, arguments)], capture_output=True, text=True, timeout=60)
    return result.returncode, result.stderr


class Create(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = pathlib.Path(self.folder.name)
        self.note = self.path / "note.txt"
        self.note.write_bytes(b"A note.\n")

    def test_makes_a_file(self):
        out = self.path / "new.ntf"
        self.assertEqual(run(CREATE, out, self.note), (0, ""))
        data = out.read_bytes()
        self.assertEqual(data[:9], b"NITF02.10")
        self.assertEqual(int(data[342:354]), len(data))
        self.assertEqual(data[360:363], b"001")
        self.assertTrue(data.endswith(b"A note.\n"))
        self.assertEqual(data.count(b"Frame               "), 1)

    def test_the_file_draws(self):
        out, picture = self.path / "new.ntf", self.path / "new.ppm"
        self.assertEqual(run(CREATE, out, self.note), (0, ""))
        self.assertEqual(run(RENDER, out, picture), (0, ""))
        head = b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT)
        data = picture.read_bytes()
        self.assertTrue(data.startswith(head))

        def pixel(x, y):
            at = len(head) + 3 * (y * WIDTH + x)
            return data[at:at + 3]

        def expect(x, y, color, tolerance):
            for got, wanted in zip(pixel(x, y), color):
                self.assertAlmostEqual(got, wanted, delta=tolerance, msg=f"{x}, {y}: {pixel(x, y)}")

        for x, y in ((0, 0), (319, 0), (90, 60), (200, 150), (319, 199), (30, 60), (150, 60)):
            expect(x, y, (255 - 255 * x // WIDTH, 255 * x // WIDTH, 255 * y // HEIGHT), 16)
        for x, y in ((42, 60), (138, 60), (90, 32), (90, 88)):
            expect(x, y, (255, 255, 0), 8)

    def test_reports_a_missing_text(self):
        out = self.path / "new.ntf"
        self.assertEqual(run(CREATE, out, self.path / "missing.txt"), (1, f"{out}: status -14\n"))
        self.assertFalse(out.exists())

    def test_reports_a_file_that_cannot_be_made(self):
        out = self.path / "none" / "new.ntf"
        self.assertEqual(run(CREATE, out, self.note), (1, f"{out}: status -5\n"))

    def test_wants_two_names(self):
        self.assertEqual(run(CREATE), (2, ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
