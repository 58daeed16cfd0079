// Real files: each is saved as predicted, opens again and shows the same picture.
#include <cstdio>

#include "SampleFiles.h"
#include "SavingTest.h"

namespace saving {
namespace {

using tavi::samples::Files;
using tavi::samples::Folder;

class SaveSamples : public SavingTest {
 protected:
  void SetUp() override {
    SavingTest::SetUp();
    files_ = Files();
    if (files_.empty()) GTEST_SKIP() << "no sample files in " << Folder();
  }
  // The names of the files that open.
  [[nodiscard]] std::vector<std::string> Accepted() const {
    std::vector<std::string> names;
    for (const nlohmann::json& file : files_) {
      if (file.at("open") == 1) names.push_back(file.at("file"));
    }
    return names;
  }

 private:
  nlohmann::json files_;
};

TEST_F(SaveSamples, AreSavedAsPredicted) {
  size_t identical = 0;
  for (const std::string& name : Accepted()) {
    SCOPED_TRACE(name);
    const Bytes source = ReadFile(Folder() / name);
    const Prediction predicted = PredictSave(source);
    EXPECT_EQ(predicted.status, SUCCESS);
    ExpectAsPredicted(source);
    identical += predicted.bytes == source ? 1 : 0;
    std::string rules;
    for (const std::string& rule : predicted.rules) rules += " " + rule;
    RecordProperty(name, predicted.bytes == source ? "identical" : rules);
  }
  EXPECT_EQ(Accepted().size(), 26U);
  EXPECT_GT(identical, Accepted().size() / 2);
}

TEST_F(SaveSamples, ShowTheSamePictureOnceSaved) {
  for (const std::string& name : Accepted()) {
    SCOPED_TRACE(name);
    Document document(Folder() / name);
    ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
    Document saved(OutputPath());
    ASSERT_EQ(saved.open, SUCCESS);
    const Picture expected = Render(document.handle);
    EXPECT_EQ(Render(saved.handle) == expected, true) << "status " << expected.status;
  }
}

}  // namespace
}  // namespace saving
