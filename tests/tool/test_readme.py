"""The program that the README shows is compiled as it stands there, and draws a picture."""
import os
import pathlib
import re
import subprocess
import sys
import unittest

from tool_support import FILES, ToolTest, color_picture, read_pnm

COMPILER, PROJECT, LIBRARIES = sys.argv[1:4]
FLAGS = sys.argv[4:]


class Readme(ToolTest):
    def test_c_program(self):
        text = (pathlib.Path(PROJECT) / "README.md").read_text()
        (program,) = re.findall(r"```c\n(.*?)```", text, re.DOTALL)
        (self.folder / "program.c").write_text(program)
        subprocess.run([COMPILER, *FLAGS, "-Wall", "-Wextra", "-Werror", f"-I{PROJECT}/include", "program.c", "-o", "program",
                        f"-L{LIBRARIES}", f"-Wl,-rpath,{LIBRARIES}", "-lTaviNitf", "-lTaviHost"],
                       cwd=self.folder, check=True)
        (self.folder / "image.ntf").write_bytes((FILES / "color.ntf").read_bytes())
        result = subprocess.run([self.folder / "program"], cwd=self.folder, capture_output=True)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(read_pnm(result.stdout), color_picture())
        os.remove(self.folder / "image.ntf")
        result = subprocess.run([self.folder / "program"], cwd=self.folder, capture_output=True)
        self.assertEqual((result.returncode, result.stderr), (1, b"status -10\n"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
