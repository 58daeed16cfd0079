// Metafiles, octet by octet: structure, order, header words, attributes, and what lies outside the profile.
#include "TaviFile/CgmWriter.h"

#include <cmath>
#include <numbers>
#include <numeric>

#include "CgmSketch.h"
#include "TaviFile/CgmWriterShapes.h"
#include "VectorTest.h"

namespace tavi::test {
namespace {

using namespace sketch;
using host::cgm::WriteMetafile;
using Sketch = sketch::CgmSketch;

class CgmWriter : public HostTest {};

TEST_F(CgmWriter, AnEmptyDrawingOctetForOctet) {
  std::vector<uint8_t> expected = {0x00, 0x29, 8,    'T',  'a',  'v',  'i',  'H',
                                   'o',  's',  't',  0,                             // BEGIN METAFILE
                                   0x10, 0x22, 0x00, 0x01,                          // METAFILE VERSION
                                   0x11, 0x66, 0x00, 0x01, 0xFF, 0xFF, 0x00, 0x01,  // METAFILE ELEMENT LIST
                                   0x10, 0x5F, 0x00, 73,   72};                     // METAFILE DESCRIPTION
  const std::string profile = "NITF/CGM-APP-2.0 NITF/CGM;ProfileEd:2301-2/Source:TaviNitf;Date:20261120";
  expected.insert(expected.end(), profile.begin(), profile.end());
  expected.push_back(0);  // padding
  const std::vector<uint8_t> picture = {
      0x00, 0x61, 0,    0,                                         // BEGIN PICTURE
      0x20, 0x42, 0x00, 0x01,                                      // COLOUR SELECTION MODE
      0x20, 0xA2, 0x00, 0x00,                                      // EDGE WIDTH SPECIFICATION MODE
      0x20, 0x62, 0x00, 0x00,                                      // LINE WIDTH SPECIFICATION MODE
      0x20, 0xC8, 0x00, 0x00, 0x7F, 0xFF, 0x7F, 0xFF, 0x00, 0x00,  // VDC EXTENT
      0x00, 0x80,                                                  // BEGIN PICTURE BODY
      0x00, 0xA0,                                                  // END PICTURE
      0x00, 0x40                                                   // END METAFILE
  };
  expected.insert(expected.end(), picture.begin(), picture.end());
  EXPECT_EQ(WriteMetafile(Drawing()), expected);
}

TEST_F(CgmWriter, TheFirstLayerNamesThePicture) {
  Drawing drawing;
  drawing.layers.push_back({u"Roads \u2192 \u00FC", true});
  const CgmElement begin = Find(ListElements(WriteMetafile(drawing)), 0, 3);
  EXPECT_EQ(std::string(begin.list.begin() + 1, begin.list.end()), "Roads ? \xFC");
}

TEST_F(CgmWriter, HeaderWordsOfTheProfile) {
  Sketch s;
  const AreaStyle area{s.Fill(Interior::kHatch, kRed, Hatch::kCross, kGreen), s.Stroke(kBlue, 2)};
  const uint32_t line = s.Stroke(kRed, 3, LineType::kDash);
  s.drawing.texts.push_back({});
  s.Add(Polyline{{{0, 0}, {5, -5}}, line})
      .Add(Polygon{{{{{0, 0}, {5, 0}, {5, -5}}, {}}}, area})
      .Add(Polygon{{{{{0, 0}, {5, 0}, {5, -5}}, {0, 1, 1}}}, area})
      .Add(host::vec::Rectangle{{1, -2}, {3, -4}, area})
      .Add(host::vec::Ellipse{{50, -50}, {20, 0}, {0, 20}, area})
      .Add(host::vec::Ellipse{{50, -50}, {20, 0}, {0, 10}, area})
      .Add(Arc{{50, -50}, {20, 0}, {0, -20}, 0, 1, Closure::kOpen, line, {}})
      .Add(Arc{{50, -50}, {20, 0}, {0, -20}, 0, 1, Closure::kPie, kNone, area})
      .Add(Arc{{50, -50}, {20, 0}, {0, 10}, 0, 1, Closure::kOpen, line, {}})
      .Add(Arc{{50, -50}, {20, 0}, {0, 10}, 0, 1, Closure::kChord, kNone, area})
      .Add(Text{{1, -2}, {{"ab", 0}}, {}});
  const struct {
    uint32_t group, id, word;
  } expected[] = {{1, 1, 0x1022},  {1, 11, 0x1166}, {2, 2, 0x2042},  {2, 5, 0x20A2},  {2, 3, 0x2062},
                  {2, 6, 0x20C8},  {3, 3, 0x3063},  {3, 4, 0x3082},  {5, 3, 0x5062},  {5, 2, 0x5042},
                  {5, 4, 0x5083},  {5, 14, 0x51C3}, {5, 15, 0x51E2}, {5, 10, 0x5142}, {5, 16, 0x5208},
                  {5, 23, 0x52E3}, {5, 22, 0x52C2}, {5, 24, 0x5302}, {5, 30, 0x53C2}, {5, 28, 0x5382},
                  {5, 27, 0x5362}, {5, 29, 0x53A3}, {4, 4, 0x4089},  {4, 1, 0x4028},  {4, 7, 0x40EC},
                  {4, 8, 0x4112},  {4, 11, 0x4168}, {4, 12, 0x4186}, {4, 17, 0x422C}, {4, 18, 0x4254},
                  {4, 19, 0x4276}, {4, 15, 0x41EE}, {4, 16, 0x4210}};
  const std::vector<CgmElement> elements = s.Elements();
  for (const auto& [group, id, word] : expected) {
    EXPECT_EQ(Find(elements, group, id).word, word) << group << "," << id;
  }
}

TEST_F(CgmWriter, AttributesStandBeforeTheirPrimitiveInOrder) {
  Sketch s;
  s.drawing.texts.push_back({});
  s.Add(Polyline{{{0, 0}, {5, -5}}, s.Stroke(kRed, 3, LineType::kDash, kBlue)});
  EXPECT_EQ(CodesOf(Body(s.Elements())), "3,4 3,3 5,3 5,2 5,4 4,1");
  Sketch a;
  a.Add(host::vec::Rectangle{
      {0, 0}, {5, -5}, {a.Fill(Interior::kHatch, kRed, Hatch::kRising, kBlue), a.Stroke(kGreen)}});
  EXPECT_EQ(CodesOf(Body(a.Elements())), "3,4 3,3 5,23 5,22 5,24 5,30 5,28 5,27 5,29 4,11");
  Sketch t;
  t.drawing.texts.push_back({});
  t.drawing.texts[0].box_color = kGreen;
  t.Add(Text{{1, -2}, {{"a", 0}}, {}});
  EXPECT_EQ(CodesOf(t.Elements()),
            "0,1 1,1 1,11 1,2 1,13 0,3 2,2 2,5 2,3 2,6 0,4 3,4 3,3 5,14 5,15 5,10 5,16 4,4 0,5 0,2");
}

TEST_F(CgmWriter, AttributesAreWrittenWhereTheyChange) {
  Sketch s;
  const uint32_t thin = s.Stroke(kRed, 1);
  const uint32_t thick = s.Stroke(kRed, 5);
  const Polyline line{{{0, 0}, {5, -5}}, thin};
  s.Add(line).Add(line).Add(Polyline{{{0, 0}, {5, -5}}, thick}).Add(line);
  EXPECT_EQ(CodesOf(Body(s.Elements())), "5,3 5,2 5,4 4,1 4,1 5,3 4,1 5,3 4,1");
}

TEST_F(CgmWriter, EdgesAreSwitchedAndNothingFilledIsEmpty) {
  Sketch s;
  const uint32_t edge = s.Stroke(kRed, 2);
  s.Add(host::vec::Rectangle{{0, 0}, {5, -5}, {s.Fill(Interior::kSolid, kGreen), kNone}})
      .Add(host::vec::Rectangle{{0, 0}, {5, -5}, {kNone, edge}});
  const std::vector<CgmElement> body = Body(s.Elements());
  EXPECT_EQ(CodesOf(body), "5,23 5,22 5,30 4,11 5,22 5,30 5,28 5,27 5,29 4,11");
  EXPECT_EQ(Words(body[1]), (std::vector<int>{1}));
  EXPECT_EQ(Words(body[2]), (std::vector<int>{0}));
  EXPECT_EQ(Words(body[4]), (std::vector<int>{4}));
  EXPECT_EQ(Words(body[5]), (std::vector<int>{1}));
}

TEST_F(CgmWriter, ColoursAreRedFirst) {
  Sketch s;
  s.Add(Polyline{{{0, 0}, {5, -5}}, s.Stroke(0x00332211)});
  EXPECT_EQ(ListOf(s.Elements(), 5, 4), (std::vector<int>{0x11, 0x22, 0x33}));
}

TEST_F(CgmWriter, CoordinatesAreWholeAndRunDownward) {
  Sketch s;
  s.Add(Polyline{{{0.4, -0.4}, {0.5, -0.5}, {-0.5, 0.5}, {-7, 9}, {100, -200}}, s.Stroke(0)});
  EXPECT_EQ(Words(Find(s.Elements(), 4, 1)), (std::vector<int>{0, 0, 1, 1, 0, 0, -7, -9, 100, 200}));
}

TEST_F(CgmWriter, WidthsAreWholeUnits) {
  Sketch s;
  host::vec::Stroke stroke;
  stroke.width = 3;
  stroke.scaled = true;
  s.drawing.nominal_width = 2;
  s.drawing.strokes = {stroke};
  s.Add(Polyline{{{0, 0}, {1, 1}}, 0});
  EXPECT_EQ(Words(Find(s.Elements(), 5, 3)), (std::vector<int>{6}));
}

TEST_F(CgmWriter, LongListsAreCutIntoEvenPartitions) {
  for (const size_t count : {7u, 8u, 8191u, 8192u, 20000u}) {
    Sketch s;
    Polyline line{{}, s.Stroke(0)};
    for (size_t i = 0; i < count; ++i)
      line.points.push_back({static_cast<double>(i), -static_cast<double>(i % 7)});
    s.Add(line);
    const std::vector<CgmElement> elements = s.Elements();
    const CgmElement& element = Find(elements, 4, 1);
    EXPECT_EQ(element.list.size(), 4 * count);
    EXPECT_EQ(element.partitions, count < 8 ? 0 : (4 * count + 32765) / 32766);
    EXPECT_EQ(elements.back().id, 2u) << "the metafile ends as it should";
    EXPECT_EQ(Words(element)[2 * (count - 1)], static_cast<int>(count - 1));
  }
}

TEST_F(CgmWriter, LongTextsHaveLongCounts) {
  for (const size_t length : {0u, 1u, 254u, 255u, 32767u, 32768u, 70000u}) {
    Sketch s;
    s.drawing.texts.push_back({});
    s.Add(Text{{0, 0}, {{std::string(length, 'x'), 0}}, {}});
    const CgmElement element = Find(s.Elements(), 4, 4);
    std::vector<uint8_t> list(element.list.begin() + 6, element.list.end());
    if (length < 255) {
      ASSERT_EQ(list.size(), length + 1);
      EXPECT_EQ(list[0], length);
      continue;
    }
    ASSERT_EQ(list[0], 255);
    size_t at = 1;
    size_t found = 0;
    for (bool more = true; more;) {
      const size_t word = size_t{list.at(at)} << 8 | list.at(at + 1);
      more = (word & 0x8000) != 0;
      found += word & 0x7FFF;
      at += 2 + (word & 0x7FFF);
    }
    EXPECT_EQ(found, length);
    EXPECT_EQ(at, list.size());
  }
}

TEST_F(CgmWriter, CoordinatesBeyondSixteenBitsMakeThemWide) {
  Sketch s;
  s.Add(Polyline{{{32767, -32767}, {-32768, 32768}}, s.Stroke(0)});
  EXPECT_EQ(Words(Find(s.Elements(), 4, 1)), (std::vector<int>{32767, 32767, -32768, -32768}));
  s.Add(Polyline{{{0, 0}, {32768, -5000000000.0}}, 0});
  const std::vector<CgmElement> body = Body(s.Elements());
  EXPECT_EQ(CodesOf(body), "3,1 5,3 5,2 5,4 4,1 4,1");
  EXPECT_EQ(Words(body[0]), (std::vector<int>{32}));
  EXPECT_EQ(body.back().list,
            (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0x7F, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(Find(s.Elements(), 2, 6).word, 0x20C8u) << "the extent comes before and is not wide";
}

TEST_F(CgmWriter, SeveralRingsAndHiddenEdgesAreAPolygonSet) {
  Sketch s;
  const AreaStyle style{kNone, s.Stroke(0)};
  s.Add(Polygon{{{{{0, 0}, {4, 0}, {4, -4}}, {}}, {{{1, -1}, {2, -1}, {2, -2}}, {1, 0, 0}}}, style});
  EXPECT_EQ(Words(Find(s.Elements(), 4, 8)),
            (std::vector<int>{0, 0, 1, 4, 0, 1, 4, 4, 3, 1, 1, 1, 2, 1, 0, 2, 2, 2}));
}

TEST_F(CgmWriter, RingsOfTooFewPointsAreFilledUpAndEmptyOnesLeftOut) {
  Sketch s;
  const AreaStyle style{kNone, s.Stroke(0)};
  s.Add(Polygon{{{{}, {}}, {{{1, -1}, {2, -1}}, {}}}, style});
  s.Add(Polygon{{}, style}).Add(Polygon{{{{}, {}}}, style});
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(elements, 4), "4,7");
  EXPECT_EQ(Words(Find(elements, 4, 7)), (std::vector<int>{1, 1, 2, 1, 2, 1}));
}

TEST_F(CgmWriter, WhatHasNoStyleIsNotDrawn) {
  Sketch s;
  s.drawing.texts.push_back({});
  s.Add(Polyline{{{0, 0}, {1, 1}}, kNone})
      .Add(Segments{{{0, 0}, {1, 1}}, kNone})
      .Add(Markers{{{0, 0}}, kNone})
      .Add(Arc{{0, 0}, {1, 0}, {0, 1}, 0, 1, Closure::kOpen, kNone, {}})
      .Add(Text{{0, 0}, {}, {}})
      .Add(CellArray{})
      .Add(CellArray{{0, 0}, {1, 1}, {1, 0}, 2, 2, {1, 2, 3}, {}})
      .Add(Figure{});
  EXPECT_EQ(CodesOf(s.Elements(), 4), "");
}

TEST_F(CgmWriter, HiddenLayersAndEmptyClipsAreLeftOut) {
  Sketch s;
  s.drawing.layers = {{u"", true}, {u"", false}};
  s.drawing.clips = {Box{}};
  const Polyline line{{{0, 0}, {1, 1}}, s.Stroke(0)};
  s.drawing.objects = {{line, 0, kNone}, {line, 1, kNone}, {line, 2, kNone}, {line, 0, 0}};
  EXPECT_EQ(CodesOf(s.Elements(), 4), "4,1 4,1") << "a layer that is not there hides nothing";
}

TEST_F(CgmWriter, ClipsAreSetAndTakenOff) {
  Sketch s;
  s.drawing.clips = {{{1, -20}, {30, -4}}};
  const Polyline line{{{0, 0}, {1, 1}}, s.Stroke(0)};
  s.Add(line).Add(line, 0).Add(line, 0).Add(line).Add(line, 0);
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(Body(elements)), "5,3 5,2 5,4 4,1 3,5 3,6 4,1 4,1 3,6 4,1 3,6 4,1");
  EXPECT_EQ(Words(Find(elements, 3, 5)), (std::vector<int>{1, 20, 30, 4}));
}

TEST_F(CgmWriter, GapsOfTwoColoursTakeTwoGoes) {
  Sketch s;
  const AreaStyle style{s.Fill(Interior::kHatch, kRed, Hatch::kCross, kGreen),
                        s.Stroke(kBlue, 1, LineType::kDot, kRed)};
  s.Add(host::vec::Rectangle{{0, 0}, {5, -5}, style});
  EXPECT_EQ(CodesOf(Body(s.Elements())),
            "3,4 3,3 5,23 5,22 5,24 5,30 4,11 3,3 5,22 5,30 5,28 5,27 5,29 4,11");
  Sketch same;
  const AreaStyle agreeing{same.Fill(Interior::kHatch, kRed, Hatch::kCross, kGreen),
                           same.Stroke(kBlue, 1, LineType::kDot, kGreen)};
  same.Add(host::vec::Rectangle{{0, 0}, {5, -5}, agreeing});
  EXPECT_EQ(CodesOf(same.Elements(), 4), "4,11");
}

TEST_F(CgmWriter, SolidLinesHaveNoGapsToColour) {
  Sketch s;
  s.Add(Polyline{{{0, 0}, {1, 1}}, s.Stroke(0, 1, LineType::kSolid, kRed)});
  EXPECT_EQ(CodesOf(s.Elements(), 3), "");
}

TEST_F(CgmWriter, FontsAreListedInTheOrderOfTheirUse) {
  Sketch s;
  TextStyle style;
  style.font = {FontFamily::kSerif, true, true, {}};
  s.drawing.texts.push_back(style);
  style.font = {FontFamily::kHershey, false, false, HersheyFace::kGothicGerman};
  s.drawing.texts.push_back(style);
  style.font = {FontFamily::kMono, false, true, {}};
  s.drawing.texts.push_back(style);  // not used
  s.Add(Text{{0, 0}, {{"a", 1}}, {}}).Add(Text{{0, 0}, {{"a", 0}, {"b", 1}}, {}});
  const std::vector<CgmElement> elements = s.Elements();
  const CgmElement& list = Find(elements, 1, 13);
  std::string names(list.list.begin(), list.list.end());
  EXPECT_EQ(names, std::string("\x15HERSHEY/GOTHIC_GERMAN\x11TIMES_BOLD_ITALIC"));
  EXPECT_EQ(CodesOf(Body(elements)), "5,14 5,15 5,10 5,16 4,4 5,10 4,4 5,10 4,6");
}

TEST_F(CgmWriter, EveryFontHasAName) {
  const char* const expected[] = {
      "HELVETICA",   "HELVETICA_OBLIQUE", "HELVETICA_BOLD", "HELVETICA_BOLD_OBLIQUE",
      "TIMES_ROMAN", "TIMES_ITALIC",      "TIMES_BOLD",     "TIMES_BOLD_ITALIC",
      "COURIER",     "COURIER_ITALIC",    "COURIER_BOLD",   "COURIER_BOLD_ITALIC"};
  size_t i = 0;
  for (const FontFamily family : {FontFamily::kSans, FontFamily::kSerif, FontFamily::kMono}) {
    for (const bool bold : {false, true}) {
      for (const bool italic : {false, true})
        EXPECT_EQ(host::cgm::NameOf({family, bold, italic, {}}), expected[i++]);
    }
  }
}

TEST_F(CgmWriter, TextRecords) {
  Sketch s;
  s.drawing.texts.push_back({});
  s.Add(Text{{12, -34}, {{"A", 0}, {"\xC3\xA9\xE2\x82\xAC", 0}}, Point{50, 21}});
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(Words(Find(elements, 5, 16)), (std::vector<int>{0, -1, 1, 0}));
  EXPECT_EQ(ListOf(elements, 4, 5), (std::vector<int>{0, 50, 0, 10, 0, 12, 0, 34, 0, 0, 1, 'A'}))
      << "the box of the capitals";
  EXPECT_EQ(Words(Find(elements, 5, 15)), (std::vector<int>{12}))
      << "16 units, 72 of 100 to the top of capitals";
  EXPECT_EQ(ListOf(elements, 4, 6), (std::vector<int>{0, 1, 5, 0xC3, 0xA9, 0xE2, 0x82, 0xAC}));
}

TEST_F(CgmWriter, BrokenUtf8DoesNotRunAway) {
  EXPECT_EQ(host::cgm::Latin1Of("a\xC3"), "a\x03");
  EXPECT_EQ(host::cgm::Latin1Of("\xF0\x9F\x98\x80!"), "?!");
  EXPECT_EQ(host::cgm::Latin1Of("\xE2z").back(), 'z');
  EXPECT_EQ(host::cgm::Latin1Of("\x80\xFF").size(), 2u);
}

TEST_F(CgmWriter, SlantedTextKeepsItsDirectionInWholeNumbers) {
  Sketch s;
  TextStyle style;
  style.up = {-0.6, 0.8};
  style.base = {0.8, 0.6};
  s.drawing.texts.push_back(style);
  s.Add(Text{{0, 0}, {{"A", 0}}, {}});
  EXPECT_EQ(Words(Find(s.Elements(), 5, 16)), (std::vector<int>{-24000, -32000, 32000, -24000}));
}

TEST_F(CgmWriter, ArcsWhoseEndsMeetAreNotLeftToTheReader) {
  Sketch s;
  const uint32_t stroke = s.Stroke(0);
  const AreaStyle area{kNone, stroke};
  const Arc full{{0, 0}, {10, 0}, {0, -10}, 0, 7, Closure::kOpen, stroke, area};
  s.Add(full);
  EXPECT_EQ(CodesOf(s.Elements(), 4), "4,15 4,15") << "two halves";
  Arc chord = full;
  chord.closure = Closure::kChord;
  Arc pie = full;
  pie.closure = Closure::kPie;
  Arc nothing = full;
  nothing.sweep = 0;
  Arc flat = full;
  flat.b = {5, 0};
  s.Add(chord).Add(pie).Add(nothing).Add(flat);
  EXPECT_EQ(CodesOf(s.Elements(), 4), "4,15 4,15 4,12 4,7 4,1 4,1");
}

TEST_F(CgmWriter, CirclesThatTurnTheOtherWayAreEllipticalArcs) {
  Sketch s;
  const uint32_t stroke = s.Stroke(0);
  s.Add(Arc{{0, 0}, {10, 0}, {0, 10}, 0, std::numbers::pi / 2, Closure::kOpen, stroke, {}});
  s.Add(Arc{{0, 0}, {10, 0}, {0, 10}, 0, -std::numbers::pi / 2, Closure::kOpen, stroke, {}});
  const std::vector<CgmElement> body = Body(s.Elements());
  EXPECT_EQ(CodesOf(body, 4), "4,18 4,15");
  EXPECT_EQ(Words(Find(body, 4, 18)), (std::vector<int>{0, 0, 10, 0, 0, -10, 32000, 0, 0, -32000}));
  EXPECT_EQ(Words(Find(body, 4, 15)), (std::vector<int>{0, 0, 32000, 0, 0, 32000, 10}));
}

TEST_F(CgmWriter, CurvesBecomeStraightLinesThatStayNear) {
  Sketch s;
  const uint32_t stroke = s.Stroke(0);
  // A quarter of a circle of radius 100.
  const Contour quarter{{100, 0}, {{{{100, 55.2285}, {55.2285, 100}, {0, 100}}}}, false};
  const Contour corner{{0, 0}, {{{{0, 0}, {9, 0}, {9, 0}}}, {{{9, 0}, {9, 9}, {9, 9}}}}, true};
  s.Add(Figure{{quarter, corner}, stroke, {}});
  s.Add(Figure{{quarter, corner}, kNone, {s.Fill(Interior::kSolid, kRed), kNone}});
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(elements, 4), "4,1 4,1 4,8");
  const std::vector<int> points = Words(Find(elements, 4, 1));
  EXPECT_GT(points.size(), 16u);
  for (size_t i = 0; i < points.size(); i += 2) EXPECT_NEAR(std::hypot(points[i], points[i + 1]), 100, 1.2);
  const std::vector<CgmElement> body = Body(elements);
  EXPECT_EQ(Words(body[4]), (std::vector<int>{0, 0, 9, 0, 9, -9, 0, 0})) << "straight lines stay as they are";
}

TEST_F(CgmWriter, MarkersBringTheirSizeMode) {
  Sketch s;
  s.drawing.markers.push_back({MarkerType::kCircle, kRed, 9, false});
  s.Add(Markers{{{1, -2}, {3, -4}}, 0});
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(elements, 2), "2,2 2,5 2,3 2,4 2,6");
  EXPECT_EQ(CodesOf(Body(elements)), "5,6 5,7 5,8 4,3");
  EXPECT_EQ(Words(Find(elements, 5, 6)), (std::vector<int>{4}));
  EXPECT_EQ(Words(Find(elements, 5, 7)), (std::vector<int>{9}));
}

