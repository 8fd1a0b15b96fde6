#include "table.h"

#include <temvar/handles.h>

#include "support/text.h"

namespace backup {

namespace {

constexpr size_t kNameWidth = 30;

std::string Size(uint64_t bytes) { return tmv::Text(TmvUtilityFile()->FormatSize(bytes)).c_str(); }

const char* Describe(Folder::Outcome outcome, Totals& totals) {
  switch (outcome) {
    case Folder::Outcome::kPacked:
      ++totals.packed;
      return "packed";
    case Folder::Outcome::kUnchanged:
      ++totals.unchanged;
      return "unchanged";
    case Folder::Outcome::kFailed:
      ++totals.failed;
      return "FAILED";
    case Folder::Outcome::kUnfinished:
      break;
  }
  ++totals.unfinished;
  return "left";
}

}  // namespace

void PrintFailures(std::FILE* out, const std::vector<tmv::JobFailure>& failures) {
  for (const tmv::JobFailure& failure : failures) {
    std::fprintf(out, "failed: %s: %s\n", failure.lane.c_str(), failure.Message().c_str());
  }
}

Totals PrintTable(std::FILE* out, const std::vector<Folder>& folders,
                  const std::vector<tmv::JobFailure>& failures) {
  Totals totals;
  std::fprintf(out, "%s %7s %12s %12s  %s\n", support::FitColumns("folder", kNameWidth).c_str(),
               "files", "size", "archive", "state");
  for (const Folder& folder : folders) {
    const char* const state = Describe(folder.outcome, totals);
    const int64_t archive = TmvUtilityFile()->FileSize(folder.archive.c_str());
    std::fprintf(out, "%s %7lu %12s %12s  %s\n",
                 support::FitColumns(folder.name, kNameWidth).c_str(),
                 static_cast<unsigned long>(folder.files.size()), Size(folder.bytes).c_str(),
                 Size(static_cast<uint64_t>(archive)).c_str(), state);
  }
  PrintFailures(out, failures);
  for (const Folder& folder : folders) {
    totals.passedOver += folder.passedOver.size();
    for (const PassedOver& item : folder.passedOver) {
      std::fprintf(out, "passed over: %s: %s\n", item.path.c_str(), item.reason.c_str());
    }
  }
  return totals;
}

std::string Summary(const Totals& totals) {
  return std::to_string(totals.packed) + " packed, " + std::to_string(totals.unchanged) +
         " unchanged, " + std::to_string(totals.failed) + " failed, " +
         std::to_string(totals.unfinished) + " left" +
         (totals.passedOver > 0 ? ", " + std::to_string(totals.passedOver) + " passed over" : "");
}

}  // namespace backup
