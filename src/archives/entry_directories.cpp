#include "archives/entry_directories.h"

#include <cerrno>
#include <cstdio>

#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

bool IsSeparator(char character) { return character == '/' || character == '\\'; }

}  // namespace

int MakeDirectory(const std::string& path) { return MakeFolders(ToWide(path.c_str())); }

void MakeParents(std::string path) {
  if (path.empty()) return;
  if (IsSeparator(path.back())) path.pop_back();
  if (MakeDirectory(path) == 0) return;
  for (size_t end = 1; end <= path.size(); ++end) {
    if (end < path.size() && !IsSeparator(path[end])) continue;
    const std::string prefix = path.substr(0, end);
    if (MakeDirectory(prefix) == -1 && errno == ENOENT) {
      std::printf("couldn't create directory %s\n", prefix.c_str());
      return;
    }
  }
}

}  // namespace temvar
