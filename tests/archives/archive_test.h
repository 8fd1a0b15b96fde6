// What the tests of archives share.
#ifndef TESTS_ARCHIVES_ARCHIVE_TEST_H_
#define TESTS_ARCHIVES_ARCHIVE_TEST_H_

#include <gmock/gmock.h>
#include <temvar/handles.h>

#include <set>

#include "support/work_folder.h"
#include "support/zip_file.h"

namespace test {

// What a call prints on standard output and standard error, to the byte.
struct Output {
  std::string out;
  std::string err;
};

template <typename Call>
Output OutputOf(Call call) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call();
  return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

// An archive "a.zip" in the work folder, and the destination "out" beside it.
class ArchiveTest : public WorkFolderTest {
 protected:
  void PutArchive(const std::vector<ZipEntry>& entries, const ZipFrame& frame = {}) const {
    PutFile("a.zip", ZipBytes(entries, frame));
  }

  std::string Archive() const { return Path("a.zip"); }
  std::string Destination() const { return Path(out_); }
  // The full name of an entry, as the lines print it.
  std::string Full(const std::string& entry) const { return Destination() + '\\' + entry; }

  // The lines about an entry.
  std::string Extracts(const std::string& entry) const {
    return " extracting: " + Full(entry) + "\n";
  }
  std::string Refuses(const std::string& entry) const {
    return "error opening " + Full(entry) + "\n";
  }
  std::string MakesFolder(const std::string& entry) const {
    return "creating directory: " + Full(entry) + "\n";
  }

  // What unpacking the archive prints. Its result must be `expected`.
  Output Extract(bool expected = true) const { return ExtractTo(Destination(), expected); }
  Output ExtractTo(const std::string& destination, bool expected = true) const {
    bool result = !expected;
    const Output output = OutputOf([&] {
      result = TmvUtilityUnzip()->ExtractArchive(Archive().c_str(), destination.c_str());
    });
    EXPECT_EQ(result, expected) << output.out;
    return output;
  }

  // Goes on with a destination that doesn't exist yet: "out2", "out3"...
  void TakeFreshDestination() { out_ = "out" + std::to_string(++destinations_); }
  // Name of a file in the destination, for the fixture's own operations.
  std::string Out(const std::string& name) const { return out_ + "/" + name; }

  // Every file and directory (with a slash after it) below `folder`, by its name from there on.
  std::set<std::string> Tree(std::string_view folder) const {
    // Listed at a short path: mingw's runtime lists nothing beyond 260 characters.
    const std::filesystem::path place = FilePath(folder);
    std::filesystem::path top = Folder();
    while (top.has_relative_path() && top.native().size() > 100) top = top.parent_path();
    top += "-listed";
    std::error_code missing;
    std::filesystem::rename(place, top, missing);
    std::set<std::string> names;
    if (missing) return names;
    std::error_code error;
    for (const auto& item : std::filesystem::recursive_directory_iterator(top, error)) {
      std::u8string name = item.path().lexically_relative(top).generic_u8string();
      if (item.is_directory()) name += u8'/';
      names.insert(std::string(name.begin(), name.end()));
    }
    std::filesystem::rename(top, place);
    return names;
  }

 private:
  std::string out_ = "out";
  int destinations_ = 1;
};

inline std::string ErrorLine(int code, const std::string& where) {
  return "error " + std::to_string(code) + " with zipfile in " + where + "\n";
}

// Bytes that don't pack well and differ from seed to seed.
inline std::string NoisyBytes(size_t size, uint32_t seed = 1) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) {
    seed = seed * 1664525u + 1013904223u;
    byte = static_cast<char>(seed >> 24);
  }
  return bytes;
}

}  // namespace test

#endif  // TESTS_ARCHIVES_ARCHIVE_TEST_H_
