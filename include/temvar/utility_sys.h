#ifndef TEMVAR_UTILITY_SYS_H_
#define TEMVAR_UTILITY_SYS_H_

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "temvar/export.h"

// What the system and its clock know: standard folders, dates as text, durations, a sleep, the
// version of Windows.
//
// Paths are UTF-8 and end in a backslash. Times are seconds since 1970-01-01 UTC. A plain date text
// reads "2025-10-15 09:30:05", an ISO date text "2025-10-15T09:30:05Z".
//
// New text belongs to the caller, who releases it with FreeString of TMVUtilityString. The object
// has no state: any thread may call any operation at any time. Operations that make text throw
// std::bad_alloc.
class TMVUtilitySys {
 public:
  // New text: the folder for the user's application data, made if it is missing. Falls back to
  // GetTempDirectory.
  virtual char* GetAppDataPath() = 0;

  // New text: the user's documents folder. Falls back to GetTempDirectory.
  virtual char* GetDocumentsPath() = 0;

  // New text: the folder for temporary files.
  virtual char* GetTempDirectory() = 0;

  // New text: the folder Downloads in the user's profile, made if it is missing. A downloads folder
  // that the user moved elsewhere is not followed. Falls back to GetTempDirectory.
  virtual char* GetDownloadsPath() = 0;

  // New text: the year in which the library was built, as in "2025".
  virtual char* GetBuildYear() = 0;

  // Writes `time` as local time into `buffer` of `size` bytes, by the strftime text `format`. A
  // time below 0 or from 32,535,194,400 (at the end of the year 3000) on counts as 0. As with
  // strftime, a text that doesn't fit leaves the buffer undefined.
  virtual void FormatTime(int64_t time, char* buffer, size_t size, const char* format) = 0;

  // FormatTime of this moment.
  virtual void FormatCurrentTime(char* buffer, size_t size, const char* format) = 0;

  // Always true.
  virtual bool AlwaysTrue() = 0;

  // New text: the plain local date `seconds` after the start of `baseYear`, for stamps that count
  // from another epoch. A negative count is 0. A count beyond the calendar (the year 3000) is taken
  // to be in nanoseconds. An empty text if that doesn't help either.
  virtual char* FormatSecondsSince(int64_t seconds, int32_t baseYear) = 0;
  virtual char* FormatSecondsSince1970(int64_t seconds) = 0;
  virtual char* FormatSecondsSince2001(int64_t seconds) = 0;

  // New text: the plain local date of `time`. Empty for times before 1970 and beyond 3000.
  virtual char* FormatLocalTime(int64_t time) = 0;

  // New text: a duration, rounded to whole seconds, as "02:03" or with hours as "01:02:03". The
  // hours take as many digits as they need. Negative values and NaN read as 0.
  virtual char* FormatDuration(double seconds) = 0;

  // New text: a plain date text in UTC as a plain date text in local time. The digits are read at
  // their places, the separators are not looked at. An empty text for null, for less than 19 bytes
  // and for a date outside 1970 to 3000. `out` may be null; else the local time is stored there,
  // unless the result is empty.
  virtual char* UtcTextToLocalText(std::tm* out, const char* text) = 0;

  // New text: a plain date text in local time as an ISO date text in UTC, read and refused in the
  // same way. Local time is taken as standard time, also in summer. `out` may be null; else it gets
  // the time in UTC, unless the result is empty.
  virtual char* LocalTextToUtcText(std::tm* out, const char* text) = 0;

  // Blocks the calling thread for that time. 0 and negative values return at once.
  virtual void SleepMilliseconds(int32_t milliseconds) = 0;

  // The version that Windows reports to this process: a program without a manifest of compatibility
  // sees 6.2 at most. Elsewhere it is 6.2.
  virtual bool IsVistaOrLater() = 0;
  virtual bool IsWindows7OrLater() = 0;
  virtual bool IsWindows8OrLater() = 0;

  // True if the system is a 64-bit Windows and the process a 32-bit one. False elsewhere.
  virtual bool Is64BitSystem() = 0;

  // Always false: the product is a 32-bit library.
  virtual bool Is64BitProcess() = 0;

  // New text: name and extension of the host's executable, without its folder.
  virtual char* GetExecutableFileName() = 0;

  // New text: a duration in whole seconds, as "02:03" or "01:02:03".
  virtual char* FormatSeconds(int64_t seconds) = 0;

  // The system's number of this process.
  virtual uint32_t GetProcessId() = 0;

 protected:
  ~TMVUtilitySys() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVUtilitySys* TmvUtilitySys();

#endif  // TEMVAR_UTILITY_SYS_H_
