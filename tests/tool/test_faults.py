"""Faults of the whole program: no room, no memory, signals. tool_faults_tests lets single calls fail, this the system."""
import os
import resource
import shutil
import signal
import subprocess
import time
import unittest

from test_create import cgm, png
from tool_support import FILES, TOOL, ToolTest


class Faults(ToolTest):
    def setUp(self):
        super().setUp()
        inputs = self.folder / "in"
        inputs.mkdir()
        self.out = self.folder / "out"
        self.out.mkdir()
        for name in ("tidy.ntf", "large.ntf"):
            shutil.copy(FILES / name, inputs)
        (inputs / "a.png").write_bytes(png(8, 8, 8, 2, [bytes(range(24))] * 8))
        (inputs / "a.cgm").write_bytes(cgm(9, 9))
        (inputs / "a.txt").write_text("text")
        parts = ["--image", inputs / "a.png", "--graphic", f"{inputs / 'a.cgm'}@0,0,9,9", "--text", inputs / "a.txt"]
        source, large = inputs / "tidy.ntf", inputs / "large.ntf"
        self.commands = {  # each with the target that it ends with
            "copy": ["copy", source, self.out / "a.ntf"],
            "set": ["set", source, self.out / "a.ntf", "header:FTITLE=new"],
            "append": ["append", source, self.out / "a.ntf", *parts],
            "create": ["create", self.out / "a.ntf", *parts],
            "extract": ["extract", large, "image:0", "-o", self.out / "a.bin"],
            "drawing": ["extract", FILES / "drawings.ntf", "graphic:0", "-o", self.out / "a.pdf"],
            **{ending: ["render", large, "-o", self.out / f"a.{ending}"] for ending in ("png", "ppm", "bmp", "tif", "jpg")},
        }

    def target_of(self, arguments):
        return next(a for a in map(str, arguments) if a.startswith(str(self.out)))

    def expect_untouched(self, target):
        self.assertEqual([p.name for p in self.out.iterdir()], [os.path.basename(target)])
        with open(target, "rb") as file:
            self.assertEqual(file.read(), b"before")

    def start(self, arguments, **options):
        return subprocess.Popen([TOOL, *map(str, arguments)], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, **options)

    def limited(self, arguments, what, most):
        process = self.start(arguments, preexec_fn=lambda: resource.setrlimit(what, (most, most)))
        errors = process.communicate(timeout=120)[1]
        return process.returncode, errors

    def for_each_command(self):
        for name, arguments in self.commands.items():
            with self.subTest(command=name):
                shutil.rmtree(self.out)
                self.out.mkdir()
                target = self.target_of(arguments)
                with open(target, "wb") as file:
                    file.write(b"before")
                yield name, arguments, target

    def test_no_room(self):
        for _, arguments, target in self.for_each_command():
            for room in (0, 1, 700):
                status, errors = self.limited(arguments, resource.RLIMIT_FSIZE, room)
                self.assertEqual((status, errors.count("\n")), (1, 1), errors)
                self.assertIn("not written", errors)
                self.expect_untouched(target)

    @unittest.skipIf(os.environ.get("TAVI_SANITIZE"), "sanitizers take address space for themselves")
    def test_no_memory(self):
        least = next(m for m in range(16, 1024, 4) if self.limited(["--version"], resource.RLIMIT_AS, m << 20)[0] == 0)
        failed = 0
        for name, arguments, target in self.for_each_command():
            for megabytes in range(least, least + 40, 2):
                status, errors = self.limited(arguments, resource.RLIMIT_AS, megabytes << 20)
                if status == 0:
                    break
                failed += 1
                # The library that draws them crashes when it has no memory.
                self.assertIn(status, (1, -signal.SIGSEGV) if name == "drawing" else (1,), errors)
                self.expect_untouched(target)
        self.assertGreater(failed, 2)

    def test_signals_in_the_middle(self):
        large = self.folder / "in" / "large.ntf"
        target = self.out / "a.png"
        sources = []
        for i in range(40):
            sources.append(self.folder / "in" / f"l{i}.ntf")
            os.link(large, sources[-1])
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT):
            for pause in (0.005, 0.03):
                with self.subTest(signal=number, pause=pause):
                    process = self.start(["render", *sources, "-d", self.out, "-j", "4"])
                    while process.poll() is None and not any(p.name.startswith(".") for p in self.out.iterdir()):
                        time.sleep(0.001)
                    time.sleep(pause)
                    process.send_signal(number)
                    self.assertIn(process.wait(), (-number, 0))
                    process.stderr.close()
                    self.assertEqual([p.name for p in self.out.iterdir() if p.name.startswith(".")], [])
                    shutil.rmtree(self.out)
                    self.out.mkdir()
        self.assertFalse(target.exists())

    def test_what_is_ignored_stays_ignored(self):
        process = self.start(["render", self.folder / "in" / "large.ntf", "-o", self.out / "a.png"],
                             preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        while process.poll() is None:
            process.send_signal(signal.SIGHUP)
            time.sleep(0.002)
        process.stderr.close()
        self.assertEqual(process.returncode, 0)
        self.assertEqual([p.name for p in self.out.iterdir()], ["a.png"])


if __name__ == "__main__":
    unittest.main()
