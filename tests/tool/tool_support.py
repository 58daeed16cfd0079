"""What the tests of the command line share: running it, and reading pictures back without its help."""
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest
import zlib

TOOL = os.environ["TAVINITF"]
FILES = pathlib.Path(os.environ["TAVI_TEST_FILES"])
DECODER = os.environ["TAVI_DECODE_PICTURE"]


class Picture:
    """Rows of samples; channels 3 (red, green, blue) or 1 (grey)."""

    def __init__(self, width, height, channels, samples):
        assert len(samples) == width * height * channels, (width, height, channels, len(samples))
        self.width, self.height, self.channels, self.samples = width, height, channels, bytes(samples)

    def __eq__(self, other):
        return vars(self) == vars(other)

    def __repr__(self):
        return f"{self.width}x{self.height}x{self.channels}: {self.samples[:24].hex()}…"

    def at(self, x, y):
        place = (y * self.width + x) * self.channels
        return tuple(self.samples[place : place + self.channels])


def color_picture(width=37, height=23):
    """What make_test_files writes as color.ntf."""
    return Picture(width, height, 3, [v % 256 for y in range(height) for x in range(width)
                                      for v in (3 * x + y, x + 5 * y, 7 * x + 11 * y + 2)])


def grey_picture(width=29, height=17, channels=3):
    """What make_test_files writes as grey.ntf."""
    return Picture(width, height, channels, [(3 * x + 7 * y) % 256 for y in range(height) for x in range(width)
                                             for _ in range(channels)])


def unfilter_png(data, width, height, channels):
    stride = width * channels
    before, out = bytes(stride), bytearray()
    for y in range(height):
        kind, line = data[y * (stride + 1)], bytearray(data[y * (stride + 1) + 1 : (y + 1) * (stride + 1)])
        for i in range(stride):
            left = line[i - channels] if i >= channels else 0
            up = before[i]
            corner = before[i - channels] if i >= channels else 0
            if kind == 1:
                line[i] = (line[i] + left) % 256
            elif kind == 2:
                line[i] = (line[i] + up) % 256
            elif kind == 3:
                line[i] = (line[i] + (left + up) // 2) % 256
            elif kind == 4:
                estimate = left + up - corner
                distances = abs(estimate - left), abs(estimate - up), abs(estimate - corner)
                line[i] = (line[i] + (left, up, corner)[distances.index(min(distances))]) % 256
        out += line
        before = line
    return out


def read_png(path):
    data = pathlib.Path(path).read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    place, body, head = 8, b"", None
    while place < len(data):
        length, kind = struct.unpack(">I4s", data[place : place + 8])
        chunk = data[place + 8 : place + 8 + length]
        (checksum,) = struct.unpack(">I", data[place + 8 + length : place + 12 + length])
        assert checksum == zlib.crc32(kind + chunk)
        if kind == b"IHDR":
            head = struct.unpack(">IIBBBBB", chunk)
        elif kind == b"IDAT":
            body += chunk
        place += 12 + length
    assert kind == b"IEND"
    width, height, bits, color, compression, filtering, interlace = head
    assert (bits, compression, filtering, interlace) == (8, 0, 0, 0)
    channels = {0: 1, 2: 3}[color]
    return Picture(width, height, channels, unfilter_png(zlib.decompress(body), width, height, channels))


def read_pnm(data):
    magic, sides, full, samples = data.split(b"\n", 3)
    width, height = map(int, sides.split())
    assert full == b"255"
    return Picture(width, height, {b"P5": 1, b"P6": 3}[magic], samples)


def read_bmp(path):
    data = pathlib.Path(path).read_bytes()
    magic, size, _, pixels_at = struct.unpack("<2sIII", data[:14])
    header, width, height, planes, bits, compression = struct.unpack("<IiiHHI", data[14:34])
    assert (magic, size, header, planes, compression) == (b"BM", len(data), 40, 1, 0)
    channels = bits // 8
    if channels == 1:
        assert data[54:pixels_at] == b"".join(bytes([g, g, g, 0]) for g in range(256))
    stride = (width * channels + 3) // 4 * 4
    assert pixels_at + stride * height == len(data)
    samples = bytearray()
    for y in reversed(range(height)):
        row = data[pixels_at + y * stride :][: width * channels]
        for x in range(width):
            samples += row[x * channels : (x + 1) * channels][::-1]
    return Picture(width, height, channels, samples)


def read_picture(path):
    ending = pathlib.Path(path).suffix
    if ending == ".png":
        return read_png(path)
    if ending == ".bmp":
        return read_bmp(path)
    if ending in (".ppm", ".pgm"):
        return read_pnm(pathlib.Path(path).read_bytes())
    return read_pnm(subprocess.run([DECODER, path], capture_output=True, check=True).stdout)


class ToolTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tavinitf-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def run_tool(self, *arguments, **options):
        return subprocess.run([TOOL, *map(str, arguments)], capture_output=True, text=True, timeout=120, **options)

    def check(self, *arguments, status=0, **options):
        """Runs the tool, expects the exit status, and silence on standard error after success."""
        result = self.run_tool(*arguments, **options)
        self.assertEqual(result.returncode, status, result.stderr)
        if status == 0:
            self.assertEqual(result.stderr, "")
        return result

    def render(self, source, name, *options):
        target = self.folder / name
        result = self.check("render", FILES / source, "-o", target, *options)
        self.assertEqual(result.stdout, "")
        self.assertEqual([p.name for p in self.folder.iterdir()], [name])
        picture = read_picture(target)
        target.unlink()
        return picture

    def left_behind(self):
        return sorted(p.name for p in self.folder.iterdir())
