// What a call prints on standard output and standard error, to the byte.
#ifndef TEMVAR_TESTS_SUPPORT_OUTPUT_CAPTURE_H_
#define TEMVAR_TESTS_SUPPORT_OUTPUT_CAPTURE_H_

#include <gtest/gtest.h>

#include <string>

namespace temvar_test {

struct Output {
  std::string out;
  std::string err;
};

// Runs `call` and gives what came out. Both streams are taken at their descriptors, so that it
// doesn't matter whether the library uses printf or the iostreams.
template <typename Call>
Output OutputOf(Call call) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call();
  Output output;
  output.out = testing::internal::GetCapturedStdout();
  output.err = testing::internal::GetCapturedStderr();
  return output;
}

}  // namespace temvar_test

#endif  // TEMVAR_TESTS_SUPPORT_OUTPUT_CAPTURE_H_
