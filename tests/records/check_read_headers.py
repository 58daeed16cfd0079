"""What docs/examples/read_headers.c prints: arguments are the program and the folder of the files."""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM, FILES = sys.argv[1], pathlib.Path(sys.argv[2])


def run(*arguments):
    result = subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=60)
    return result.returncode, result.stdout, result.stderr


class ReadHeaders(unittest.TestCase):
    def test_prints_the_title_and_each_images_size(self):
        self.assertEqual(run(FILES / "pictures.ntf"),
                         (0, "Two pictures".ljust(80) + "\nimage 0: 3 x 2\nimage 1: 1 x 3\n", ""))

    def test_prints_the_title_alone_without_images(self):
        self.assertEqual(run(FILES / "no_images.ntf"), (0, "Nothing to see".ljust(80) + "\n", ""))

    def test_reports_a_missing_file(self):
        self.assertEqual(run("missing.ntf"), (1, "", "missing.ntf: status -10\n"))

    def test_reports_a_refused_file(self):
        code, out, messages = run(FILES / "refused.ntf")
        self.assertEqual((code, out), (1, ""))
        self.assertTrue(messages.endswith("refused.ntf: status -700001\n"), messages)

    def test_wants_one_file(self):
        self.assertEqual(run(), (2, "", ""))
        self.assertEqual(run("one", "two"), (2, "", ""))

    def test_reads_names_with_blanks(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "two words.ntf"
            shutil.copy(FILES / "no_images.ntf", path)
            self.assertEqual(run(path)[0], 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
