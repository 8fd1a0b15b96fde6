#ifndef EXAMPLES_SUPPORT_WATCH_H_
#define EXAMPLES_SUPPORT_WATCH_H_

#include <temvar/job.h>

#include <cstdio>
#include <functional>
#include <string>

#include "support/terminal.h"

namespace support {

// Follows a started job to its end: p pauses, r resumes, c and Ctrl-C cancel. On a screen it shows
// what `describe` returns for the state and the columns that there are, in one line that it
// overwrites and clears at the end; elsewhere it only says what the keys did.
void WatchJob(tmv::Job& job, Terminal& terminal, std::FILE* out,
              const std::function<std::string(const std::string& state, size_t columns)>& describe);

}  // namespace support

#endif  // EXAMPLES_SUPPORT_WATCH_H_
