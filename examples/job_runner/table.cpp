#include "table.h"

#include <zlib.h>

#include <iomanip>
#include <ostream>

#include "support/text.h"

namespace job_runner {

namespace {

constexpr size_t kNameWidth = 34;

// The CRC-32 of two texts one after the other. zlib takes the second length as a signed long,
// which has 32 bits on some systems, so a long one goes in pieces.
uint32_t JoinCrcs(uint32_t first, uint32_t second, uint64_t secondBytes) {
  constexpr uint64_t kPiece = uint64_t{1} << 30;
  uLong shifted = first;
  for (; secondBytes > kPiece; secondBytes -= kPiece) {
    shifted = crc32_combine(shifted, 0, static_cast<z_off_t>(kPiece));
  }
  return static_cast<uint32_t>(crc32_combine(shifted, second, static_cast<z_off_t>(secondBytes)));
}

void PrintHeading(std::ostream& out) {
  out << support::FitColumns("folder", kNameWidth) << std::setw(7) << "files" << std::setw(7)
      << "failed" << std::setw(7) << "left" << std::setw(13) << "bytes" << std::setw(10) << "lines"
      << "  crc-32\n";
}

void PrintRow(std::ostream& out, const std::string& name, const Totals& totals) {
  out << support::FitColumns(name, kNameWidth) << std::setw(7) << totals.files << std::setw(7)
      << totals.failed << std::setw(7) << totals.notRun << std::setw(13) << totals.bytes
      << std::setw(10) << totals.lines << "  " << std::hex << std::setfill('0') << std::setw(8)
      << totals.crc << std::dec << std::setfill(' ') << '\n';
}

void PrintFailures(std::ostream& out, const std::vector<tmv::JobFailure>& failures) {
  for (const tmv::JobFailure& failure : failures) {
    out << "failed: " << failure.label << ": " << failure.Message() << '\n';
  }
}

}  // namespace

void Totals::Add(const FileWork& file) {
  switch (file.outcome) {
    case FileWork::Outcome::kNotRun:
      ++notRun;
      return;
    case FileWork::Outcome::kFailed:
      ++failed;
      return;
    case FileWork::Outcome::kDone:
      ++files;
      bytes += file.bytes;
      lines += file.lines;
      crc = JoinCrcs(crc, file.crc, file.bytes);
      return;
  }
}

Totals PrintTable(std::ostream& out, const std::vector<PackageWork>& packages,
                  const std::vector<tmv::JobFailure>& failures, bool listFiles) {
  Totals all;
  PrintHeading(out);
  for (const PackageWork& package : packages) {
    Totals totals;
    for (const FileWork& file : package.files) {
      totals.Add(file);
      all.Add(file);
    }
    PrintRow(out, package.name, totals);
    if (!listFiles) continue;
    for (const FileWork& file : package.files) {
      Totals one;
      one.Add(file);
      PrintRow(out, "  " + support::Utf8FromPath(file.path.filename()), one);
    }
  }
  PrintRow(out, "total", all);
  PrintFailures(out, failures);
  return all;
}

}  // namespace job_runner
