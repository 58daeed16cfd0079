// tavinitf render: the composite of each file as a picture.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#include "Commands.h"
#include "PathNames.h"
#include "PictureLoader.h"
#include "PictureWriter.h"
#include "Progress.h"
#include "Refusal.h"
#include "Saving.h"
#include "TaviStatus.h"

namespace tavinitf {
namespace {

struct Job {
  std::string input;
  std::string output;
};

Failure NotLoaded(const Job& job, const std::wstring& wide, int32_t status) {
  const NitfContents contents = ReadContents(job.input, wide);
  if (contents.status < SUCCESS) {
    return FailureLine(job.input, "not opened", ExplainOpenFailure(job.input, contents), contents.status);
  }
  return FailureLine(job.input, "not drawn", ExplainDrawFailure(job.input, status, contents), status);
}

// A picture never replaces a file that the run reads, under whatever name.
bool IsInput(const std::string& output, const std::vector<std::string>& inputs) {
  std::error_code ignored;
  if (!std::filesystem::exists(output, ignored)) return false;
  return std::any_of(inputs.begin(), inputs.end(), [&](const std::string& input) {
    return std::filesystem::equivalent(input, output, ignored);
  });
}

Failure Render(const Job& job, const RenderOptions& options) {
  HostForgetLimitHit();
  LoadOptions load = options.load;
  const std::optional<std::wstring> wide = WideFromUtf8(job.input);
  if (!wide) {
    return FailureLine(job.input, "not opened", "its name is not valid UTF-8", ERR_FILE_NOT_FOUND);
  }
  const PictureFormat& format = *FindPictureFormat(job.output);
  load.bits = options.bits.value_or(format.grey_only ? 8 : 24);

  PictureSize size;
  int32_t status = QueryPictureSize(*wide, load, size);
  if (status != SUCCESS) return NotLoaded(job, *wide, status);

  if (IsInput(job.output, options.files)) return NotWritten(job.output, "is a file that is read");
  OutputFile file;
  if (!file.Open(job.output)) return NotWritten(job.output, file.error());
  const std::unique_ptr<PictureWriter> writer = format.make(file);
  if (!writer->Begin({size.width, size.height, load.bits / 8})) return NotWritten(job.output, file.error());
  status = LoadPicture(*wide, load, [&](const uint8_t* row) { return writer->WriteRow(row); });
  if (!file.error().empty()) return NotWritten(job.output, file.error());
  if (status != SUCCESS) return NotLoaded(job, *wide, status);
  if (!writer->Finish() || !file.Commit()) return NotWritten(job.output, file.error());
  return std::nullopt;
}

// Runs the jobs on several threads, each with files of its own, and tells of failures in the order of the
// jobs.
class RenderRun {
 public:
  RenderRun(const RenderOptions& options, const std::vector<Job>& jobs)
      : options_(options), jobs_(jobs), results_(jobs.size()), progress_(jobs.size()) {}

  int Run() {
    const auto count = std::min<size_t>({options_.threads, jobs_.size(), kMostRenderThreads});
    std::vector<std::jthread> helpers;
    for (size_t i = 1; i < count; ++i) helpers.emplace_back([this] { Work(); });
    Work();
    helpers.clear();
    return failed_ ? kFailed : kDone;
  }

 private:
  void Work() {
    for (size_t i = next_++; i < jobs_.size(); i = next_++) {
      Failure failure;
      try {
        failure = Render(jobs_[i], options_);
      } catch (const std::exception& error) {
        failure = NotDrawn(jobs_[i], error);
      }
      Report(i, std::move(failure));
      progress_.Advance();
    }
  }

  // Also without any memory: nothing may leave a thread.
  static Failure NotDrawn(const Job& job, const std::exception& error) noexcept {
    try {
      return FailureLine(job.input, "not drawn", error.what(), ERR_NO_MEMORY);
    } catch (const std::exception&) {
      return "out of memory";  // short enough to take none
    }
  }

  void Report(size_t job, Failure failure) {
    const std::lock_guard lock(mutex_);
    results_[job] = std::move(failure);
    for (; reported_ < results_.size() && results_[reported_]; ++reported_) {
      const Failure& result = *results_[reported_];
      if (!result) continue;
      failed_ = true;
      progress_.PrintLine(*result);
    }
  }

  const RenderOptions& options_;
  const std::vector<Job>& jobs_;
  std::atomic<size_t> next_ = 0;
  std::mutex mutex_;
  std::vector<std::optional<Failure>> results_;  // empty: not done yet
  size_t reported_ = 0;
  bool failed_ = false;
  Progress progress_;
};

// What is wrong with the options taken together; nothing when they fit.
std::optional<std::string> FindMisuse(const RenderOptions& options) {
  if (options.output.empty() == options.folder.empty()) return "either -o OUT or -d DIR is needed";
  if (options.output.empty()) return std::nullopt;
  if (options.files.size() > 1) return "-o takes one FILE; use -d DIR for many";
  const PictureFormat* format = FindPictureFormat(options.output);
  if (format == nullptr) return "\"" + options.output + "\" has none of the endings " + PictureEndings();
  if (format->grey_only && options.bits == 24U) return "\"" + options.output + "\" can hold 8 bits only";
  return std::nullopt;
}

// The input and output of each picture. Two inputs that would make one output are a misuse.
std::optional<std::string> ListJobs(const RenderOptions& options, std::vector<Job>& jobs) {
  if (!options.output.empty()) {
    jobs.push_back({options.files.front(), options.output});
    return std::nullopt;
  }
  std::map<std::string, std::string> makers;
  for (const std::string& file : options.files) {
    const std::filesystem::path name = std::filesystem::path(file).filename().replace_extension(".png");
    const std::string output = (std::filesystem::path(options.folder) / name).string();
    const auto [maker, is_new] = makers.emplace(output, file);
    if (!is_new)
      return "\"" + maker->second + "\" and \"" + file + "\" would both be drawn to \"" + output + "\"";
    jobs.push_back({file, output});
  }
  return std::nullopt;
}

}  // namespace

int RunRender(const RenderOptions& options) {
  std::vector<Job> jobs;
  std::optional<std::string> misuse = FindMisuse(options);
  if (!misuse) misuse = ListJobs(options, jobs);
  if (misuse) {
    std::fprintf(stderr, "tavinitf render: %s\nRun with --help for more information.\n", misuse->c_str());
    return kWrongUsage;
  }
  if (!options.folder.empty()) {
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (error) {
      std::fprintf(stderr, "%s\n", NotWritten(options.folder, error.message())->c_str());
      return kFailed;
    }
  }
  return RenderRun(options, jobs).Run();
}

}  // namespace tavinitf
