// A runtime stream that is closed on every way out.
#ifndef TEMVAR_UTILITIES_FILE_STREAM_H_
#define TEMVAR_UTILITIES_FILE_STREAM_H_

#include <cstdio>
#include <memory>

namespace temvar {

// The result of fclose is lost, so a writer must not leave bytes in the buffer for it.
struct CloseStream {
  void operator()(FILE* stream) const noexcept { std::fclose(stream); }
};

using Stream = std::unique_ptr<FILE, CloseStream>;

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_FILE_STREAM_H_
