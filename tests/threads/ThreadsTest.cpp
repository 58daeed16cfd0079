// Every operation on documents of different threads at the same time: each thread must see what a single one sees.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

#include "../../fuzz/Document.h"
#include "../../fuzz/Edits.h"
#include "CodedFiles.h"
#include "HostFixture.h"
#include "LoadPicture.h"
#include "RichFiles.h"

namespace {

using tavi_test::Bytes;

struct Source {
  std::string name;
  std::wstring path;
  // The bits left over of one vector quantised picture go to the next one, whichever thread decodes it.
  bool carries_over;
};

// What one thread saw of one file.
struct Outcome {
  int32_t load = 0;
  Bytes picture;
  int32_t save = 0;
  Bytes saved;
  int32_t append = 0;
  Bytes appended;
  Bytes edited;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};

Bytes ReadWhole(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

tavi_test::NtfBuilder WithDrawing() {
  // A red line from 1, 1 to 30, 20.
  const Bytes metafile = {0x00, 0x21, 0x00, 0x00, 0x10, 0x22, 0x00, 0x01, 0x11, 0x66, 0x00, 0x01, 0xFF,
                          0xFF, 0x00, 0x01, 0x00, 0x61, 0x00, 0x00, 0x20, 0x42, 0x00, 0x01, 0x20, 0x62,
                          0x00, 0x00, 0x20, 0xC8, 0x00, 0x00, 0x7F, 0xFF, 0x7F, 0xFF, 0x00, 0x00, 0x00,
                          0x80, 0x50, 0x62, 0x00, 0x03, 0x50, 0x83, 0xFF, 0x00, 0x00, 0x00, 0x40, 0x28,
                          0x00, 0x01, 0x00, 0x01, 0x00, 0x1E, 0x00, 0x14, 0x40, 0x8A, 0x00, 0x02, 0x00,
                          0x18, 0x00, 0x01, 0x03, 'a',  'b',  'c',  0x00, 0xA0, 0x00, 0x40};
  tavi_test::NtfBuilder file({tavi_test::GreyImage(40, 30)});
  tavi_test::GraphicSpec graphic;
  graphic.sdlvl = 2;
  graphic.data = metafile;
  graphic.bound2_row = 30;
  graphic.bound2_column = 20;
  file.graphics = {graphic};
  return file;
}

// Setters, appends and vector handles, chosen by the name alone, and what a save then holds.
Bytes SaveEdited(NitfHandle document, const std::string& name, const std::filesystem::path& path) {
  constexpr int kEdits = 40;
  std::mt19937 random(static_cast<uint32_t>(name.size() * 256 + static_cast<uint8_t>(name.back())));
  std::vector<uint8_t> bytes(4096);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  tavi_fuzz::Choices choose(bytes.data(), bytes.size());
  for (int i = 0; i < kEdits; ++i) tavi_fuzz::EditOnce(document, choose);
  return Tavi_NITFSaveFile(document, path.wstring().c_str()) == SUCCESS ? ReadWhole(path) : Bytes();
}

Outcome RunOn(const Source& source, const std::filesystem::path& folder) {
  Outcome outcome;
  tavi_test::LoadRequest request;
  request.load_entry = HostLoadMemory;
  request.hook_entry = HostSetLoadHook;
  const tavi_test::LoadedPicture picture = tavi_test::LoadFile(source.path, request);
  outcome.load = picture.status;
  for (const auto& row : picture.rows) {
    if (!source.carries_over)
      outcome.picture.insert(outcome.picture.end(), row.pixels.begin(), row.pixels.end());
  }
  const tavi_fuzz::Document document(source.path.c_str());
  if (!document) return outcome;
  tavi_fuzz::ReadEverything(document.get());
  const std::filesystem::path saved = folder / "saved.ntf";
  outcome.save = Tavi_NITFSaveFile(document.get(), saved.wstring().c_str());
  outcome.saved = ReadWhole(saved);
  HostBitmap bitmap = {};
  HostCreateBitmap(&bitmap, sizeof bitmap, 1, 20, 10, 24, 1, nullptr, 1, nullptr, 0);
  HostFillBitmap(&bitmap, 0x2050A0);
  outcome.append = std::min(Tavi_NITFAppendImageSegment(document.get(), &bitmap, 10, 24, 20),
                            Tavi_NITFAppendTextSegment(document.get(), source.path.c_str()));
  HostFreeBitmap(&bitmap);
  const std::filesystem::path appended = folder / "appended.ntf";
  if (Tavi_NITFSaveFile(document.get(), appended.wstring().c_str()) == SUCCESS)
    outcome.appended = ReadWhole(appended);
  outcome.edited = SaveEdited(document.get(), source.name, folder / "edited.ntf");
  return outcome;
}

class ThreadsTest : public tavi_test::HostTest {
 protected:
  std::vector<Source> MakeSources() {
    std::vector<Source> sources;
    const auto add = [&](const std::string& name, const tavi_test::NtfBuilder& file, bool carries_over) {
      sources.push_back({name, file.Build().Write(directory(), name + ".ntf"), carries_over});
    };
    for (const auto& file : tavi::faults::FilesOfEveryKind()) add(file.name, file.file, false);
    for (const auto& file : tavi::faults::CodedFiles()) {
      const bool quantised =
          std::any_of(file.file.images.begin(), file.file.images.end(),
                      [](const auto& image) { return image.ic == "C4" || image.ic == "M4"; });
      add(file.name, file.file, quantised);
    }
    add("Drawing", WithDrawing(), false);
    return sources;
  }
  std::filesystem::path Folder(const std::string& name) {
    const std::filesystem::path folder = directory() / name;
    std::filesystem::create_directories(folder);
    return folder;
  }
};

TEST_F(ThreadsTest, EachThreadSeesWhatASingleOneSees) {
  constexpr size_t kThreads = 4;
  const std::vector<Source> sources = MakeSources();
  std::vector<Outcome> expected;
  for (const Source& source : sources) expected.push_back(RunOn(source, Folder("single")));
  ASSERT_TRUE(
      std::any_of(expected.begin(), expected.end(), [](const Outcome& o) { return o.append == SUCCESS; }));
  ASSERT_TRUE(std::any_of(expected.begin(), expected.end(),
                          [](const Outcome& o) { return o.edited.size() > o.appended.size(); }));

  std::vector<std::vector<Outcome>> seen(kThreads, std::vector<Outcome>(sources.size()));
  std::vector<std::thread> threads;
  for (size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t, folder = Folder("thread" + std::to_string(t))] {
      // Each begins elsewhere, and every other one runs backwards: all files meet all others.
      for (size_t i = 0; i < sources.size(); ++i) {
        const size_t step = (i + t * sources.size() / kThreads) % sources.size();
        const size_t place = t % 2 == 0 ? step : sources.size() - 1 - step;
        seen[t][place] = RunOn(sources[place], folder);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (size_t t = 0; t < kThreads; ++t) {
    for (size_t i = 0; i < sources.size(); ++i) {
      EXPECT_TRUE(seen[t][i] == expected[i]) << sources[i].name << " on thread " << t;
    }
  }
}

}  // namespace
