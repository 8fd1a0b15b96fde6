// Calendar and file times. Local time is that of the C library: TZ, else the system's zone.
#ifndef TEMVAR_PLATFORM_POSIX_CLOCK_H_
#define TEMVAR_PLATFORM_POSIX_CLOCK_H_

#include <ctime>

#include "platform/posix/win32_types.h"

using __time64_t = int64_t;

// Seconds since 1970-01-01 UTC; also stored in `*result` unless that is null.
__time64_t _time64(__time64_t* result);

// The calendar form of a time, in local time or in UTC. The record is the thread's own and is
// overwritten by the next call of either. Null for a null argument, for times before 1970 and for
// times beyond 3000-12-31 23:59:59 UTC.
std::tm* _localtime64(const __time64_t* time);
std::tm* _gmtime64(const __time64_t* time);

// The way back; `*record` is brought into its normal form. A local time is read as standard time if
// tm_isdst is 0, as daylight saving time if it is above 0, and as what held then if it is below 0.
// -1 for a null record, for years outside 1969 to 3001 and for times before 1970 or beyond 3000 as
// above; the record is then left as it is.
__time64_t _mktime64(std::tm* record);
__time64_t _mkgmtime64(std::tm* record);

// Between file times in UTC and in local time, by the offset that holds now: like Windows, these
// don't ask whether daylight saving time held at the time given. FALSE for a time out of range.
BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local);
BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* utc);

// Between file times and DOS dates, which know the years 1980 to 2107 and even seconds; an odd
// second is rounded up. FALSE for times beyond that and for dates that no calendar has.
BOOL FileTimeToDosDateTime(const FILETIME* time, WORD* dosDate, WORD* dosTime);
BOOL DosDateTimeToFileTime(WORD dosDate, WORD dosTime, FILETIME* time);

// Between file times and calendar fields, both in UTC; wDayOfWeek is not read. The years are 1601
// to 30827. FALSE for values that no calendar has.
BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* time);
BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* systemTime);

// Local calendar fields to UTC, by the offset that holds at that time. `zone` must be null, which
// means the current time zone.
struct TIME_ZONE_INFORMATION;
BOOL TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* local,
                                     SYSTEMTIME* utc);

#endif  // TEMVAR_PLATFORM_POSIX_CLOCK_H_
