#include <algorithm>

#include "utilities/string/utility_string_impl.h"

namespace temvar {

namespace {

// Reads bytes in order and overwrites what breaks the shape of UTF-8. Only the shape counts:
// overlong forms, surrogates and values beyond U+10FFFF pass. The buffer keeps its size, so one
// character may become several replacements.
class Utf8Repair {
 public:
  Utf8Repair(uint8_t* buffer, uint8_t replacement) : at_(buffer), replacement_(replacement) {}

  void ReadByte() {
    const uint8_t byte = *at_;
    if (byte >= 0xF8) {
      Expect(0);
      *at_ = replacement_;
    } else if (byte >= 0xF0) {
      Expect(3);
    } else if (byte >= 0xE0) {
      Expect(2);
    } else if (byte >= 0xC0) {
      Expect(1);
    } else if (byte < 0x80) {
      // Text and control codes end a sequence, too; NUL is replaced like any other control code.
      Expect(0);
      if (!IsText(byte)) *at_ = replacement_;
    } else if (pending_ == 0) {
      *at_ = replacement_;
    } else {
      --pending_;
    }
    ++at_;
  }

  // Overwrites the sequence that is still open: its lead byte and the continuations seen so far.
  void Abandon() {
    if (pending_ == 0) return;
    const uint32_t seen = expected_ - pending_ + 1;
    std::fill(at_ - seen, at_, replacement_);
  }

 private:
  static bool IsText(uint8_t byte) {
    return (byte >= 0x20 && byte <= 0x7E) || byte == '\t' || byte == '\n' || byte == '\r';
  }

  void Expect(uint32_t continuations) {
    Abandon();
    expected_ = pending_ = continuations;
  }

  uint8_t* at_;
  const uint8_t replacement_;
  uint32_t expected_ = 0;  // Continuation bytes that the current lead byte announced.
  uint32_t pending_ = 0;   // How many of them are still missing.
};

}  // namespace

bool TMVUtilityStringImpl::SanitizeUtf8(uint8_t* buffer, uint32_t size, uint8_t replacement) {
  if (buffer == nullptr) return false;
  Utf8Repair repair(buffer, replacement);
  for (uint32_t i = 0; i < size; ++i) repair.ReadByte();
  // A sequence that the end of the buffer cuts off.
  repair.Abandon();
  return true;
}

}  // namespace temvar
