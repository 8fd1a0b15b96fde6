#include "table.h"

#include <algorithm>

#include "support/text.h"

namespace backup {

namespace {

constexpr size_t kNumbersWidth = 30;
constexpr size_t kStateWidth = 11;
constexpr size_t kShortestName = 16;
constexpr size_t kLongestName = 60;

std::string Numbers(const std::string& files, const std::string& size, const std::string& archive) {
  char text[kNumbersWidth + 1];
  std::snprintf(text, sizeof(text), "%8.8s%11.11s%11.11s", files.c_str(), size.c_str(),
                archive.c_str());
  return text;
}

void PrintRow(std::FILE* out, size_t width, const std::string& name, const std::string& numbers,
              const char* state) {
  std::fprintf(out, "%s%s  %s\n", support::FitColumns(name, width).c_str(), numbers.c_str(), state);
}

const char* Describe(Folder::Outcome outcome) {
  switch (outcome) {
    case Folder::Outcome::kPacked:
      return "packed";
    case Folder::Outcome::kUnchanged:
      return "unchanged";
    case Folder::Outcome::kFailed:
      return "FAILED";
    case Folder::Outcome::kUnfinished:
      break;
  }
  return "left";
}

}  // namespace

Totals Count(const std::vector<Folder>& folders) {
  Totals totals;
  for (const Folder& folder : folders) {
    totals.packed += folder.outcome == Folder::Outcome::kPacked ? 1 : 0;
    totals.unchanged += folder.outcome == Folder::Outcome::kUnchanged ? 1 : 0;
    totals.failed += folder.outcome == Folder::Outcome::kFailed ? 1 : 0;
    totals.unfinished += folder.outcome == Folder::Outcome::kUnfinished ? 1 : 0;
    totals.passedOver += folder.passedOver.size();
  }
  return totals;
}

void PrintFailures(std::FILE* out, const std::vector<tmv::JobFailure>& failures) {
  for (const tmv::JobFailure& failure : failures) {
    std::fprintf(out, "failed: %s: %s\n", failure.lane.c_str(), failure.Message().c_str());
  }
}

Totals PrintTable(std::FILE* out, size_t columns, const std::vector<Folder>& folders,
                  const std::vector<tmv::JobFailure>& failures) {
  // A narrow screen has no room for the numbers.
  const bool isWide = columns >= kNumbersWidth + kStateWidth + kShortestName;
  const size_t numbers = isWide ? kNumbersWidth : 0;
  const size_t name = std::min(columns - numbers - kStateWidth, kLongestName);
  PrintRow(out, name, "folder", isWide ? Numbers("files", "size", "archive") : "", "state");
  for (const Folder& folder : folders) {
    const int64_t archive = TmvUtilityFile()->FileSize(folder.archive.c_str());
    PrintRow(out, name, folder.name,
             isWide
                 ? Numbers(std::to_string(folder.files.size()), support::FormatBytes(folder.bytes),
                           support::FormatBytes(static_cast<uint64_t>(archive)))
                 : "",
             Describe(folder.outcome));
  }
  PrintFailures(out, failures);
  for (const Folder& folder : folders) {
    for (const PassedOver& item : folder.passedOver) {
      std::fprintf(out, "passed over: %s: %s\n", item.path.c_str(), item.reason.c_str());
    }
  }
  return Count(folders);
}

std::string Summary(const Totals& totals) {
  return std::to_string(totals.packed) + " packed, " + std::to_string(totals.unchanged) +
         " unchanged, " + std::to_string(totals.failed) + " failed, " +
         std::to_string(totals.unfinished) + " left" +
         (totals.passedOver > 0 ? ", " + std::to_string(totals.passedOver) + " passed over" : "");
}

}  // namespace backup
