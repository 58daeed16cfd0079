// What is measured and against what. Every kind of work is compared with a floor that is measured in the same run:
// copying its composite, the codec's library alone, or copying the file. So the figures say the same on every machine.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Results.h"
#include "TaviNitf.h"

namespace tavi_bench {

using Bytes = std::vector<uint8_t>;

// Files in a folder of their own, removed at the end.
class BenchFolder {
 public:
  BenchFolder();
  ~BenchFolder();
  BenchFolder(const BenchFolder&) = delete;
  BenchFolder& operator=(const BenchFolder&) = delete;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Made when it is first asked for, so that a filtered run makes no files that it does not need. Copies share it.
template <class T>
class Lazy {
 public:
  explicit Lazy(std::function<T()> make) : state_(std::make_shared<State>()) {
    state_->make = std::move(make);
  }
  const T& operator*() const {
    if (!state_->made) state_->made = state_->make();
    return *state_->made;
  }
  const T* operator->() const { return &**this; }

 private:
  struct State {
    std::function<T()> make;
    std::optional<T> made;
  };
  std::shared_ptr<State> state_;
};
using LazyPath = Lazy<std::wstring>;

inline constexpr uint32_t kSide = 2048;
inline constexpr uint32_t kTileSide = 256;
inline constexpr uint32_t kPageWidth = 5000;
inline constexpr uint32_t kPageHeight = 7000;

Bytes Noise(size_t count);  // without a pattern that a cache or a predictor could use

// Times of copies, which most bounds are told in.
std::string CopyName(uint32_t load_bits);      // "copy/24 bits": a picture of kSide
std::string PageCopyName(uint32_t load_bits);  // "copy/page of 24 bits"

// Each registers benchmarks and adds their rows to the table.
void RegisterCopies();
void RegisterLoads(const std::filesystem::path& folder, Table* table);
void RegisterCoded(const std::filesystem::path& folder, Table* table);
void RegisterOpen(const std::filesystem::path& folder, Table* table);
void RegisterSave(const std::filesystem::path& folder, Table* table);
void RegisterAppend(const std::filesystem::path& folder, Table* table);
void RegisterVector(Table* table);
void RegisterSamples(Table* table);

// Appends a coded picture of kSide, a drawing and a text. False when one fails.
bool AppendOfEach(NitfHandle document, const std::filesystem::path& folder);
// Lines all over a picture of kSide, as the edges of a detailed overlay.
void AddLines(HostVector* vector, size_t count);

void RegisterLoad(const std::string& name, const LazyPath& path, uint32_t bits, uint32_t rows);

// What the codecs' libraries decode alone.
inline constexpr const char* kJpegFloor = "floor/libjpeg-turbo, one stream";
inline constexpr const char* kJpegTilesFloor = "floor/libjpeg-turbo, 64 streams";
inline constexpr const char* kJpeg2000Floor = "floor/OpenJPEG";
inline constexpr const char* kFaxFloor = "floor/libtiff";
void RegisterCodecs(const Lazy<Bytes>& jpeg, const Lazy<std::vector<Bytes>>& tiles,
                    const Lazy<Bytes>& jpeg2000, const Lazy<std::string>& fax);

// How many system calls opening the file takes, or -1 where a process may not watch another.
int CountOpenSystemCalls(const std::wstring& path);
// Bytes that a save adds to the peak memory of a process with the document open, or -1 where that is not told.
int64_t MeasureSaveMemory(const std::filesystem::path& source);

// The status of fltInfo.
int32_t QueryInfo(const wchar_t* name, HostFileInfo& info);

std::wstring WriteOpenFile(const std::filesystem::path& folder);
std::filesystem::path WriteSaveFile(const std::filesystem::path& folder);

}  // namespace tavi_bench
