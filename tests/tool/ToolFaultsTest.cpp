// Every call of the system that a command of the tool makes on its files fails in turn, every allocation, and a signal
// comes at every call. Whatever happens, the target's name stands for the whole result or for what it stood for before,
// and nothing is left beside it.
//
// The executable holds the tool's own objects, with its main function under another name. Each run is a process of its own.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>

#include "../graphics/CgmPicture.h"
#include "FaultyCalls.h"
#include "RichFiles.h"

// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's name for the tool's main function
extern "C" int __real_main(int argc, char** argv);

namespace tavinitf::faults {
namespace {

namespace fs = std::filesystem;
using tavi_test::Bytes;

struct Command {
  const char* name;
  // IN and OUT stand for the folders of what is read and what is made.
  std::vector<std::string> arguments;
  const char* target;  // under OUT, or under IN for a command onto what it reads
  bool in_place = false;
  bool reads_pictures = false;  // that the tool itself has made before
};

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"Copy", {"copy", "IN/rich.ntf", "OUT/a.ntf"}, "a.ntf"},
      {"CopyOntoItself", {"copy", "IN/rich.ntf", "IN/rich.ntf"}, "rich.ntf", true},
      {"Set", {"set", "IN/rich.ntf", "OUT/a.ntf", "image:0.IID1=new", "text:0.TXTITL=new"}, "a.ntf"},
      {"SetOntoItself", {"set", "IN/rich.ntf", "IN/rich.ntf", "image:0.IID1=new"}, "rich.ntf", true},
      {"Append",
       {"append", "IN/rich.ntf", "OUT/a.ntf", "--image", "IN/a.ppm", "--graphic", "IN/a.cgm@1,2,9,9",
        "--text", "IN/a.txt"},
       "a.ntf"},
      {"AppendOntoItself",
       {"append", "IN/rich.ntf", "IN/rich.ntf", "--graphic", "IN/a.cgm@1,2,9,9", "--text", "IN/a.txt"},
       "rich.ntf",
       true},
      {"Create",
       {"create", "OUT/a.ntf", "--date", "20310203040506", "--image", "IN/a.ppm", "--graphic",
        "IN/a.cgm@1,2,9,9", "--text", "IN/a.txt"},
       "a.ntf"},
      {"CreateOfPictures",
       {"create", "OUT/a.ntf", "--date", "20310203040506", "--image", "IN/b.png", "--image", "IN/b.jpg",
        "--image", "IN/b.tif"},
       "a.ntf",
       false,
       true},
      {"ExtractImage", {"extract", "IN/rich.ntf", "image:0", "-o", "OUT/a.bin"}, "a.bin"},
      {"ExtractDrawing", {"extract", "IN/rich.ntf", "graphic:0", "-o", "OUT/a.svg"}, "a.svg"},
      {"RenderPng", {"render", "IN/rich.ntf", "-o", "OUT/a.png"}, "a.png"},
      {"RenderBmp", {"render", "IN/rich.ntf", "-o", "OUT/a.bmp"}, "a.bmp"},
      {"RenderPpm", {"render", "IN/rich.ntf", "-o", "OUT/a.ppm"}, "a.ppm"},
      {"RenderTiff", {"render", "IN/rich.ntf", "-o", "OUT/a.tif"}, "a.tif"},
      {"RenderJpeg", {"render", "IN/rich.ntf", "-o", "OUT/a.jpg"}, "a.jpg"},
      {"RenderFolder", {"render", "IN/rich.ntf", "IN/grey.ntf", "-d", "OUT", "-j", "2"}, "rich.png"},
  };
  return commands;
}

void PrintTo(const Command& command, std::ostream* out) {
  *out << command.name;
}

Bytes ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  Bytes bytes(file ? fs::file_size(path) : 0);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

