"""info --json agrees with the manifest of the real sample files, for those that open and those that are refused."""
import json
import os
import pathlib
import sys
import unittest

from tool_support import ToolTest

SAMPLES = pathlib.Path(os.environ.get("TAVI_SAMPLES") or os.environ["TAVI_SAMPLES_DEFAULT"]) / "nitf"
SKIPPED = 77


def describe(segment):
    """A segment in the words of the manifest."""
    number = lambda name: int(segment[name])
    if segment["kind"] == "image":
        return (f"image {number('NCOLS')}x{number('NROWS')} {segment['IC']} {segment['IREP']} "
                f"{segment['ABPP']}/{segment['NBPP']} bands {segment['bands']} IMODE {segment['IMODE']} "
                f"{number('NBPR')}x{number('NBPC')} blocks of {number('NPPBH')}x{number('NPPBV')}"
                + (" mask" if segment["mask"] else ""))
    if segment["kind"] == "graphic":
        return (f"graphic SFMT {segment['SFMT']} level {segment['SDLVL']} attached {segment['SALVL']} "
                f"at {segment['SLOC']}")
    if segment["kind"] == "text":
        return f"text {segment['TXTFMT']} {segment['data_length']} bytes"
    return f"DES {segment['DESID']} {segment['data_length']} bytes"


class Samples(ToolTest):
    def test_every_file_of_the_manifest(self):
        manifest = json.loads((SAMPLES / "manifest.json").read_text())
        self.assertTrue(manifest["files"])
        for sample in manifest["files"]:
            with self.subTest(file=sample["file"]):
                opens = sample["open"] == 1
                result = self.check("info", "--json", SAMPLES / sample["file"], status=0 if opens else 1)
                (file,) = json.loads(result.stdout)
                if opens:
                    self.assertEqual(file["size"], sample["size"])
                    self.assertEqual([describe(s) for s in file["segments"]] or ["no segments"], sample["segments"])
                else:
                    self.assertEqual(file["error"]["number"], sample["open"])
                    self.assertIn(f" {sample['open']}]", result.stderr)


if __name__ == "__main__":
    if not SAMPLES.is_dir():
        sys.exit(SKIPPED)
    unittest.main()
