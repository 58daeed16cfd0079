// What each subcommand is asked, and its work. Each returns its exit status: 0 done, 1 a file or the operation failed,
// 2 wrong usage.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Parts.h"
#include "PictureLoader.h"

namespace tavinitf {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

struct AppendOptions {
  std::string file;
  std::string output;
  PartOptions parts;
};
int RunAppend(const AppendOptions& options);

struct CopyOptions {
  std::string file;
  std::string output;
};
int RunCopy(const CopyOptions& options);

struct CreateOptions {
  std::string output;
  std::string date;
  PartOptions parts;
};
int RunCreate(const CreateOptions& options);
// What is wrong with a date; empty when nothing is, as for the others.
std::string ComplainOfDate(const std::string& text);

struct ExtractOptions {
  std::string file;
  std::string segment;
  std::string output;
};
int RunExtract(const ExtractOptions& options);
std::string ComplainOfExtracted(const std::string& selector);

struct HeadersOptions {
  std::string file;
  std::string segment;
  bool json = false;
};
int RunHeaders(const HeadersOptions& options);
std::string ComplainOfListed(const std::string& selector);

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
};
int RunInfo(const InfoOptions& options);

struct LimitsOptions {
  bool json = false;
};
int RunLimits(const LimitsOptions& options);

inline constexpr unsigned kMostRenderThreads = 64;
struct RenderOptions {
  std::vector<std::string> files;
  std::string output;
  std::string folder;
  unsigned threads = 1;
  std::optional<uint32_t> bits;
  LoadOptions load;
};
int RunRender(const RenderOptions& options);

struct SetOptions {
  std::string file;
  std::string output;
  std::vector<std::string> edits;
};
int RunSet(const SetOptions& options);

struct VerifyOptions {
  std::string file;
  bool json = false;
};
int RunVerify(const VerifyOptions& options);

}  // namespace tavinitf
