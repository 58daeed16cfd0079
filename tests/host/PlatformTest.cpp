#include <cstdio>
#include <filesystem>
#include <string>

#include "HostTest.h"

namespace tavi::test {
namespace {

using PlatformTest = HostTest;

struct Heard {
  std::string text;
  std::string caption;
};

void HearMessage(const char* text, const char* caption, void* user) {
  *static_cast<Heard*>(user) = {text, caption};
}

void HearDebug(const char* text, void* user) {
  static_cast<Heard*>(user)->text += text;
}

TEST_F(PlatformTest, SetRectSetsTheFourSides) {
  HostRect rect{};
  EXPECT_NE(SetRect(&rect, -1, 2, INT32_MAX, INT32_MIN), 0);
  EXPECT_EQ(rect.left, -1);
  EXPECT_EQ(rect.top, 2);
  EXPECT_EQ(rect.right, INT32_MAX);
  EXPECT_EQ(rect.bottom, INT32_MIN);
  EXPECT_EQ(SetRect(nullptr, 0, 0, 0, 0), 0);
}

TEST_F(PlatformTest, MessagesGoToTheSinkOrToStandardError) {
  Heard heard;
  HostSetMessageSink(&HearMessage, &heard);
  EXPECT_EQ(MessageBoxA(nullptr, "Unsupported BPP", "Error", 0), 1);
  EXPECT_EQ(heard.text, "Unsupported BPP");
  EXPECT_EQ(heard.caption, "Error");
  EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, 0), 1);
  EXPECT_EQ(heard.text, "");

  HostSetMessageSink(nullptr, nullptr);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(MessageBoxA(nullptr, "Unsupported BPP", "Error", 0), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Error: Unsupported BPP\n");
  EXPECT_EQ(heard.text, "");
}

TEST_F(PlatformTest, DebugStringsGoToTheSinkOrNowhere) {
  Heard heard;
  HostSetDebugSink(&HearDebug, &heard);
  OutputDebugStringA("one");
  OutputDebugStringA(nullptr);
  OutputDebugStringA(" two");
  HostSetDebugSink(nullptr, nullptr);
  ::testing::internal::CaptureStderr();
  OutputDebugStringA("three");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(heard.text, "one two");
}

void SetNoSink(const char*, const char*, void* user) {
  HostSetMessageSink(nullptr, nullptr);
  ++*static_cast<int*>(user);
}

TEST_F(PlatformTest, ASinkMaySetAnother) {
  int calls = 0;
  HostSetMessageSink(&SetNoSink, &calls);
  MessageBoxA(nullptr, "text", "caption", 0);
  EXPECT_EQ(calls, 1);
}

TEST_F(PlatformTest, AccessTellsWhetherAFileExists) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  EXPECT_EQ(_waccess(folder.wstring().c_str(), 0), 0);
  EXPECT_EQ(_waccess(folder.wstring().c_str(), 4), 0);
  EXPECT_EQ(_waccess((folder / "no such file as this").wstring().c_str(), 0), -1);
  const wchar_t broken[] = {L'/', static_cast<wchar_t>(0xDC00), 0};
  EXPECT_EQ(_waccess(broken, 0), -1);
  EXPECT_EQ(_waccess(nullptr, 0), -1);
}

TEST_F(PlatformTest, TheSelectedPaletteIsHandedBack) {
  Bitmap bitmap(4, 4, 8);
  const Context context(bitmap);
  const HostPaletteEntry entries[3] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
  const HostPalette palette = HostCreatePalette(entries, 3);
  EXPECT_EQ(RealizePalette(context.get()), 0u);
  EXPECT_EQ(SelectPalette(context.get(), palette, 0), nullptr);
  EXPECT_EQ(RealizePalette(context.get()), 3u);
  EXPECT_EQ(SelectPalette(context.get(), nullptr, 0), palette);
  EXPECT_EQ(RealizePalette(context.get()), 0u);
  HostDeleteObject(palette, 0, nullptr);
  EXPECT_EQ(SelectPalette(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(RealizePalette(nullptr), 0u);
}

}  // namespace
}  // namespace tavi::test