TEST_F(CgmWriter, RowsOfCellsBeginAtWords) {
  Sketch s;
  s.Add(CellArray{{0, 0}, {3, -2}, {3, 0}, 1, 2, {0x030201, 0x060504}, {}});
  EXPECT_EQ(ListOf(s.Elements(), 4, 9), (std::vector<int>{0, 0, 0, 0, 0, 3, 0, 2, 0, 3, 0, 0, 0, 1,
                                                          0, 2, 0, 8, 0, 1, 1, 2, 3, 0, 4, 5, 6}));
}

TEST_F(CgmWriter, CellsThatAreLeftOutDivideTheArray) {
  Sketch s;
  CellArray cells{{0, 0}, {40, -20}, {40, 0}, 4, 2, {1, 9, 2, 3, 9, 9, 9, 9}, 9};
  s.Add(cells);
  const std::vector<CgmElement> body = Body(s.Elements());
  ASSERT_EQ(CodesOf(body), "4,9 4,9");
  const std::vector<int> first = Words(body[0]);
  EXPECT_EQ(std::vector<int>(first.begin(), first.begin() + 8),
            (std::vector<int>{0, 0, 10, 10, 10, 0, 1, 1}));
  const std::vector<int> second = Words(body[1]);
  EXPECT_EQ(std::vector<int>(second.begin(), second.begin() + 8),
            (std::vector<int>{20, 0, 40, 10, 40, 0, 2, 1}));
}

