// What is measured and against what. Every load is compared with copying its finished composite or with the
// codec's library alone, in the same run, so that the figures say the same on every machine.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

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

inline constexpr uint32_t kSide = 2048;

struct LoadCase {
  std::string name;
  uint32_t bands;  // 3 or 1, of 8 bits
  char imode;
  uint32_t block_side;  // kSide: one block
  uint32_t load_bits;   // depth of the composite that is asked for
  double bound;         // times the copy of the composite
};

const std::vector<LoadCase>& LoadCases();
Bytes Noise(size_t count);  // without a pattern that a cache or a predictor could use
std::wstring WriteLoadFile(const LoadCase& load, const std::filesystem::path& folder);
std::wstring WriteOpenFile(const std::filesystem::path& folder);

// A load's time must not exceed a sum of other times.
struct Term {
  double factor;
  std::string of;  // a benchmark, or kMilliseconds
};
inline constexpr const char* kMilliseconds = "ms";

// Images of coded data.
struct CodedCase {
  std::string name;
  std::wstring path;
  uint32_t rows;
  uint32_t load_bits;
  std::string floor;  // the benchmark that the ratio is of
  std::vector<Term> bound;
};

// What the codecs' libraries are measured with, alone.
struct CodedStreams {
  std::vector<Bytes> jpeg;        // one colour picture of kSide
  std::vector<Bytes> jpeg_tiles;  // the same in tiles of kTileSide
  Bytes jpeg2000;
  std::string fax;  // path of a TIFF file with the data as its strip
};

inline constexpr uint32_t kTileSide = 256;
inline constexpr uint32_t kPageWidth = 5000;
inline constexpr uint32_t kPageHeight = 7000;
inline constexpr const char* kScanName = "load/C3 by scan, 64 streams of 1 MiB";
inline constexpr const char* kScanMaskName = "load/M3 by mask, 64 streams of 1 MiB";
inline constexpr double kScanBytes = 64.0 * 1024 * 1024;
inline constexpr const char* kJpegFloor = "floor/libjpeg-turbo, one stream";
inline constexpr const char* kJpegTilesFloor = "floor/libjpeg-turbo, 64 streams";
inline constexpr const char* kJpeg2000Floor = "floor/OpenJPEG";
inline constexpr const char* kFaxFloor = "floor/libtiff";

// Makes the files of all coded cases, and what their floors decode.
std::vector<CodedCase> WriteCodedFiles(const std::filesystem::path& folder, CodedStreams* streams);
void RegisterCoded(const std::vector<CodedCase>& cases, const CodedStreams& streams);

std::string CopyName(uint32_t load_bits);      // "copy/24 bits"
std::string PageCopyName(uint32_t load_bits);  // "copy/page of 24 bits"
inline constexpr const char* kOpenName = "open/one image";

void RegisterLoad(const std::string& name, const std::wstring& path, uint32_t bits, uint32_t rows);
void RegisterLoads(const std::filesystem::path& folder);
void RegisterOpen(const std::wstring& path);

inline constexpr const char* kSaveName = "save/one image of 50 MiB";
inline constexpr const char* kFileCopyName = "copy/file of 50 MiB in pieces of 1 MiB";
std::filesystem::path WriteSaveFile(const std::filesystem::path& folder);
void RegisterSave(const std::filesystem::path& source);
// Bytes that a save adds to the peak memory of a process with the document open, or -1 where that is not told.
int64_t MeasureSaveMemory(const std::filesystem::path& source);

// 100,000 lines painted at kSide x kSide, and the same lines stroked by the drawing library alone.
inline constexpr const char* kStrokesName = "floor/Cairo, 100,000 strokes";
inline constexpr const char* kPaintVectorName = "paint/vector of 100,000 lines";
void RegisterVector();

// How many system calls opening the file takes, or -1 where a process may not watch another.
int CountOpenSystemCalls(const std::wstring& path);

// The shortest time of each benchmark, in nanoseconds.
using Times = std::map<std::string, double>;

}  // namespace tavi_bench