void WriteFile(const fs::path& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

using Contents = std::map<std::string, Bytes>;  // by name

Contents ReadFolder(const fs::path& folder) {
  Contents contents;
  for (const auto& entry : fs::directory_iterator(folder))
    contents[entry.path().filename().string()] = ReadFile(entry.path());
  return contents;
}

// Every kind of segment, so that each way of reading, writing and putting right is gone.
tavi_test::NtfBuilder RichFile() {
  tavi_test::NtfBuilder file = tavi::faults::FileOfEverything();
  file.graphics.resize(1);
  file.graphics[0].sdlvl = 30;
  file.graphics[0].bound2_row = file.graphics[0].bound2_column = 5;
  file.graphics[0].data = tavi_test::CgmPicture().Rectangle(0, 0, 5, 5, {1, 2, 3}).Build();
  return file;
}

// Plain numbers, of which one stands across the end of a stream's first buffer.
Bytes PpmPicture() {
  std::string text = "P3\n8 8\n255\n#";
  constexpr size_t kBuffer = 4096;
  constexpr size_t kNumbersBefore = 30;
  text.resize(kBuffer - 4 * kNumbersBefore - 2, '.');
  text += '\n';
  for (int i = 0; i < 8 * 8 * 3; ++i) text += std::to_string(100 + i % 100) + " ";
  return {text.begin(), text.end()};
}

struct Result {
  bool ended = false;  // by itself, with `status`; otherwise by `signal`
  int status = 0;
  int signal = 0;
  bool happened = false;
  std::string errors;  // what stands on standard error
};

class ToolFaults : public testing::TestWithParam<Command> {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "tavi-tool-faults-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    root_ = name;
    fs::create_directory(In());
    fs::create_directory(Out());
    inputs_ = {{"rich.ntf", RichFile().Build().bytes},
               {"grey.ntf", tavi_test::NtfBuilder{tavi_test::GreyImage(4, 3)}.Build().bytes},
               {"a.ppm", PpmPicture()},
               {"a.cgm", tavi_test::CgmPicture().Rectangle(0, 0, 7, 7, {9, 8, 7}).Build()},
               {"a.txt", {'t', 'e', 'x', 't'}}};
    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    progress_ = new (shared) Progress{};
    Restore(false);
    if (GetParam().reads_pictures) MakePictures();
    const Result whole = Run(nullptr);
    ASSERT_TRUE(whole.ended && whole.status == 0) << whole.errors;
    done_ = ReadFolder(TargetFolder());
    for (const auto& [file, bytes] : done_) {
      if (!GetParam().in_place || file == GetParam().target) made_[file] = bytes;
    }
    ASSERT_TRUE(made_.contains(GetParam().target));
  }

  void TearDown() override {
    munmap(progress_, sizeof *progress_);
    fs::remove_all(root_);
  }

  [[nodiscard]] fs::path In() const { return root_ / "in"; }
  [[nodiscard]] fs::path Out() const { return root_ / "out"; }
  [[nodiscard]] fs::path TargetFolder() const { return GetParam().in_place ? In() : Out(); }

  // As it was before any run; `stands` puts other bytes under the target's name.
  void Restore(bool stands) {
    RestoreFolder(In(), inputs_);
    before_ = stands ? Contents{{GetParam().target, {'b', 'e', 'f', 'o', 'r', 'e'}}} : Contents{};
    RestoreFolder(Out(), before_);
    if (GetParam().in_place) before_ = inputs_;
  }

  void MakePictures() {
    for (const char* ending : {"png", "jpg", "tif"}) {
      const std::string name = std::string("b.") + ending;
      ASSERT_EQ(Run(nullptr, {"render", "IN/rich.ntf", "-o", "IN/" + name}).status, 0);
      inputs_[name] = ReadFile(In() / name);
    }
  }

  // One run of the command with the fault, if any.
  [[nodiscard]] Result Run(const Plan* plan) { return Run(plan, GetParam().arguments); }
  [[nodiscard]] Result Run(const Plan* plan, const std::vector<std::string>& words) {
    *progress_ = Progress{};
    const fs::path errors = root_ / "errors";
    const pid_t child = fork();
    if (child == 0) RunHere(plan, words, errors);
    int state = 0;
    EXPECT_EQ(waitpid(child, &state, 0), child);
    Result result;
    result.ended = WIFEXITED(state);
    result.status = result.ended ? WEXITSTATUS(state) : 0;
    result.signal = WIFSIGNALED(state) ? WTERMSIG(state) : 0;
    result.happened = progress_->happened;
    const Bytes text = ReadFile(errors);
    result.errors.assign(text.begin(), text.end());
    return result;
  }

  // What holds after every run: each file that the command makes is whole or as it was, all others are as they were.
  // Of a process that could do nothing any more, parts under their temporary names may be there.
  void ExpectNoHalves(bool may_leave_parts) {
    if (!GetParam().in_place) {
      EXPECT_EQ(ReadFolder(In()), inputs_) << "what is read has changed";
    }
    for (const auto& [name, bytes] : ReadFolder(TargetFolder())) {
      if (may_leave_parts && name.starts_with(".") && name.ends_with(".part")) continue;
      const auto before = before_.find(name);
      const auto made = made_.find(name);
      EXPECT_TRUE((before != before_.end() && before->second == bytes) ||
                  (made != made_.end() && made->second == bytes))
          << name << " is left with " << bytes.size() << " bytes";
    }
    for (const auto& [name, bytes] : before_)
      EXPECT_TRUE(fs::exists(TargetFolder() / name)) << name << " is gone";
  }

  // A run that fails leaves everything as it was, one that succeeds has made everything. Several files are made each on
  // its own.
  void ExpectAllOrNothing(const Result& result) {
    ExpectNoHalves(false);
    ASSERT_TRUE(result.ended) << "ended by signal " << result.signal << ": " << result.errors;
    ASSERT_TRUE(result.status == 0 || result.status == 1)
        << "status " << result.status << ": " << result.errors;
    if (result.status == 0) {
      EXPECT_TRUE(ReadFolder(TargetFolder()) == done_);
      EXPECT_EQ(result.errors, "");
    } else {
      EXPECT_NE(result.errors, "");
      if (made_.size() == 1) {
        EXPECT_TRUE(ReadFolder(TargetFolder()) == before_) << result.errors;
      }
    }
    if (!result.happened) {
      EXPECT_EQ(result.status, 0) << result.errors;
    }
  }

  // Lets call after call meet its fate, the later ones of many in growing steps. Returns how many there are.
  template <class Check>
  uint64_t Walk(Plan plan, uint64_t step_from, Check check) {
    bool stands = false;
    for (plan.nth = 1;; plan.nth += 1 + plan.nth / step_from) {
      SCOPED_TRACE("call " + std::to_string(plan.nth) + " of kind " +
                   std::to_string(static_cast<int>(plan.call)) + (plan.lasting ? " and on" : "") +
                   (plan.after ? ", afterwards" : ""));
      stands = !stands;
      Restore(stands);
      const Result result = Run(&plan);
      check(result);
      if (!result.happened || HasFailure()) return progress_->seen;
    }
  }

 private:
  static void RestoreFolder(const fs::path& folder, const Contents& contents) {
    const Contents now = ReadFolder(folder);
    for (const auto& [name, bytes] : now) {
      if (!contents.contains(name)) fs::remove(folder / name);
    }
    for (const auto& [name, bytes] : contents) {
      const auto found = now.find(name);
      if (found == now.end() || found->second != bytes) WriteFile(folder / name, bytes);
    }
  }

  [[noreturn]] void RunHere(const Plan* plan, const std::vector<std::string>& given, const fs::path& errors) {
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
    std::vector<std::string> words = {"tavinitf"};
    for (std::string word : given) {
      if (word.starts_with("IN")) word = In().string() + word.substr(2);
      if (word.starts_with("OUT")) word = Out().string() + word.substr(3);
      words.push_back(word);
    }
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    // What is made beside the folders, such as the file of errors, is the test's.
    const std::string folder = root_.string() + "/";
    if (plan != nullptr) Arm(*plan, folder.c_str(), progress_);
    const int status = __real_main(static_cast<int>(words.size()), arguments.data());
    Disarm();  // what libraries do to themselves when a process ends is not the tool's
    std::exit(status);
  }

  fs::path root_;
  Contents inputs_;
  Contents before_;  // the target's folder
  Contents made_;    // what the command makes, whole
  Contents done_;    // the target's folder when it is done
  Progress* progress_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Of, ToolFaults, testing::ValuesIn(Commands()),
                         [](const auto& tested) { return std::string(tested.param.name); });

