"""tavinitf render: every format and option, pixel by pixel."""
import os
import pty
import resource
import signal
import stat
import subprocess
import time
import unittest

from tool_support import FILES, TOOL, ToolTest, color_picture, grey_picture, read_picture


class Formats(ToolTest):
    def test_lossless_formats_hold_the_picture_exactly(self):
        for ending in ("png", "ppm", "bmp", "tif", "tiff"):
            with self.subTest(ending=ending):
                self.assertEqual(self.render("color.ntf", "out." + ending), color_picture())
                self.assertEqual(self.render("grey.ntf", "out." + ending), grey_picture())

    def test_8_bits(self):
        for ending in ("png", "bmp", "tif"):
            with self.subTest(ending=ending):
                self.assertEqual(self.render("grey.ntf", "out." + ending, "--bits", "8"), grey_picture(channels=1))
        self.assertEqual(self.render("grey.ntf", "out.ppm", "--bits", "8"), grey_picture())

    def test_pgm_is_grey_without_being_told(self):
        self.assertEqual(self.render("grey.ntf", "out.pgm"), grey_picture(channels=1))
        self.assertEqual(self.render("grey.ntf", "out.pgm", "--bits", "8"), grey_picture(channels=1))

    def test_jpeg_is_close(self):
        for source, true in (("color.ntf", color_picture()), ("grey.ntf", grey_picture())):
            drawn = self.render(source, "out.jpg")
            self.assertEqual((drawn.width, drawn.height, drawn.channels), (true.width, true.height, 3))
            apart = [abs(a - b) for a, b in zip(drawn.samples, true.samples)]
            self.assertLess(sum(apart) / len(apart), 4)
        grey = self.render("grey.ntf", "out.jpg", "--bits", "8")
        self.assertEqual(grey.channels, 1)

    def test_endings_may_be_in_capitals(self):
        target = self.folder / "OUT.PNG"
        self.check("render", FILES / "color.ntf", "-o", target)
        self.assertTrue(target.read_bytes().startswith(b"\x89PNG"))

    def test_picture_too_large_for_its_format(self):
        """JPEG ends at 65,500 pixels a side; the composite is as wide as 100 blocks of 900 pixels."""
        wide = bytearray((FILES / "grey.ntf").read_bytes())
        place = wide.index(b"00010001" + b"00290017")
        wide[place : place + 16] = b"0100000109000001"
        (self.folder / "wide.ntf").write_bytes(wide)
        result = self.check("render", self.folder / "wide.ntf", "-o", self.folder / "wide.jpg", status=1)
        self.assertRegex(result.stderr, r"wide\.jpg: not written: Maximum supported image dimension is 65500 pixels "
                                        r"\[ERR_FILE_WRITE -5\]\n$")
        self.assertEqual(self.left_behind(), ["wide.ntf"])


class Options(ToolTest):
    def test_fixed_canvas(self):
        picture = self.render("color.ntf", "out.ppm", "--fixed-canvas")
        self.assertEqual((picture.width, picture.height), (2048, 2048))
        self.assertEqual(picture.at(36, 22), color_picture().at(36, 22))
        self.assertEqual(picture.at(37, 22), (255, 255, 255))
        self.assertEqual(picture.at(2047, 2047), (255, 255, 255))

    def test_stretch_dark_brightens_a_dark_image_only(self):
        plain = self.render("dark.ntf", "out.ppm")
        self.assertEqual(set(plain.samples), {10})
        self.assertGreater(min(self.render("dark.ntf", "out.ppm", "--stretch-dark").samples), 10)
        self.assertEqual(self.render("color.ntf", "out.ppm", "--stretch-dark"), color_picture())

    def test_paint_each_changes_no_image(self):
        self.assertEqual(self.render("color.ntf", "out.ppm", "--paint-each"), color_picture())

    def test_document_without_segments_is_a_blank_canvas(self):
        picture = self.render("empty_document.ntf", "out.pgm")
        self.assertEqual((picture.width, picture.height, set(picture.samples)), (2048, 2048, {255}))

    def test_names_in_any_script(self):
        source = self.folder / "карта 地図 🗺.ntf"
        source.write_bytes((FILES / "color.ntf").read_bytes())
        self.check("render", source, "-o", self.folder / "Übersicht.ppm")
        self.assertEqual(read_picture(self.folder / "Übersicht.ppm"), color_picture())


class ManyFiles(ToolTest):
    def make_inputs(self, count):
        inputs = self.folder / "in"
        inputs.mkdir()
        for i in range(count):
            source = ("color.ntf", "grey.ntf")[i % 2]
            (inputs / f"{i:03}.ntf").write_bytes((FILES / source).read_bytes())
        return sorted(inputs.iterdir())

    def test_four_at_a_time(self):
        sources = self.make_inputs(60)
        out = self.folder / "deep" / "out"
        self.check("render", *sources, "-d", out, "-j", "4")
        self.assertEqual(sorted(p.name for p in out.iterdir()), [f"{i:03}.png" for i in range(60)])
        for i, picture in enumerate(sorted(out.iterdir())):
            self.assertEqual(read_picture(picture), (color_picture(), grey_picture())[i % 2])

    def test_one_refused_file_keeps_no_other_from_being_drawn(self):
        sources = self.make_inputs(12)
        sources[3].write_bytes((FILES / "clevel.ntf").read_bytes())
        sources[7].write_bytes((FILES / "data_cut.ntf").read_bytes())
        out = self.folder / "out"
        result = self.check("render", *sources, "-d", out, "-j", "4", status=1)
        lines = result.stderr.splitlines()
        self.assertEqual(len(lines), 2)
        self.assertIn("003.ntf: not opened:", lines[0])
        self.assertIn("007.ntf: not drawn:", lines[1])
        self.assertEqual(len(list(out.iterdir())), 10)

    def test_progress_on_a_terminal_only(self):
        sources = self.make_inputs(10)
        arguments = [TOOL, "render", *map(str, sources), "-d", str(self.folder / "out"), "--fixed-canvas"]
        master, slave = pty.openpty()
        process = subprocess.Popen(arguments, stdout=slave, stderr=slave)
        os.close(slave)
        shown = b""
        while True:
            try:
                chunk = os.read(master, 65536)
            except OSError:
                break
            if not chunk:
                break
            shown += chunk
        os.close(master)
        self.assertEqual(process.wait(), 0)
        self.assertRegex(shown, rb"\r\[#+\.+\] \d+ of 10")
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown[-60:])
        self.check("render", *sources, "-d", self.folder / "out", "--fixed-canvas", "-j", "2")


