// Makes what scripts/demo.sh puts into its sample file: a map in colours, a relief in grey, a drawing over both, a text.
//   make_demo DIRECTORY
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kWidth = 640;
constexpr uint32_t kHeight = 400;

// ---- An invented landscape ----

double Lattice(int32_t x, int32_t y) {
  uint32_t n = static_cast<uint32_t>(x) * 374761393U + static_cast<uint32_t>(y) * 668265263U;
  n = (n ^ (n >> 13)) * 1274126177U;
  return static_cast<double>((n ^ (n >> 16)) & 0xFFFF) / 65535.0;
}

double Smooth(double t) {
  return t * t * (3 - 2 * t);
}

double Noise(double x, double y) {
  const auto left = static_cast<int32_t>(std::floor(x));
  const auto top = static_cast<int32_t>(std::floor(y));
  const double u = Smooth(x - left);
  const double v = Smooth(y - top);
  const double upper = std::lerp(Lattice(left, top), Lattice(left + 1, top), u);
  const double lower = std::lerp(Lattice(left, top + 1), Lattice(left + 1, top + 1), u);
  return std::lerp(upper, lower, v);
}

// Height above the sea, about -0.5 to 0.5.
double Height(double x, double y) {
  double height = -0.47;
  double share = 0.5;
  double scale = 1.0 / 150;
  for (int octave = 0; octave < 5; ++octave) {
    height += share * Noise(x * scale + 7 * octave, y * scale + 3 * octave);
    share *= 0.5;
    scale *= 2;
  }
  return height;
}

struct Color {
  double red, green, blue;
};

Color Mix(const Color& a, const Color& b, double t) {
  return {std::lerp(a.red, b.red, t), std::lerp(a.green, b.green, t), std::lerp(a.blue, b.blue, t)};
}

// Lit from the upper left.
double Light(double x, double y) {
  const double slope = (Height(x + 1, y) - Height(x - 1, y)) + (Height(x, y + 1) - Height(x, y - 1));
  return std::clamp(1.0 + 9.0 * slope, 0.45, 1.5);
}

Color LandColor(double height) {
  constexpr std::array<Color, 5> kSteps = {
      {{214, 203, 152}, {126, 160, 90}, {92, 126, 72}, {150, 132, 100}, {245, 245, 245}}};
  const double place = std::clamp(height / 0.32, 0.0, 0.999) * (kSteps.size() - 1);
  const auto step = static_cast<size_t>(place);
  return Mix(kSteps[step], kSteps[step + 1], place - static_cast<double>(step));
}

uint8_t ToByte(double value) {
  return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

Color MapColor(uint32_t x, uint32_t y) {
  const double height = Height(x, y);
  if (height < 0) return Mix({86, 150, 190}, {24, 58, 110}, std::min(1.0, -height * 4));
  const Color land = LandColor(height);
  const double light = Light(x, y);
  return {land.red * light, land.green * light, land.blue * light};
}

// ---- The pictures ----

Bytes MapPicture() {
  Bytes picture;
  for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
    const Color color = MapColor(i % kWidth, i / kWidth);
    for (const double sample : {color.red, color.green, color.blue}) picture.push_back(ToByte(sample));
  }
  return picture;
}

constexpr uint32_t kReliefSide = 128;

// The light on the land alone, five times smaller than the map.
Bytes ReliefPicture() {
  Bytes picture;
  for (uint32_t i = 0; i < kReliefSide * kReliefSide; ++i) {
    picture.push_back(ToByte(150 * Light(12 + 5.0 * (i % kReliefSide), 5.0 * (i / kReliefSide))));
  }
  return picture;
}

// ---- The drawing: a binary CGM of version 1, one unit to a pixel, y upward ----

struct Point {
  int x, y;  // column and row of the map
};

class Metafile {
 public:
  Metafile() {
    Put(0, 1, Text("demo"));
    Put(1, 1, Numbers({1}));
    Put(1, 11, Numbers({1, -1, 1}));  // the drawing set and some control elements
    Put(1, 13, Text("HELVETICA_BOLD"));
    Put(0, 3, Text("demo"));
    Put(2, 2, Numbers({1}));  // colours as red, green, blue
    Put(2, 3, Numbers({0}));  // widths in units
    Put(2, 5, Numbers({0}));
    Put(2, 6, Numbers({0, 0, static_cast<int>(kWidth), static_cast<int>(kHeight)}));
    Put(0, 4, {});
    Put(5, 10, Numbers({1}));
  }

