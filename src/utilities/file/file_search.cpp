// Search for text in a file.
#include <array>
#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/file/utility_file_impl.h"

namespace temvar {
namespace {

unsigned char LowerCase(unsigned char byte) {
  return static_cast<unsigned char>(std::tolower(byte));
}

// Searches bytes for a text as they come, line by line and in lower case, and keeps nothing of them
// but how much of the text the line's end has matched so far (the search of Knuth, Morris and
// Pratt). So lines of any length need no memory.
class LineSearch {
 public:
  explicit LineSearch(const char* text) : text_(text), fallback_(text_.size(), 0) {
    for (char& c : text_) c = static_cast<char>(LowerCase(static_cast<unsigned char>(c)));
    for (size_t byte = 0; byte < lower_.size(); ++byte) {
      lower_[byte] = static_cast<char>(LowerCase(static_cast<unsigned char>(byte)));
    }
    for (size_t i = 1; i < text_.size(); ++i) fallback_[i] = Advance(fallback_[i - 1], text_[i]);
  }

  // Whether the text ends with one of these bytes, which follow those of the last call.
  bool Finds(const char* bytes, size_t count) {
    // An empty text is in every line, so a file with one byte has it and an empty file doesn't.
    if (text_.empty()) return count > 0;
    for (size_t i = 0; i < count; ++i) {
      // No match goes across the end of a line.
      if (bytes[i] == '\n') {
        matched_ = 0;
        continue;
      }
      matched_ = Advance(matched_, lower_[static_cast<unsigned char>(bytes[i])]);
      if (matched_ == text_.size()) return true;
    }
    return false;
  }

 private:
  // How much of the text is matched when `c` follows a match of `matched` bytes.
  size_t Advance(size_t matched, char c) const {
    while (matched > 0 && text_[matched] != c) matched = fallback_[matched - 1];
    return text_[matched] == c ? matched + 1 : 0;
  }

  std::string text_;
  std::vector<size_t> fallback_;  // For each prefix: its longest border.
  std::array<char, 256> lower_;
  size_t matched_ = 0;
};

}  // namespace

int32_t TMVUtilityFileImpl::FileContainsText(const char* path, const char* text) {
  // Denies nobody: a log that its writer holds open is searched all the same. Bytes are compared
  // with bytes, in whatever encoding the file has.
  const Stream stream(Opened(_wfsopen(SystemPath(path).get(), TMV_WIDE("rt"), _SH_DENYNO)));
  if (stream == nullptr) return -1;
  LineSearch search(text);
  char block[16 * 1024];
  while (const size_t count = std::fread(block, 1, sizeof(block), stream.get())) {
    if (search.Finds(block, count)) return 1;
  }
  return std::ferror(stream.get()) != 0 ? -1 : 0;
}

}  // namespace temvar
