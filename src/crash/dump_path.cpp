#include "crash/dump_path.h"

#include <atomic>
#include <iterator>

#include "platform/crash_clock.h"
#include "temvar/utility_sys.h"

namespace temvar {
namespace {

using WideView = std::basic_string_view<TmvWideChar>;

constexpr size_t kBuffers = 8;
constexpr WideView kExtension = TMV_WIDE(".dmp");

constinit const TmvWideChar* directory = TMV_WIDE("");
constinit TmvWideChar* buffers[kBuffers] = {};
constinit std::atomic<bool> taken[kBuffers] = {};

size_t BufferSize() {
  return WideView(directory).size() + kCrashTimeLength + kExtension.size() + 1;
}

// The place of a free buffer, kBuffers if there is none.
size_t TakeBuffer() {
  for (size_t i = 0; i < kBuffers; ++i) {
    if (buffers[i] != nullptr && !taken[i].exchange(true)) return i;
  }
  return kBuffers;
}

}  // namespace

void DumpPath::Reserve(WideView path) {
  TmvWideChar* const copy = new TmvWideChar[path.size() + 1]();
  path.copy(copy, path.size());
  directory = copy;
  for (TmvWideChar*& buffer : buffers) buffer = new TmvWideChar[BufferSize()];
}

const TmvWideChar* DumpPath::Directory() { return directory; }

DumpPath::DumpPath() : place_(TakeBuffer()) {
  if (place_ == kBuffers) overflow_ = std::make_unique<TmvWideChar[]>(BufferSize());
  text_ = place_ < kBuffers ? buffers[place_] : overflow_.get();

  char time[32] = {};
  if (!CrashTime(time)) TmvUtilitySys()->FormatCurrentTime(time, sizeof(time), "%Y%m%d%H%M%S");

  const WideView path(directory);
  TmvWideChar* at = text_ + path.copy(text_, path.size());
  // Digits are the same in wide text; a conversion would need the heap.
  for (const char* digit = time; *digit != '\0'; ++digit) *at++ = static_cast<TmvWideChar>(*digit);
  at += kExtension.copy(at, kExtension.size());
  *at = 0;
}

DumpPath::~DumpPath() {
  if (place_ < kBuffers) taken[place_].store(false);
}

}  // namespace temvar
