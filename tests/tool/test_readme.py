"""The program that the README shows is compiled as it stands there and draws a picture; its commands run."""
import os
import pathlib
import re
import subprocess
import sys
import unittest

from tool_support import FILES, TOOL, ToolTest, color_picture, read_pnm

COMPILER, PROJECT, LIBRARIES, MAKE_DEMO = sys.argv[1:5]
FLAGS = sys.argv[5:]


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

    def test_commands(self):
        """The commands that make and change files run as they stand, in the demo's folder."""
        text = (pathlib.Path(PROJECT) / "README.md").read_text()
        (block,) = (b for b in re.findall(r"```\n(.*?)```", text, re.DOTALL) if "../bin/tavinitf" in b)
        folder = self.folder / "demo"
        subprocess.run([f"{PROJECT}/scripts/demo_file.sh", TOOL, MAKE_DEMO, folder], check=True)
        (self.folder / "bin").mkdir()
        (self.folder / "bin" / "tavinitf").symlink_to(TOOL)
        commands = block.strip().splitlines()
        self.assertEqual([c.split()[1] for c in commands], ["verify", "copy", "set", "create", "append"])
        for command in commands:
            with self.subTest(command=command):
                result = subprocess.run(["bash", "-c", command], cwd=folder, capture_output=True, text=True)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.check("verify", folder / "copy.ntf")
        self.check("verify", folder / "new.ntf")
        listed = self.check("headers", folder / "copy.ntf").stdout
        for field in (r"FTITLE +My map", r"ILOC +0002000030", r"TXTITL +Note"):
            self.assertRegex(listed, field)
        listed = self.check("info", folder / "new.ntf").stdout
        for segment in ("image 1", "graphic 0", "text 0"):
            self.assertIn(segment, listed)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