TEST_F(CgmWriter, MoreCellsThanAnIntegerCountsAreDivided) {
  Sketch s;
  CellArray cells{{0, 0}, {70000, -10}, {70000, 0}, 70000, 1, {}, {}};
  cells.colors.resize(70000);
  std::iota(cells.colors.begin(), cells.colors.end(), 0u);
  s.Add(cells);
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(elements, 4), "4,9 4,9 4,9 4,9");
}

TEST_F(CgmWriter, PatternsAreDefinedOnce) {
  Sketch s;
  s.drawing.patterns = {{2, 1, {kRed, kBlue}}, {1, 2, {kRed, kBlue}}};
  host::vec::Fill fill;
  fill.interior = Interior::kPattern;
  fill.pattern = 0;
  fill.origin = {5, -6};
  fill.pattern_up = {0, 8};
  fill.pattern_along = {4, 0};
  s.drawing.fills = {fill, fill, fill};
  s.drawing.fills[1].pattern = 1;
  s.drawing.fills[2].pattern = 7;
  const auto box = [](uint32_t index) { return host::vec::Rectangle{{0, 0}, {5, -5}, {index, kNone}}; };
  s.Add(box(0)).Add(box(1)).Add(box(0)).Add(box(2));
  const std::vector<CgmElement> body = Body(s.Elements());
  EXPECT_EQ(CodesOf(body), "5,23 5,32 5,25 5,33 5,31 5,22 5,30 4,11 5,32 5,25 4,11 5,25 4,11 5,22 4,11");
  EXPECT_EQ(body[1].list, (std::vector<uint8_t>{0, 1, 0, 2, 0, 1, 0, 8, 0xFF, 0, 0, 0, 0, 0xFF}));
  EXPECT_EQ(body[8].list,
            (std::vector<uint8_t>{0, 2, 0, 1, 0, 2, 0, 16, 0, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF}));
  EXPECT_EQ(Words(body[3]), (std::vector<int>{0, -8, 4, 0}));
  EXPECT_EQ(Words(body[4]), (std::vector<int>{5, 6}));
  EXPECT_EQ(Words(body[13]), (std::vector<int>{1})) << "a pattern that is not there is a plain colour";
}

