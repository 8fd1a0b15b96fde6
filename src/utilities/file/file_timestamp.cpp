// File times from text.
#include <chrono>

#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/file/utility_file_impl.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

// Reads the number at `text` and moves past the next `separator`. False without one.
bool TakeNumber(const TmvWideChar*& text, TmvWideChar separator, int& number) {
  const TmvWideChar* end = text;
  while (*end != separator) {
    if (*end == TMV_WIDE('\0')) return false;
    ++end;
  }
  number = _wtoi(text);
  text = end + 1;
  return true;
}

bool InRange(int value, int limit) { return value >= 0 && value < limit; }

// Reads a local time in the shape 2024-01-31 17:05:09. False for text of another shape and for
// values that no calendar or clock has.
bool ParseLocalTime(const TmvWideChar* text, SYSTEMTIME& time) {
  int year, month, day, hour, minute;
  if (!TakeNumber(text, TMV_WIDE('-'), year) || !TakeNumber(text, TMV_WIDE('-'), month) ||
      !TakeNumber(text, TMV_WIDE(' '), day) || !TakeNumber(text, TMV_WIDE(':'), hour) ||
      !TakeNumber(text, TMV_WIDE(':'), minute)) {
    return false;
  }
  const int second = _wtoi(text);
  // Documented as the start of the day in the text, not of the next one.
  if (hour == 24) hour = 0;
  if (!InRange(hour, 24) || !InRange(minute, 60) || !InRange(second, 60)) return false;
  // The last year of the system's record is 30827; the casts below need numbers that aren't
  // negative.
  if (!InRange(year, 30828) || !InRange(month, 13) || !InRange(day, 32)) return false;
  const std::chrono::year_month_day date(std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  if (!date.ok()) return false;
  time = {};
  time.wYear = static_cast<WORD>(year);
  time.wMonth = static_cast<WORD>(month);
  time.wDay = static_cast<WORD>(day);
  time.wHour = static_cast<WORD>(hour);
  time.wMinute = static_cast<WORD>(minute);
  time.wSecond = static_cast<WORD>(second);
  return true;
}

}  // namespace

bool TMVUtilityFileImpl::SetFileTimestamp(const char* path, const char* time) {
  SYSTEMTIME local;
  if (!ParseLocalTime(ToWide(time).get(), local)) return false;
  // No sharing, so that a file that somebody holds open is refused: a writer would set another time
  // right after. Without backup semantics the system refuses folders too.
  const FileHandle file(CreateFileW(SystemPath(path).get(), GENERIC_READ | GENERIC_WRITE, 0,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.IsOpen()) return false;
  // A time that the system can't express stays zero, which leaves the file's times as they are.
  SYSTEMTIME utc{};
  FILETIME fileTime{};
  TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc);
  SystemTimeToFileTime(&utc, &fileTime);
  SetFileTime(file.get(), &fileTime, nullptr, &fileTime);
  return true;
}

}  // namespace temvar
