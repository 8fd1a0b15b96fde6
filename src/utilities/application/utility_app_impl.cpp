#include <cmath>
#include <limits>

#include "platform/win32.h"
#include "utilities/application/utility_app_impl.h"
#include "utilities/string/text.h"

namespace temvar {

namespace {

constinit TMVUtilityAppImpl instance;

// 64-bit arithmetic that wraps around, as the machine does it: the host's figures are not checked.
int64_t WrappingProduct(int64_t left, int64_t right) {
  return static_cast<int64_t>(static_cast<uint64_t>(left) * static_cast<uint64_t>(right));
}

int64_t WrappingSum(int64_t left, int64_t right) {
  return static_cast<int64_t>(static_cast<uint64_t>(left) + static_cast<uint64_t>(right));
}

// `left` / `right` as a double: exact where it is a whole number.
double Quotient(int64_t left, int64_t right) {
  // The one quotient that doesn't fit is left to the doubles, as is everything that isn't whole.
  const bool overflows = left == std::numeric_limits<int64_t>::min() && right == -1;
  if (!overflows && left % right == 0) return static_cast<double>(left / right);
  return static_cast<double>(left) / static_cast<double>(right);
}

int32_t NearestInt32(double value) {
  using Limits = std::numeric_limits<int32_t>;
  if (value <= Limits::min()) return Limits::min();
  if (value >= Limits::max()) return Limits::max();
  return static_cast<int32_t>(value);
}

}  // namespace

void TMVUtilityAppImpl::ExploreFolder(const char* path) {
  ShellExecuteW(nullptr, TMV_WIDE("explore"), ToWide(path).get(), nullptr, nullptr, SW_SHOWNORMAL);
}

void TMVUtilityAppImpl::OpenWithShell(const char* target) {
  // The ANSI function with the host's bytes as they come, unlike the operation above. Documented: a
  // target in UTF-8 arrives as other text unless it is ASCII.
  ShellExecuteA(nullptr, "open", target, nullptr, nullptr, SW_SHOWNORMAL);
}

int32_t TMVUtilityAppImpl::ProgressPerMille(int64_t done, int64_t stepSize, int32_t stepIndex,
                                            int32_t stepCount) {
  if (stepSize == 0 || stepCount == 0) return 0;
  const int64_t finished = WrappingSum(WrappingProduct(stepIndex, stepSize), done);
  const int64_t whole = WrappingProduct(stepCount, stepSize);
  if (whole == 0) return 0;  // The product wrapped around.
  // Not clamped to 1000: a step that does more than it announced shows more than the whole.
  return NearestInt32(std::floor(Quotient(finished, whole) * 1000.0));
}

}  // namespace temvar

TMVUtilityApp* TmvUtilityApp() { return &temvar::instance; }
