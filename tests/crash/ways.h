// What each way to crash leads to on this system: ways_posix.cpp, ways_windows.cpp.
#ifndef TEMVAR_TESTS_CRASH_WAYS_H_
#define TEMVAR_TESTS_CRASH_WAYS_H_

#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "crash/crash_run.h"
#include "support/minidump_reader.h"

namespace temvar_test {

struct Way {
  const char* name;
  // What the handlers see; 0 when no report is told of. Then how many passes of the handlers make
  // one: the vectored handler and the unhandled filter, or one of them.
  uint32_t code;
  size_t passes;
  // How the process ends.
  int signal;
  uint32_t status;
};

inline std::ostream& operator<<(std::ostream& stream, const Way& way) { return stream << way.name; }

const std::vector<Way>& WaysToCrash();

inline const Way& FindWay(const std::string& name) {
  for (const Way& way : WaysToCrash()) {
    if (way.name == name) return way;
  }
  throw std::invalid_argument(name);
}

// Checks what only a reader who knows the system can: the code, the system's own fields, and where
// the fault happened, as far as the child has told it.
void CheckDump(const Way& way, const CrashRun& run, const Minidump& dump);

}  // namespace temvar_test

#endif  // TEMVAR_TESTS_CRASH_WAYS_H_
