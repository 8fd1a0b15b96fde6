#include "crash/dump_path.h"

#include <atomic>
#include <iterator>

#include "crash/running_reports.h"
#include "platform/crash_clock.h"
#include "temvar/utility_sys.h"

namespace temvar {
namespace {

using WideView = std::basic_string_view<TmvWideChar>;

constexpr size_t kBuffers = kMaxReports;
constexpr WideView kDumpExtension = TMV_WIDE(".dmp");
constexpr WideView kArchiveExtension = TMV_WIDE(".dmp.zip");

constinit const TmvWideChar* directory = TMV_WIDE("");
constinit TmvWideChar* buffers[kBuffers] = {};
constinit std::atomic<bool> taken[kBuffers] = {};

size_t PathSize() {
  return WideView(directory).size() + kCrashTimeLength + kArchiveExtension.size() + 1;
}

// The place of a free buffer, kBuffers if there is none.
size_t TakeBuffer() {
  for (size_t i = 0; i < kBuffers; ++i) {
    if (buffers[i] != nullptr && !taken[i].exchange(true)) return i;
  }
  return kBuffers;
}

void BuildPath(TmvWideChar* at, const char* time, WideView extension) {
  at += WideView(directory).copy(at, WideView::npos);
  // Digits are the same in wide text; a conversion would need the heap.
  for (; *time != '\0'; ++time) *at++ = static_cast<TmvWideChar>(*time);
  at += extension.copy(at, extension.size());
  *at = 0;
}

}  // namespace

void DumpPath::Reserve(WideView path) {
  TmvWideChar* const copy = new TmvWideChar[path.size() + 1]();
  path.copy(copy, path.size());
  directory = copy;
  for (TmvWideChar*& buffer : buffers) buffer = new TmvWideChar[2 * PathSize()];
}

const TmvWideChar* DumpPath::Directory() { return directory; }

DumpPath::DumpPath() : place_(TakeBuffer()) {
  if (place_ == kBuffers) overflow_ = std::make_unique<TmvWideChar[]>(2 * PathSize());
  dump_ = place_ < kBuffers ? buffers[place_] : overflow_.get();
  archive_ = dump_ + PathSize();

  char time[32] = {};
  if (!CrashTime(time)) TmvUtilitySys()->FormatCurrentTime(time, sizeof(time), "%Y%m%d%H%M%S");
  BuildPath(dump_, time, kDumpExtension);
  BuildPath(archive_, time, kArchiveExtension);
}

DumpPath::~DumpPath() {
  if (place_ < kBuffers) taken[place_].store(false);
}

}  // namespace temvar
