#ifndef EXAMPLES_SUPPORT_WATCH_H_
#define EXAMPLES_SUPPORT_WATCH_H_

#include <cstdio>
#include <functional>
#include <string>

#include "support/job_control.h"
#include "support/terminal.h"

namespace support {

// Follows a started job to its end: p pauses, r resumes, c and Ctrl-C cancel. On a screen it shows
// `describe`'s text and the state in one line that it writes over and clears at the end; elsewhere
// it only tells what the keys did.
void WatchJob(JobControl& job, Terminal& terminal, std::FILE* out,
              const std::function<std::string()>& describe);

}  // namespace support

#endif  // EXAMPLES_SUPPORT_WATCH_H_