// Each run takes several times as long under a sanitizer.
#if defined(__SANITIZE_ADDRESS__)
constexpr uint64_t kStepFrom = 3;
#else
constexpr uint64_t kStepFrom = 8;
#endif

TEST_P(ToolFaults, CallsThatFail) {
  std::map<Call, uint64_t> calls;
  for (const Call call : {Call::kOpen, Call::kRead, Call::kWrite, Call::kSeek, Call::kEnd, Call::kRename}) {
    for (const bool lasting : {false, true}) {
      calls[call] =
          Walk({call, 0, lasting}, kStepFrom, [&](const Result& result) { ExpectAllOrNothing(result); });
    }
  }
  // Every command opens, reads, writes, closes and renames.
  for (const Call call : {Call::kOpen, Call::kRead, Call::kWrite, Call::kEnd, Call::kRename})
    EXPECT_GE(calls[call], 1U) << static_cast<int>(call);
}

// The library that draws SVG crashes at some of its allocations: the tool then ends by that signal, and leaves no part.
TEST_P(ToolFaults, MemoryThatFails) {
  const bool may_crash = GetParam().name == std::string("ExtractDrawing");
  for (const bool lasting : {false, true}) {
    const uint64_t count = Walk({Call::kMemory, 0, lasting}, kStepFrom, [&](const Result& result) {
      if (may_crash && result.signal == SIGSEGV) {
        ExpectNoHalves(false);
      } else {
        ExpectAllOrNothing(result);
      }
    });
    EXPECT_GT(count, 20U);
  }
}

TEST_P(ToolFaults, Signals) {
  for (const bool after : {false, true}) {
    for (const int signal : {SIGTERM, SIGINT}) {
      const uint64_t count =
          Walk({Call::kAny, 0, false, signal, after}, kStepFrom, [&](const Result& result) {
            ExpectNoHalves(false);
            EXPECT_TRUE(result.happened ? result.signal == signal : result.ended && result.status == 0)
                << "status " << result.status << ", signal " << result.signal;
          });
      EXPECT_GT(count, 10U);
    }
  }
}

TEST_P(ToolFaults, SuddenDeath) {
  for (const bool after : {false, true}) {
    Walk({Call::kAny, 0, false, SIGKILL, after}, kStepFrom, [&](const Result& result) {
      ExpectNoHalves(true);
      EXPECT_EQ(result.signal, result.happened ? SIGKILL : 0);
    });
  }
}

}  // namespace
}  // namespace tavinitf::faults

// What the program begins with, in place of the tool.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's name for it
extern "C" int __wrap_main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
