#ifndef TEMVAR_CRASH_DUMP_PATH_H_
#define TEMVAR_CRASH_DUMP_PATH_H_

#include <cstddef>
#include <memory>
#include <string_view>

#include "temvar/types.h"

namespace temvar {

// The paths of one report: directory, local time, ".dmp", and for the archive ".zip" after that.
// They are built in a buffer that was reserved at Install, since a thread may crash while it holds
// the lock of the heap. There are as many buffers as threads are waited for (running_reports.h);
// only a report beyond those takes memory of its own.
class DumpPath {
 public:
  // Makes the buffers for reports into `directory`. They are kept until the process ends: a crash
  // can come after the last destructor. Call it once. Throws std::bad_alloc.
  static void Reserve(std::basic_string_view<TmvWideChar> directory);

  // The directory given to Reserve; "" before it.
  static const TmvWideChar* Directory();

  // Takes a buffer and builds the paths of this moment.
  DumpPath();
  ~DumpPath();
  DumpPath(const DumpPath&) = delete;
  DumpPath& operator=(const DumpPath&) = delete;

  const TmvWideChar* Dump() const { return dump_; }
  const TmvWideChar* Archive() const { return archive_; }

 private:
  size_t place_ = 0;  // Of the buffer; one past the last for memory of its own.
  std::unique_ptr<TmvWideChar[]> overflow_;  // That memory.
  TmvWideChar* dump_ = nullptr;
  TmvWideChar* archive_ = nullptr;
};

}  // namespace temvar

#endif  // TEMVAR_CRASH_DUMP_PATH_H_
