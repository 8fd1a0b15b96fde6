#include "platform/posix/crash/abort_message.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace temvar::posix {
namespace {

// How glibc keeps the text: one mapping, the size of the mapping first.
struct AbortMessage {
  unsigned size;
  char text[1];
};

constinit AbortMessage* const* abortMessage = nullptr;

// How the texts begin that malloc.c of glibc 2.36 aborts with.
constexpr const char* kHeapMessages[] = {
    "malloc(): ",
    "malloc_consolidate(): ",
    "free(): ",
    "realloc(): ",
    "munmap_chunk(): ",
    "mremap_chunk(): ",
    "double free or corruption",
    "corrupted double-linked list",
    "corrupted size vs. prev_size",
    "invalid fastbin entry",
    "tcache_thread_shutdown(): ",
    "break adjusted to free malloc space",
    "Fatal glibc error: malloc assertion failure",
};

// A failed assertion begins with the name of its program, which can be any.
constexpr const char kAssertion[] = ": Assertion `";

}  // namespace

void PrepareAbortMessage() {
  abortMessage =
      static_cast<AbortMessage* const*>(dlvsym(RTLD_DEFAULT, "__abort_msg", "GLIBC_PRIVATE"));
}

bool IsHeapMessage(const char* text) {
  if (std::strstr(text, kAssertion) != nullptr) return false;
  return std::any_of(std::begin(kHeapMessages), std::end(kHeapMessages), [text](const char* start) {
    return std::strncmp(text, start, std::strlen(start)) == 0;
  });
}

bool IsHeapCorruptionAbort() {
  if (abortMessage == nullptr) return false;
  const AbortMessage* const message = *const_cast<AbortMessage* const volatile*>(abortMessage);
  return message != nullptr && IsHeapMessage(message->text);
}

}  // namespace temvar::posix