class Outputs(ToolTest):
    def test_result_replaces_what_was_there(self):
        target = self.folder / "out.ppm"
        target.write_bytes(b"old")
        self.check("render", FILES / "color.ntf", "-o", target)
        self.assertEqual(read_picture(target), color_picture())

    def test_failure_keeps_what_was_there(self):
        target = self.folder / "out.ppm"
        target.write_bytes(b"old")
        self.check("render", FILES / "data_cut.ntf", "-o", target, status=1)
        self.assertEqual(target.read_bytes(), b"old")
        self.assertEqual(self.left_behind(), ["out.ppm"])

    def test_a_link_stays_a_link(self):
        (self.folder / "link.ppm").symlink_to("real.ppm")
        (self.folder / "real.ppm").write_bytes(b"old")
        self.check("render", FILES / "color.ntf", "-o", self.folder / "link.ppm")
        self.assertTrue((self.folder / "link.ppm").is_symlink())
        self.assertEqual(read_picture(self.folder / "real.ppm"), color_picture())

    def test_a_link_to_nothing_is_no_target(self):
        target = self.folder / "link.png"
        target.symlink_to(self.folder / "missing" / "real.png")
        result = self.check("render", FILES / "color.ntf", "-o", target, status=1)
        self.assertEqual(result.stderr, f"{target}: not written: is a link to nothing [ERR_FILE_WRITE -5]\n")
        self.assertTrue(target.is_symlink())

    def test_no_file_that_is_read_is_replaced(self):
        source = self.folder / "in.png"  # a NITF file whatever its name says
        source.write_bytes((FILES / "color.ntf").read_bytes())
        before = source.read_bytes()
        (self.folder / "out").mkdir()
        (self.folder / "out" / "in.png").symlink_to(source)
        for arguments in (("-o", source), ("-d", self.folder / "out")):
            with self.subTest(arguments=arguments):
                result = self.check("render", source, *arguments, status=1)
                self.assertIn("not written: is a file that is read [ERR_FILE_WRITE -5]", result.stderr)
                self.assertEqual(source.read_bytes(), before)

    def test_permissions_follow_the_umask(self):
        self.check("render", FILES / "color.ntf", "-o", self.folder / "out.png", umask=0o027)
        self.assertEqual(stat.S_IMODE((self.folder / "out.png").stat().st_mode), 0o640)

    def test_targets_that_cannot_be_written(self):
        (self.folder / "folder.png").mkdir()
        os.mkfifo(self.folder / "pipe.png")
        (self.folder / "plain").write_bytes(b"")
        before = self.left_behind()
        cases = (("folder.png", "is a directory"), ("pipe.png", "is no regular file"),
                 ("missing/out.png", "No such file or directory"), ("plain/out.png", "Not a directory"))
        for name, reason in cases:
            with self.subTest(name=name):
                target = self.folder / name
                result = self.check("render", FILES / "color.ntf", "-o", target, status=1)
                self.assertEqual(result.stderr, f"{target}: not written: {reason} [ERR_FILE_WRITE -5]\n")
                self.assertEqual(self.left_behind(), before)
        result = self.check("render", FILES / "color.ntf", "-d", self.folder / "plain", status=1)
        self.assertRegex(result.stderr, r"plain: not written: .+ \[ERR_FILE_WRITE -5\]\n$")

    def test_full_disk_is_reported_and_leaves_nothing(self):
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (64, 64))
        for ending in ("png", "ppm", "bmp", "tif", "jpg"):
            with self.subTest(ending=ending):
                target = self.folder / ("out." + ending)
                result = self.check("render", FILES / "color.ntf", "-o", target, status=1, preexec_fn=limit)
                self.assertEqual(result.stderr, f"{target}: not written: File too large [ERR_FILE_WRITE -5]\n")
                self.assertEqual(self.left_behind(), [])

    def test_a_signal_leaves_nothing(self):
        out = self.folder / "out.png"
        for number in (signal.SIGTERM, signal.SIGINT):
            process = subprocess.Popen([TOOL, "render", str(FILES / "empty_document.ntf"), "-o", str(out)])
            while process.poll() is None and not any(p.name.endswith(".part") for p in self.folder.iterdir()):
                time.sleep(0.0005)
            process.send_signal(number)
            self.assertIn(process.wait(), (-number, 0))  # 0: it was done before the signal came
            self.assertFalse([name for name in self.left_behind() if name.endswith(".part")])


if __name__ == "__main__":
    unittest.main()
