#ifndef TESTS_SUPPORT_SLOTS_H_
#define TESTS_SUPPORT_SLOTS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

// The slots of an interface's table of operations, which are the binary contract with hosts.
//
// A pointer to a virtual member function holds 1 + the byte offset of its slot in its first word.
// So says the Itanium C++ ABI, section 2.3, for x86, and both g++ and clang follow it, for Windows
// too.
namespace test {

inline constexpr size_t kNoSlot = static_cast<size_t>(-1);

template <typename Member>
size_t SlotOf(Member member) {
  static_assert(sizeof(Member) == 2 * sizeof(void*));
  uintptr_t words[2];
  std::memcpy(words, &member, sizeof words);
  return words[0] % 2 == 1 ? (words[0] - 1) / sizeof(void*) : kNoSlot;
}

// One more operation behind the last: its slot is the number of operations of the interface.
template <typename Interface>
class WithOneMore : public Interface {
 public:
  virtual void OneMore() = 0;

 protected:
  ~WithOneMore() = default;
};

template <typename Interface>
size_t CountSlots() {
  return SlotOf(&WithOneMore<Interface>::OneMore);
}

}  // namespace test

#endif  // TESTS_SUPPORT_SLOTS_H_
