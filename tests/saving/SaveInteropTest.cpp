// An independent reader accepts what was saved, wherever it accepts the source. It is run as a program, where it is
// installed.
#include <array>
#include <cstdio>
#include <cstdlib>

#include "SampleFiles.h"
#include "SavingTest.h"

namespace saving {
namespace {

using tavi::samples::Folder;

struct Answer {
  bool accepted = false;
  std::string pictures;  // its lines about sizes, bands and subordinate images
};

Answer Ask(const std::filesystem::path& path) {
  Answer answer;
  FILE* pipe = popen(("gdalinfo '" + path.string() + "' 2>/dev/null").c_str(), "r");
  if (pipe == nullptr) return answer;
  std::array<char, 4096> line{};
  while (std::fgets(line.data(), static_cast<int>(line.size()), pipe) != nullptr) {
    const std::string text = line.data();
    if (text.rfind("Size is", 0) == 0 || text.rfind("Band ", 0) == 0) answer.pictures += text;
  }
  answer.accepted = pclose(pipe) == 0;
  return answer;
}

class SaveInterop : public SavingTest {
 protected:
  void SetUp() override {
    SavingTest::SetUp();
    if (std::system("command -v gdalinfo >/dev/null") != 0) GTEST_SKIP() << "gdalinfo is not installed";
    if (tavi::samples::Files().empty()) GTEST_SKIP() << "no sample files in " << Folder();
  }
};

TEST_F(SaveInterop, SavedSamplesAreAcceptedAsTheirSourcesAre) {
  size_t accepted = 0;
  for (const nlohmann::json& file : tavi::samples::Files()) {
    if (file.at("open") != 1) continue;
    const std::string name = file.at("file");
    SCOPED_TRACE(name);
    const Answer source = Ask(Folder() / name);
    Document document(Folder() / name);
    ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
    const Answer saved = Ask(OutputPath());
    EXPECT_EQ(saved.accepted, source.accepted);
    EXPECT_EQ(saved.pictures, source.pictures);
    accepted += saved.accepted ? 1 : 0;
  }
  EXPECT_GT(accepted, 20U);
}

}  // namespace
}  // namespace saving
