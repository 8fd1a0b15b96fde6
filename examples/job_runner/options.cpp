#include "options.h"

#include <algorithm>
#include <charconv>
#include <thread>

#include "support/text.h"

namespace job_runner {

namespace {

constexpr uint32_t kMostWorkers = 256;

uint32_t ParseWorkers(const std::string& text) {
  uint32_t workers = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, workers);
  if (error != std::errc() || rest != end || workers < 1 || workers > kMostWorkers) {
    throw UsageError("--workers takes a number from 1 to " + std::to_string(kMostWorkers) +
                     ", not \"" + text + "\"");
  }
  return workers;
}

}  // namespace

const char kUsage[] =
    "usage: job_runner [--workers N] [--files] [--] [FOLDER | FILE]...\n"
    "Reads every file of the folders and reports its size, lines and CRC-32.\n"
    "  --workers N  number of files that are read side by side (default: the processors)\n"
    "  --files      list each file, not only each folder\n"
    "  --help       this text\n"
    "Without a folder it reads the tree of this project.\n"
    "Keys while it runs: p pauses, r resumes, c or Ctrl-C cancels.\n"
    "Exit status: 0 all files read, 1 some not, 2 wrong usage, 3 the job couldn't run,\n"
    "130 cancelled.\n";

Options ParseOptions(const std::vector<std::string>& arguments) {
  Options options;
  options.workers = std::clamp(std::thread::hardware_concurrency(), 2u, kMostWorkers);
  bool onlyPaths = false;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (onlyPaths || argument.empty() || argument[0] != '-') {
      options.paths.push_back(support::PathFromUtf8(argument));
    } else if (argument == "--") {
      onlyPaths = true;
    } else if (argument == "--workers") {
      if (++i == arguments.size()) throw UsageError("--workers takes a number");
      options.workers = ParseWorkers(arguments[i]);
    } else if (argument == "--files") {
      options.listFiles = true;
    } else if (argument == "--help" || argument == "-h") {
      options.help = true;
    } else {
      throw UsageError("unknown option \"" + argument + "\"");
    }
  }
  if (options.paths.empty()) options.paths.push_back(support::PathFromUtf8(JOB_RUNNER_OWN_TREE));
  return options;
}

}  // namespace job_runner