// ---- The operation ----

struct Saved {
  int32_t status = 0;
  std::vector<uint8_t> bytes;
};

Saved Save(const HostVector* vector, uint32_t format = 62) {
  auto* block = reinterpret_cast<HostGlobalMemory>(uintptr_t{8});
  uint64_t size = 77;
  HostSaveOptionsRecord options;
  HostSaveOptions(&options, sizeof options);
  Saved saved;
  saved.status = HostVecSaveMemory(&block, vector, format, &size, &options);
  if (saved.status == SUCCESS) {
    saved.bytes = TakeBytes(block, size);
  } else {
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 0u);
  }
  return saved;
}

TEST_F(CgmWriter, TheOperationWritesWithoutAViewportOneUnitAPixel) {
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(-3, 5), At(100, -200), Pen(kRed, 2, 1))), SUCCESS);
  const std::vector<CgmElement> elements = ListElements(Save(vector.get()).bytes);
  EXPECT_EQ(Words(Find(elements, 4, 1)), (std::vector<int>{-3, -5, 100, 200}));
  EXPECT_EQ(Words(Find(elements, 5, 2)), (std::vector<int>{2}));
}

TEST_F(CgmWriter, TheViewportIsWhereTheBoundsGo) {
  Vector vector;
  ASSERT_EQ(Add(&vector, RectangleRecord(At(10, -30), At(30, -20), Pen(0, 0, 5), Brush(kRed))), SUCCESS);
  const struct {
    HostRect viewport;
    std::vector<int> corners;
  } cases[] = {{{10, 20, 30, 30}, {10, 30, 30, 20}},
               {{0, 0, 60, 20}, {0, 20, 60, 0}},
               {{100, 50, 60, 20}, {100, 20, 60, 50}},
               {{5, 7, 5, 20}, {15, 37, 35, 27}}};
  for (const auto& [viewport, corners] : cases) {
    HostVecSetViewport(vector.get(), &viewport);
    EXPECT_EQ(Words(Find(ListElements(Save(vector.get()).bytes), 4, 11)), corners);
  }
  EXPECT_EQ(std::get<host::vec::Rectangle>(vector.drawing().objects[0].shape).corner, (Point{10, -30}))
      << "the vector itself stays";
  HostVecSetViewport(vector.get(), nullptr);
  EXPECT_EQ(Words(Find(ListElements(Save(vector.get()).bytes), 4, 11)), (std::vector<int>{10, 30, 30, 20}));
}

