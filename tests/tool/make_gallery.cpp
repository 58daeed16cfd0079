// Makes the files that scripts/gallery.sh renders for docs/gallery.md: what drawings can hold, how they are placed, and
// annotations over an image.  make_gallery FOLDER
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "../graphics/CgmPicture.h"
#include "NtfBuilder.h"

namespace {

using tavi_test::Bytes;
using tavi_test::CgmColour;
using tavi_test::CgmPicture;
using tavi_test::GraphicSpec;
using tavi_test::GreyImage;
using tavi_test::NtfBuilder;

constexpr CgmColour kInk = {30, 40, 60};
constexpr CgmColour kOrange = {230, 120, 20};
constexpr CgmColour kTeal = {0, 130, 140};
constexpr CgmColour kYellow = {255, 220, 60};

Bytes ColourOf(const CgmColour& c) {
  return {c.red, c.green, c.blue};
}

// A drawing, element by element, under the elements' own names.
class Sheet {
 public:
  Sheet() {
    // CHARACTER ORIENTATION: y runs down, so that up is -y.
    picture_.Add(5, 16, CgmPicture::Words({0, -1, 1, 0}));
  }
  Sheet& LineType(int type) { return Put(5, 2, {type}); }
  Sheet& LineWidth(int width) { return Put(5, 3, {width}); }
  Sheet& LineColour(const CgmColour& c) { return Colour(4, c); }
  Sheet& TextColour(const CgmColour& c) { return Colour(14, c); }
  Sheet& FillColour(const CgmColour& c) { return Colour(23, c); }
  Sheet& CharacterHeight(int height) { return Put(5, 15, {height}); }
  Sheet& InteriorStyle(int style) { return Put(5, 22, {style}); }
  Sheet& HatchIndex(int index) { return Put(5, 24, {index}); }
  Sheet& Polyline(std::initializer_list<int> points) { return Put(4, 1, points); }
  Sheet& Polygon(std::initializer_list<int> points) { return Put(4, 7, points); }
  Sheet& Rectangle(int x1, int y1, int x2, int y2) { return Put(4, 11, {x1, y1, x2, y2}); }
  Sheet& Circle(int x, int y, int radius) { return Put(4, 12, {x, y, radius}); }
  Sheet& Ellipse(int x, int y, int rx, int ry) { return Put(4, 17, {x, y, x + rx, y, x, y + ry}); }
  Sheet& Text(int x, int y, const std::string& text) {
    Bytes parameters = CgmPicture::Words({x, y, 1});
    const Bytes string = CgmPicture::String(text);
    parameters.insert(parameters.end(), string.begin(), string.end());
    picture_.Add(4, 4, parameters);
    return *this;
  }
  // The drawing at a place, one unit to a pixel and more: left, top, right, bottom.
  [[nodiscard]] GraphicSpec At(int left, int top, int right, int bottom, uint32_t level) const {
    GraphicSpec graphic;
    graphic.sdlvl = level;
    graphic.bound1_row = left;
    graphic.bound1_column = top;
    graphic.bound2_row = right;
    graphic.bound2_column = bottom;
    graphic.data = picture_.Build();
    return graphic;
  }

