// A folder in memory with one archive in it, whose file stays from input to input: making and
// removing files costs more than reading them.
#ifndef FUZZ_MEMORY_FOLDER_H_
#define FUZZ_MEMORY_FOLDER_H_

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace fuzz {

inline void Require(bool condition) {
  if (!condition) std::abort();
}

inline int OpenFolder(int base, const char* path) {
  return openat(base, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Calls visit(name, whether it is a folder) for what is in a folder, from its start.
template <typename Visit>
void List(int folder, Visit visit) {
  alignas(dirent64) static char block[32768];
  lseek(folder, 0, SEEK_SET);
  ssize_t size = 0;
  while ((size = getdents64(folder, block, sizeof(block))) > 0) {
    for (ssize_t at = 0; at < size;) {
      const auto* entry = reinterpret_cast<const dirent64*>(block + at);
      at += entry->d_reclen;
      const std::string name = entry->d_name;
      if (name != "." && name != "..") visit(name, entry->d_type == DT_DIR);
    }
  }
}

inline size_t Count(int folder) {
  size_t count = 0;
  List(folder, [&](const std::string&, bool) { ++count; });
  return count;
}

// Removes a folder with all that is in it, of any depth, with one handle.
inline void RemoveTree(int base, const char* path) {
  int folder = OpenFolder(base, path);
  if (folder < 0) return;
  std::vector<std::vector<std::string>> inner;  // On each level the folders that are left.
  const auto enter = [&](int next) {
    close(std::exchange(folder, next));
    Require(folder >= 0);
  };
  const auto empty = [&] {
    auto& level = inner.emplace_back();
    List(folder, [&](const std::string& name, bool isFolder) {
      if (isFolder) level.push_back(name);
      if (!isFolder) unlinkat(folder, name.c_str(), 0);
    });
  };
  for (empty(); !inner.empty();) {
    if (!inner.back().empty()) {
      enter(OpenFolder(folder, inner.back().back().c_str()));
      empty();
    } else {
      inner.pop_back();
      if (inner.empty()) break;
      enter(OpenFolder(folder, ".."));
      unlinkat(folder, inner.back().back().c_str(), AT_REMOVEDIR);
      inner.back().pop_back();
    }
  }
  close(folder);
  unlinkat(base, path, AT_REMOVEDIR);
}

class MemoryFolder {
 public:
  MemoryFolder() {
    file_ = open(Archive().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    Require(file_ >= 0);
    for (const int folder : folders_) Require(folder >= 0);
  }
  ~MemoryFolder() { std::filesystem::remove_all(top_); }

  std::string Archive() const { return home_ / "in.zip"; }
  std::string Destination() const { return home_ / "out"; }

  void PutArchive(const uint8_t* data, size_t size) const {
    Require(ftruncate(file_, 0) == 0 && pwrite(file_, data, size, 0) == static_cast<ssize_t>(size));
  }

  // Aborts if there is more than the archive and the destination, or if the archive has changed.
  void CheckAndClear(const uint8_t* data, size_t size) const {
    RemoveTree(folders_[2], "out");
    for (const int folder : folders_) Require(Count(folder) == 1);
    std::string now(size + 1, '\0');
    Require(pread(file_, now.data(), size + 1, 0) == static_cast<ssize_t>(size));
    Require(std::equal(data, data + size, reinterpret_cast<const uint8_t*>(now.data())));
  }

 private:
  static std::filesystem::path MakeTop() {
    const char* const memory = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    std::string top = std::string(memory) + "/temvar-fuzz-XXXXXX";
    Require(mkdtemp(top.data()) != nullptr);
    std::filesystem::create_directories(top + "/a/b");
    return top;
  }

  // The folders above the destination are there for names that climb.
  const std::filesystem::path top_ = MakeTop();
  const std::filesystem::path home_ = top_ / "a/b";
  const int folders_[3] = {OpenFolder(AT_FDCWD, top_.c_str()),
                           OpenFolder(AT_FDCWD, home_.parent_path().c_str()),
                           OpenFolder(AT_FDCWD, home_.c_str())};
  int file_;
};

}  // namespace fuzz

#endif  // FUZZ_MEMORY_FOLDER_H_
