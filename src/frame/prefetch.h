// Fetching memory into the processor's caches before it is needed. A job of many tasks is larger
// than they are, and most of the time of an empty task would go into waiting for its memory.
#ifndef TEMVAR_FRAME_PREFETCH_H_
#define TEMVAR_FRAME_PREFETCH_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace temvar {

// No effect on memory that is gone.
inline void Prefetch(const void* begin, size_t size) {
  constexpr size_t kCacheLine = 64;
  const auto* const bytes = static_cast<const char*>(begin);
  for (size_t i = 0; i < size; i += kCacheLine) __builtin_prefetch(bytes + i);
  __builtin_prefetch(bytes + size - 1);
}

// An address to fetch, in 32 bits: its distance from the object that keeps the hint. Nothing
// follows it, so what was there may be gone, and any thread may set and use it.
class PrefetchHint {
 public:
  void Set(const void* keeper, const void* address) {
    const intptr_t distance =
        static_cast<intptr_t>(ToNumber(address) - ToNumber(keeper)) / kAlignment;
    const bool isKept = address != nullptr && distance == static_cast<int32_t>(distance);
    distance_.store(isKept ? static_cast<int32_t>(distance) : 0, std::memory_order_relaxed);
  }

  void Fetch(const void* keeper, size_t size) const {
    const intptr_t distance = distance_.load(std::memory_order_relaxed);
    if (distance == 0) return;
    const uintptr_t address = ToNumber(keeper) + static_cast<uintptr_t>(distance * kAlignment);
    Prefetch(reinterpret_cast<const void*>(address), size);
  }

 private:
  static constexpr intptr_t kAlignment = alignof(void*);  // The least of the library's objects.

  static uintptr_t ToNumber(const void* address) { return reinterpret_cast<uintptr_t>(address); }

  std::atomic<int32_t> distance_{0};
};

}  // namespace temvar

#endif  // TEMVAR_FRAME_PREFETCH_H_