 private:
  Sheet& Put(unsigned element_class, unsigned id, std::initializer_list<int> values) {
    picture_.Add(element_class, id, CgmPicture::Words(values));
    return *this;
  }
  Sheet& Colour(unsigned id, const CgmColour& c) {
    picture_.Add(5, id, ColourOf(c));
    return *this;
  }
  CgmPicture picture_;
};

// A frame in the paper's colour: it gives the drawing the bounds that it is placed by.
Sheet Framed(int width, int height, const CgmColour& paper) {
  Sheet sheet;
  sheet.FillColour(paper).InteriorStyle(1).Rectangle(0, 0, width, height);
  return sheet;
}

NtfBuilder Elements() {
  Sheet sheet = Framed(480, 260, {250, 248, 240});
  sheet.TextColour(kInk).CharacterHeight(14);
  for (int type = 1; type <= 5; ++type) {
    const int y = 10 + 24 * type;
    sheet.LineColour(kTeal).LineType(type).LineWidth(type).Polyline({20, y, 150, y});
  }
  sheet.Text(20, 170, "line types and widths").LineType(1);
  for (int hatch = 1; hatch <= 6; ++hatch) {
    const int x = 180 + 50 * ((hatch - 1) % 3);
    const int y = hatch <= 3 ? 20 : 86;
    sheet.FillColour(kOrange).InteriorStyle(3).HatchIndex(hatch).Rectangle(x, y, x + 42, y + 58);
  }
  sheet.Text(180, 170, "hatches").InteriorStyle(1);
  sheet.FillColour(kTeal).Circle(390, 54, 34).FillColour(kOrange).Ellipse(390, 120, 60, 22);
  sheet.Text(340, 170, "circle and ellipse");
  sheet.FillColour(kInk).Polygon({40, 190, 70, 245, 10, 245}).CharacterHeight(34).TextColour(kOrange);
  sheet.Text(95, 240, "Text in any size").CharacterHeight(12).TextColour(kInk).Text(360, 240, "also small");
  NtfBuilder file;
  file.graphics = {sheet.At(0, 0, 480, 260, 1)};
  return file;
}

NtfBuilder Placement() {
  const auto flag = [] {
    Sheet sheet = Framed(100, 60, {235, 240, 245});
    sheet.FillColour(kTeal).Polygon({10, 10, 60, 10, 10, 50}).TextColour(kOrange).CharacterHeight(20);
    sheet.Text(45, 52, "NITF");
    return sheet;
  }();
  NtfBuilder file;
  file.graphics = {flag.At(10, 10, 110, 70, 1), flag.At(130, 10, 330, 130, 2), flag.At(450, 10, 350, 70, 3),
                   flag.At(350, 130, 450, 70, 4), flag.At(10, 80, 110, 130, 5)};
  file.graphics.push_back(flag.At(0, 0, 60, 36, 6));
  file.graphics.back().salvl = 2;  // hangs from the large one, which stands at no location of its own
  file.graphics.back().row = 16;
  file.graphics.back().column = 264;
  Sheet margin;
  margin.LineColour({200, 200, 200}).LineWidth(1).Polyline({0, 0, 460, 0, 460, 140, 0, 140, 0, 0});
  file.graphics.push_back(margin.At(0, 0, 460, 140, 7));
  return file;
}

// A hill, lit from above left.
Bytes Relief(uint32_t width, uint32_t height) {
  Bytes pixels;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const double u = (x - width * 0.45) / 90;
      const double v = (y - height * 0.55) / 70;
      const double slope = (u + v) * std::exp(-(u * u + v * v) / 2);
      pixels.push_back(static_cast<uint8_t>(120 - 70 * slope + 8 * std::sin(x * 0.11) * std::cos(y * 0.07)));
    }
  }
  return pixels;
}

NtfBuilder Annotations() {
  NtfBuilder file{GreyImage(480, 300, Relief(480, 300)).Level(1)};
  Sheet summit;
  summit.LineColour(kYellow).LineWidth(3).Polyline({0, 60, 80, 10}).FillColour(kYellow);
  summit.Polygon({0, 60, 8, 48, 14, 58}).TextColour(kYellow).CharacterHeight(20).Text(86, 16, "Summit 412 m");
  Sheet area;
  area.InteriorStyle(3).HatchIndex(4).FillColour(kOrange).Polygon({0, 30, 70, 0, 130, 40, 90, 90, 10, 80});
  area.LineColour(kOrange).LineWidth(2).Polyline({0, 30, 70, 0, 130, 40, 90, 90, 10, 80, 0, 30});
  Sheet route;
  route.LineColour({255, 255, 255})
      .LineWidth(3)
      .LineType(2)
      .Polyline({0, 90, 60, 70, 120, 95, 200, 30, 280, 40, 330, 0});
  file.graphics = {summit.At(215, 90, 440, 165, 3), area.At(40, 160, 172, 252, 4),
                   route.At(90, 185, 420, 280, 5)};
  return file;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_gallery FOLDER\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  Elements().Build().Write(folder, "elements.ntf");
  Placement().Build().Write(folder, "placement.ntf");
  Annotations().Build().Write(folder, "annotations.ntf");
  return 0;
}
