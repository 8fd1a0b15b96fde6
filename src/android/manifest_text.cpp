#include "android/manifest_text.h"

#include <algorithm>
#include <charconv>

namespace temvar {
namespace {

// Records and attributes are rows of 32-bit words: their sizes, and the offsets of the fields that
// are read.
constexpr int64_t kStartTagSize = 36;
constexpr int64_t kEndTagSize = 24;
constexpr int64_t kAttributeSize = 20;
constexpr int64_t kTagName = 20;
constexpr int64_t kTagAttributeCount = 28;
constexpr int64_t kAttributeName = 4;
constexpr int64_t kAttributeString = 8;
constexpr int64_t kAttributeTyped = 16;
constexpr int32_t kNoString = -1;

constexpr size_t kIndentStep = 2;
constexpr size_t kMaxIndent = 45;  // odd, and so no multiple of the step: as documented

template <typename Number>
void AppendNumber(Number value, int base, std::string& out) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof(digits), value, base);
  out.append(digits, result.ptr);
}

class Printer {
 public:
  Printer(const BinaryXml& document, std::string& out)
      : document_(document), out_(out), limit_(out.size() + MaxManifestText(document.length())) {}

  // Prints the records from `offset` on.
  void PrintAll(int64_t offset) {
    while (offset < document_.length() && out_.size() < limit_) {
      const auto code = static_cast<uint32_t>(document_.Word(offset));
      if (code == kStartTag) {
        offset = PrintStartTag(offset);
      } else if (code == kEndTag) {
        offset = PrintEndTag(offset);
      } else {
        // Reading ends without a message at the first end of a namespace.
        if (code != kEndNamespace) PrintUnrecognized(code, offset);
        return;
      }
    }
  }

 private:
  // Both return the offset after the record.
  int64_t PrintStartTag(int64_t offset) {
    Indent();
    out_ += '<';
    document_.AppendString(document_.Word(offset + kTagName), out_);
    const int64_t count = document_.Word(offset + kTagAttributeCount);
    offset += kStartTagSize;
    for (int64_t i = 0; i < count && offset < document_.length() && out_.size() < limit_; ++i) {
      PrintAttribute(offset);
      offset += kAttributeSize;
    }
    out_ += ">\n";
    ++depth_;
    return offset;
  }

  int64_t PrintEndTag(int64_t offset) {
    // An end tag without an open element stays at the left margin.
    depth_ -= depth_ > 0 ? 1 : 0;
    Indent();
    out_ += "</";
    document_.AppendString(document_.Word(offset + kTagName), out_);
    out_ += ">\n";
    return offset + kEndTagSize;
  }

  void PrintAttribute(int64_t offset) {
    out_ += ' ';
    document_.AppendString(document_.Word(offset + kAttributeName), out_);
    out_ += "=\"";
    const int32_t string = document_.Word(offset + kAttributeString);
    if (string != kNoString) {
      document_.AppendString(string, out_);
    } else {
      out_ += "resourceID 0x";
      AppendNumber(static_cast<uint32_t>(document_.Word(offset + kAttributeTyped)), 16, out_);
    }
    out_ += '"';
  }

  void PrintUnrecognized(uint32_t code, int64_t offset) {
    out_ += "  Unrecognized tag code '";
    AppendNumber(code, 16, out_);
    out_ += "' at offset ";
    AppendNumber(offset, 10, out_);
  }

  void Indent() { out_.append(std::min(depth_ * kIndentStep, kMaxIndent), ' '); }

  const BinaryXml& document_;
  std::string& out_;
  const size_t limit_;
  size_t depth_ = 0;
};

}  // namespace

void AppendManifestText(const BinaryXml& document, std::string& out) {
  Printer(document, out).PrintAll(document.FirstRecord());
}

}  // namespace temvar
