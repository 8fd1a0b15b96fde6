#include <cstdlib>
#include <limits>
#include <mutex>
#include <string>

#include "temvar/utility_sys.h"
#include "utilities/application/identifier_state.h"
#include "utilities/application/utility_app_impl.h"
#include "utilities/string/text.h"

namespace temvar {

namespace {

// Room for the ten digits of any counter value after the time.
constexpr int64_t kCounterFactor = 10'000'000'000;

// Day, hour, minute and second of the local time as one decimal number.
int64_t TimePart() {
  char text[16] = {};
  TmvUtilitySys()->FormatCurrentTime(text, sizeof(text), "%d%H%M%S");
  return std::atoll(text);
}

}  // namespace

// Unique within the process only, as long as the counter doesn't come round within a second: the
// time has neither month nor year, and so repeats each month.
int64_t TMVUtilityAppImpl::NewUniqueId() {
  IdentifierState& state = GetIdentifierState();
  // The time is taken under the mutex too, so that numbers never go down within a second.
  const std::lock_guard lock(state.mutex);
  // Back to 0 one step early: the counter runs from 1 to 2,147,483,646 and then from 0. The largest
  // identifier, for the 31st at 23:59:59, is far below the range of int64_t.
  state.counter = state.counter == std::numeric_limits<int32_t>::max() - 1 ? 0 : state.counter + 1;
  return TimePart() * kCounterFactor + state.counter;
}

char* TMVUtilityAppImpl::NewPrefixedId(const char* prefix) {
  std::string text = TmvUtilityString()->SafeString(prefix);
  text += '-';
  text += std::to_string(NewUniqueId());
  return NewNarrowText(text);
}

int64_t TMVUtilityAppImpl::NextSerial() {
  // Atomic addition wraps around; the sum of the old value has to be made to.
  // By two from 1, so that all serials are odd and the first is 3: 1 is the initial value, never a
  // result.
  const auto before = static_cast<uint32_t>(GetIdentifierState().serial.fetch_add(2));
  return static_cast<int32_t>(before + 2);
}

}  // namespace temvar
