#ifndef TEMVAR_UTILITIES_APPLICATION_IDENTIFIER_STATE_H_
#define TEMVAR_UTILITIES_APPLICATION_IDENTIFIER_STATE_H_

#include <atomic>
#include <cstdint>
#include <mutex>

namespace temvar {

// What the identifier operations of the application utilities count with.
struct IdentifierState {
  std::mutex mutex;
  int32_t counter = 0;  // Guarded by mutex.

  std::atomic<int32_t> serial{1};
};

// The state of this process.
IdentifierState& GetIdentifierState();

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_APPLICATION_IDENTIFIER_STATE_H_