TEST_F(CgmWriter, AViewportForNothingAndForALineOfNoWidth) {
  Vector bare((Drawing()));
  const HostRect viewport{10, 20, 110, 220};
  HostVecSetViewport(bare.get(), &viewport);
  EXPECT_EQ(Save(bare.get()).status, SUCCESS);
  Vector line;
  ASSERT_EQ(Add(&line, LineRecord(At(5, 0), At(5, 10), Pen(0, 0))), SUCCESS);
  HostVecSetViewport(line.get(), &viewport);
  const std::vector<int> points = Words(Find(ListElements(Save(line.get()).bytes), 4, 1));
  EXPECT_NEAR(points[1], 220, 12);
  EXPECT_NEAR(points[3], 20, 12);
}

TEST_F(CgmWriter, TheOperationRefusesWhatMakesNoSense) {
  Vector empty;
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  EXPECT_EQ(Save(nullptr).status, ERR_NULL_ARGUMENT);
  EXPECT_EQ(Save(empty.get()).status, ERR_INVALID_VECTOR);
  for (const uint32_t format : {0u, 10u, 61u, 63u})
    EXPECT_EQ(Save(vector.get(), format).status, ERR_NOT_SUPPORTED);
  uint64_t size = 77;
  EXPECT_EQ(HostVecSaveMemory(nullptr, vector.get(), 62, &size, nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(size, 0u);
  HostGlobalMemory block = nullptr;
  EXPECT_EQ(HostVecSaveMemory(&block, vector.get(), 62, nullptr, nullptr), ERR_NULL_ARGUMENT);
}

TEST_F(CgmWriter, WhatItWritesIsIdentifiedAsAMetafile) {
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  const Saved saved = Save(vector.get());
  HostFileInfo info;
  ASSERT_EQ(HostFileInfoMemory(saved.bytes.data(), &info, sizeof info, saved.bytes.size(), 0, 0), SUCCESS);
  EXPECT_EQ(info.format, 62u);
}

}  // namespace
}  // namespace tavi::test
