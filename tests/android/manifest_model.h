// A second decoder of compiled manifests, slow and plain, for comparison: it copies the document
// into a table of bytes that knows every offset, and works on lines instead of one text.
#ifndef TEMVAR_TESTS_ANDROID_MANIFEST_MODEL_H_
#define TEMVAR_TESTS_ANDROID_MANIFEST_MODEL_H_

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace temvar_test {

class ManifestModel {
 public:
  explicit ManifestModel(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

  std::string Text() const {
    std::string text;
    int depth = 0;
    for (long long at = Begin(); at < Size();) {
      const std::string name = String(Int(at + 20));
      if (Int(at) == 0x00100102) {
        std::string line = "<" + name;
        const long long attributes = Int(at + 28);
        at += 36;
        for (long long left = attributes; left > 0 && at < Size(); --left, at += 20) {
          line.append(" ").append(String(Int(at + 4))).append("=\"").append(Value(at)).append("\"");
        }
        text += Indented(depth++, line + ">");
      } else if (Int(at) == 0x00100103) {
        depth = depth == 0 ? 0 : depth - 1;
        text += Indented(depth, "</" + name + ">");
        at += 24;
      } else {
        if (Int(at) != 0x00100101) text += Unrecognized(Int(at), at);
        break;
      }
    }
    return text;
  }

 private:
  long long Size() const { return static_cast<long long>(bytes_.size()); }
  int Byte(long long at) const { return bytes_.at(static_cast<size_t>(at)); }

  int32_t Int(long long at) const {
    if (at < 0 || at + 3 >= Size()) return 0;
    const long long value =
        Byte(at) + 256LL * Byte(at + 1) + 65536LL * Byte(at + 2) + 16777216LL * Byte(at + 3);
    return static_cast<int32_t>(value >= 2147483648LL ? value - 4294967296LL : value);
  }

  long long Begin() const {
    const long long begin = Int(12);
    const long long in_buffer = begin < 0 ? (begin % 4 + 4) % 4 : begin;
    for (long long at = in_buffer; at < Size() - 4; at += 4) {
      if (Int(at) == 0x00100102) return at;
    }
    return begin;
  }

  std::string String(int32_t index) const {
    const long long entry = 36 + 4LL * index;
    if (index < 0 || entry > 2147483647LL) return "";
    const long long start = 36 + 4LL * Int(16) + Int(entry);
    if (start < 0 || Size() < start + 2) return "";
    std::string result;
    const int units = Byte(start) + 256 * Byte(start + 1);
    for (int i = 0; i < units && start + 2 + 2 * i + 1 < Size(); ++i) {
      const int low = Byte(start + 2 + 2 * i);
      if (low == 0) break;
      result += static_cast<char>(low);
    }
    return result;
  }

  std::string Value(long long attribute) const {
    if (Int(attribute + 8) != -1) return String(Int(attribute + 8));
    char text[40];
    std::snprintf(text, sizeof text, "resourceID 0x%" PRIx32,
                  static_cast<uint32_t>(Int(attribute + 16)));
    return text;
  }

  static std::string Indented(int depth, const std::string& line) {
    return std::string(depth < 23 ? static_cast<size_t>(2 * depth) : 45, ' ') + line + "\n";
  }

  static std::string Unrecognized(int32_t code, long long at) {
    char text[100];
    std::snprintf(text, sizeof text, "  Unrecognized tag code '%" PRIx32 "' at offset %" PRId64,
                  static_cast<uint32_t>(code), static_cast<int64_t>(at));
    return text;
  }

  const std::vector<uint8_t> bytes_;
};

}  // namespace temvar_test

#endif  // TEMVAR_TESTS_ANDROID_MANIFEST_MODEL_H_
