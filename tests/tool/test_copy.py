"""tavinitf copy: the file comes through whole, and what did not is told."""
import json
import os
import pathlib
import shutil
import subprocess
import unittest

from nitf_fields import Segments
from tool_support import FILES, ToolTest

SAMPLES = pathlib.Path(os.environ.get("TAVI_SAMPLES") or os.environ["TAVI_SAMPLES_DEFAULT"]) / "nitf"
IDENTICAL = ("color.ntf", "dark.ntf", "empty_document.ntf", "grey.ntf", "jpeg.ntf", "large.ntf", "many_blocks.ntf", "tidy.ntf")


class Copy(ToolTest):
    def copy(self, source, status=0):
        return self.check("copy", source, self.folder / "out.ntf", status=status)

    def test_identical_and_quiet(self):
        for name in IDENTICAL:
            with self.subTest(name=name):
                self.assertEqual(self.copy(FILES / name).stdout, "")
                self.assertEqual((self.folder / "out.ntf").read_bytes(), (FILES / name).read_bytes())
                self.assertEqual(self.left_behind(), ["out.ntf"])

    def test_what_the_writer_sets_is_told(self):
        lines = self.copy(FILES / "full.ntf").stdout.splitlines()
        out = self.folder / "out.ntf"
        self.assertEqual(lines, [f'{out}: file header: LRESH[0] "0003" becomes "0004"',
                                 f"{out}: image 0: LUTD[0][0] 10 bytes becomes others",
                                 f'{out}: image 3: COMRAT "N012" becomes "00.0"',
                                 f"{out}: not carried over: 1 reserved extension segment, which the file header still lists"])

    def test_dates_and_colours_of_the_header(self):
        data = bytearray((FILES / "tidy.ntf").read_bytes())
        fields = {(s["kind"], f["name"]): f for s in Segments(bytes(data)).found for f in s["fields"]}
        for kind, name, value in (("file header", "FSDCDT", b"20310102"), ("graphic", "SCOLOR", b"M")):
            at = fields[kind, name]["offset"]
            data[at : at + len(value)] = value
        (self.folder / "in.ntf").write_bytes(data)
        lines = self.copy(self.folder / "in.ntf").stdout.splitlines()
        out = self.folder / "out.ntf"
        self.assertEqual(lines, [f'{out}: file header: FSDCXM "    " becomes "2031"', f'{out}: graphic 0: SCOLOR "M" becomes "C"'])

    def test_bytes_behind_the_end(self):
        (self.folder / "in.ntf").write_bytes((FILES / "color.ntf").read_bytes() + b"12345")
        self.assertEqual(self.copy(self.folder / "in.ntf").stdout,
                         f"{self.folder / 'out.ntf'}: not carried over: 5 bytes behind the last segment\n")

    def test_onto_itself(self):
        path, link = self.folder / "in.ntf", self.folder / "link.ntf"
        shutil.copy(FILES / "full.ntf", path)
        os.symlink(path, link)
        expected = self.copy(path) and (self.folder / "out.ntf").read_bytes()
        self.check("copy", path, link)
        self.assertEqual(path.read_bytes(), expected)
        self.assertTrue(link.is_symlink())
        self.assertEqual(self.left_behind(), ["in.ntf", "link.ntf", "out.ntf"])

    def test_permissions_of_what_is_replaced(self):
        out = self.folder / "out.ntf"
        for mode in (0o600, 0o640, 0o444, 0o755):
            with self.subTest(mode=oct(mode)):
                out.write_bytes(b"before")
                out.chmod(mode)
                self.copy(FILES / "grey.ntf")
                self.assertEqual(out.stat().st_mode & 0o7777, mode)
                out.unlink()
        self.copy(FILES / "grey.ntf")
        mask = os.umask(0)
        os.umask(mask)
        self.assertEqual(out.stat().st_mode & 0o7777, 0o666 & ~mask)

    def test_names_as_long_as_they_may_be(self):
        for size in (230, 246, 255):
            with self.subTest(size=size):
                out = self.folder / ("a" * (size - 4) + ".ntf")
                self.check("copy", FILES / "grey.ntf", out)
                self.assertEqual(out.read_bytes(), (FILES / "grey.ntf").read_bytes())
                out.unlink()
                self.assertEqual(self.left_behind(), [])

    def test_where_it_prints(self):
        log = self.folder / "log"
        with open(log, "wb") as stream:
            stream.write(b"before")
            stream.flush()
            for out in (log, "/dev/stdout"):
                result = subprocess.run([os.environ["TAVINITF"], "copy", FILES / "grey.ntf", out], stdout=stream,
                                        stderr=subprocess.PIPE, text=True, check=False)
                self.assertEqual(result.returncode, 1)
                self.assertIn("is where this program prints", result.stderr)
        self.assertEqual(log.read_bytes(), b"before")

    def test_failures(self):
        for name in ("clevel.ntf", "nothing.ntf", "missing.ntf"):
            line = self.check("info", FILES / name, status=1).stderr
            self.assertEqual(self.copy(FILES / name, status=1).stderr, line)
        path = FILES / "data_cut.ntf"
        self.assertRegex(self.copy(path, status=1).stderr,
                         rf"^{path}: not copied: image 0: its data end at byte \d+, the file at byte \d+ \[ERR_FILE_READ -7\]\n$")
        result = self.check("copy", FILES / "grey.ntf", self.folder, status=1)
        self.assertEqual(result.stderr, f"{self.folder}: not written: is a directory [ERR_FILE_WRITE -5]\n")
        missing = self.folder / "missing" / "out.ntf"
        result = self.check("copy", FILES / "grey.ntf", missing, status=1)
        self.assertEqual(result.stderr, f"{missing}: not written: No such file or directory [ERR_FILE_WRITE -5]\n")
        self.assertEqual(self.left_behind(), [])

    def test_full_disk_leaves_the_target_alone(self):
        target = self.folder / "out.ntf"
        target.write_bytes(b"before")
        command = ["bash", "-c", 'ulimit -f 100; exec "$0" "$@"', os.environ["TAVINITF"], "copy", FILES / "large.ntf", target]
        result = subprocess.run(command, capture_output=True, text=True)
        self.assertEqual(result.stderr, f"{target}: not written: it cannot be written in full [ERR_FILE_WRITE -5]\n")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(target.read_bytes(), b"before")
        self.assertEqual(self.left_behind(), ["out.ntf"])

    @unittest.skipUnless(SAMPLES.is_dir(), "no samples")
    def test_samples_keep_their_data_and_fields(self):
        for sample in json.loads((SAMPLES / "manifest.json").read_text())["files"]:
            if sample["open"] != 1:
                continue
            with self.subTest(file=sample["file"]):
                told = [line.split(": ", 1)[1] for line in self.copy(SAMPLES / sample["file"]).stdout.splitlines()]
                rates = [line for line in told if " COMRAT " in line or line.startswith("not carried over")]
                self.assertEqual(told, rates)
                # All that was not told is as it was.
                before, after = (SAMPLES / sample["file"]).read_bytes(), (self.folder / "out.ntf").read_bytes()
                different = [i for i, (a, b) in enumerate(zip(before, after)) if a != b]
                self.assertLessEqual(len(different), 4 * len(told))
                self.assertLessEqual(len(after), len(before))


if __name__ == "__main__":
    unittest.main()