  Metafile& Line(const std::vector<Point>& points, int width, const Bytes& color, int dashes = 1) {
    Put(5, 2, Numbers({dashes}));
    Put(5, 3, Numbers({width}));
    Put(5, 4, color);
    return Put(4, 1, Points(points));
  }
  Metafile& Polygon(const std::vector<Point>& points, const Bytes& color) {
    Put(5, 22, Numbers({1}));
    Put(5, 23, color);
    return Put(4, 7, Points(points));
  }
  Metafile& Circle(Point centre, int radius, const Bytes& color) {
    Put(5, 22, Numbers({1}));
    Put(5, 23, color);
    Bytes data = Points({centre});
    Append(data, Numbers({radius}));
    return Put(4, 12, data);
  }
  Metafile& Words(Point start, int height, const Bytes& color, const std::string& words) {
    Put(5, 14, color);
    Put(5, 15, Numbers({height}));
    Bytes data = Points({start});
    Append(data, Numbers({1}));
    Append(data, Text(words));
    return Put(4, 4, data);
  }
  Bytes End() {
    Put(0, 5, {});
    Put(0, 2, {});
    return std::move(bytes_);
  }

 private:
  static void Append(Bytes& to, const Bytes& more) { to.insert(to.end(), more.begin(), more.end()); }
  static Bytes Numbers(const std::vector<int>& numbers) {
    Bytes data;
    for (const int number : numbers) {
      data.push_back(static_cast<uint8_t>(static_cast<unsigned>(number) >> 8));
      data.push_back(static_cast<uint8_t>(number));
    }
    return data;
  }
  static Bytes Points(const std::vector<Point>& points) {
    Bytes data;
    for (const Point& point : points) Append(data, Numbers({point.x, static_cast<int>(kHeight) - point.y}));
    return data;
  }
  static Bytes Text(const std::string& text) {
    Bytes data = {static_cast<uint8_t>(text.size())};
    data.insert(data.end(), text.begin(), text.end());
    return data;
  }

  // An element: its class and number, the length of its data, the data to an even length.
  Metafile& Put(unsigned group, unsigned number, const Bytes& data) {
    constexpr size_t kLongForm = 31;
    const size_t length = std::min(data.size(), kLongForm);
    Append(bytes_, Numbers({static_cast<int>(group << 12 | number << 5 | length)}));
    if (length == kLongForm) Append(bytes_, Numbers({static_cast<int>(data.size())}));
    Append(bytes_, data);
    if (data.size() % 2 != 0) bytes_.push_back(0);
    return *this;
  }

  Bytes bytes_;
};

// Its frame fills the map, so that the drawing keeps its size in the rectangle 3, 3 to 637, 397.
Bytes Annotation() {
  const Bytes white = {255, 255, 255};
  const Bytes red = {205, 40, 30};
  const Bytes cream = {255, 248, 214};
  const Bytes dark = {40, 30, 20};
  const int left = 14;
  const int top = static_cast<int>(kHeight - kReliefSide) - 14;
  const int side = static_cast<int>(kReliefSide);
  return Metafile()
      .Line({{4, 4}, {636, 4}, {636, 396}, {4, 396}, {4, 4}}, 2, white)
      .Line({{left, top}, {left + side, top}, {left + side, top + side}, {left, top + side}, {left, top}}, 3,
            cream)
      .Words({left + 6, top - 8}, 16, cream, "Relief")
      .Line({{205, 330}, {270, 250}, {360, 262}, {430, 190}, {520, 120}}, 3, red, 2)
      .Circle({205, 330}, 7, red)
      .Circle({520, 120}, 7, red)
      .Words({533, 126}, 18, dark, "Cape")
      .Polygon({{600, 26}, {612, 66}, {600, 56}, {588, 66}}, cream)
      .Words({594, 86}, 18, cream, "N")
      .Words({18, 52}, 40, cream, "TAVINITF")
      .Words({20, 78}, 18, cream, "An invented coast")
      .End();
}

void Write(const std::filesystem::path& path, const std::string& head, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << head;
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error(path.string() + " cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_demo DIRECTORY\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  const auto size = [](uint32_t width, uint32_t height) {
    return std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  };
  Write(folder / "map.ppm", "P6\n" + size(kWidth, kHeight), MapPicture());
  Write(folder / "relief.pgm", "P5\n" + size(kReliefSide, kReliefSide), ReliefPicture());
  Write(folder / "annotation.cgm", "", Annotation());
  Write(folder / "note.txt", "The coast, its heights and the passage to the cape are invented.\n", {});
  return 0;
}
