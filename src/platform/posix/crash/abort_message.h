#ifndef TEMVAR_PLATFORM_POSIX_CRASH_ABORT_MESSAGE_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_ABORT_MESSAGE_H_

namespace temvar::posix {

// Finds the text that the C library leaves for debuggers before it aborts. glibc has it,
// since 2.13, as __abort_msg (seen in 2.36); elsewhere no abort counts as heap corruption.
void PrepareAbortMessage();

// Whether the C library has reported a damaged heap: its text is one that its malloc, free or
// realloc prints. An assertion or a smashed stack has another text. What the heap's own checks
// don't find stays unseen, as anywhere. Safe in a signal handler.
bool IsHeapCorruptionAbort();

// Whether `text` is such a message.
bool IsHeapMessage(const char* text);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_ABORT_MESSAGE_H_
