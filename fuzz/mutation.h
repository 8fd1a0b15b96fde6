// What the mutators share: a choice by number, and libFuzzer's own mutation of a piece of the
// input.
#ifndef FUZZ_MUTATION_H_
#define FUZZ_MUTATION_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace fuzz {

class Choice {
 public:
  explicit Choice(unsigned seed) : engine_(seed) {}

  // A number below `count`, which is not 0.
  size_t Below(size_t count) { return engine_() % count; }
  bool OneIn(size_t count) { return Below(count) == 0; }

  template <typename List>
  auto& Of(List& list) {
    return list[Below(std::size(list))];
  }

 private:
  std::minstd_rand engine_;
};

// Mutates `bytes` in libFuzzer's way, into at most `most` bytes.
inline void MutateBytes(std::string& bytes, size_t most) {
  const size_t size = std::min(bytes.size(), most);
  bytes.resize(most);
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t*>(bytes.data()), size, most));
}

// Little-endian numbers at a place; a place beyond the end reads as 0.
inline uint64_t NumberAt(const std::string& bytes, size_t place, size_t size) {
  uint64_t number = 0;
  for (size_t i = size; i-- > 0;) {
    number = number << 8 | (place + i < bytes.size() ? static_cast<uint8_t>(bytes[place + i]) : 0);
  }
  return number;
}

inline void SetNumber(std::string& bytes, size_t place, size_t size, uint64_t number) {
  for (size_t i = 0; i < size && place + i < bytes.size(); ++i, number >>= 8) {
    bytes[place + i] = static_cast<char>(number);
  }
}

inline std::string Number(uint64_t number, size_t size) {
  std::string bytes(size, '\0');
  SetNumber(bytes, 0, size, number);
  return bytes;
}

// What a mutator returns: `bytes` as the new input if they fit.
inline size_t Result(const std::string& bytes, uint8_t* data, size_t size, size_t most) {
  if (bytes.empty() || bytes.size() > most) return LLVMFuzzerMutate(data, size, most);
  std::memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}

}  // namespace fuzz

#endif  // FUZZ_MUTATION_H_
