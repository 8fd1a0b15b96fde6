// Text inside the library: owners of the blocks that hosts get, short ways to make them, numbers.
#ifndef TEMVAR_UTILITIES_STRING_TEXT_H_
#define TEMVAR_UTILITIES_STRING_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string_view>

#include "temvar/types.h"
#include "temvar/utility_string.h"

namespace temvar {

// Releases a block of the C runtime's heap.
struct FreeBlock {
  void operator()(void* block) const noexcept { std::free(block); }
};

// Text blocks with an owner. release() hands the block to the caller of an operation.
using NarrowText = std::unique_ptr<char, FreeBlock>;
using WideText = std::unique_ptr<TmvWideChar, FreeBlock>;

// A new block of `count` zeroed units on the C runtime's heap. Throws std::bad_alloc.
template <typename Unit>
Unit* NewBlock(size_t count) {
  void* const block = std::calloc(count, sizeof(Unit));
  if (block == nullptr) throw std::bad_alloc();
  return static_cast<Unit*>(block);
}

// Units of the block for a formatted text of `length` units: (length * 2 + 2) bytes for narrow and
// wide text alike. Throws std::bad_alloc for more than the process can address.
template <typename Unit>
size_t FormatBlockUnits(int length) {
  // In 64 bits: the size for the longest text wraps around to 0 in 32.
  const uint64_t size = (static_cast<uint64_t>(length) * 2 + 2) / sizeof(Unit);
  if (size > std::numeric_limits<size_t>::max()) throw std::bad_alloc();
  return static_cast<size_t>(size);
}

// A new copy with a terminator. Throws std::bad_alloc.
template <typename Unit>
Unit* NewText(std::basic_string_view<Unit> text) {
  Unit* const block = NewBlock<Unit>(text.size() + 1);
  text.copy(block, text.size());
  return block;
}

inline char* NewNarrowText(std::string_view text) { return NewText(text); }

// TMVUtilityString's conversions, with an owner for the result.
inline WideText ToWide(const char* text) { return WideText(TmvUtilityString()->Utf8ToWide(text)); }
inline NarrowText ToUtf8(const TmvWideChar* text) {
  return NarrowText(TmvUtilityString()->WideToUtf8(text));
}

// atoi with a result for every text: blanks, a sign, decimal digits; 0 without digits. A number out
// of range returns the nearest one in range, as atoi of the Windows runtime does.
int32_t ParseInt32(const char* text);

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_STRING_TEXT_H_
