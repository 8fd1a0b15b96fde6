// A fresh folder for each test that touches files, in three kinds of place: a plain one, one with
// Greek, CJK and an emoji in its name, and one whose path is longer than 260 characters.
//
//   using SettingsFileTest = test::WorkFolderTest;
//   TEMVAR_IN_EVERY_PLACE(SettingsFileTest);
//
//   TEST_P(SettingsFileTest, KeepsWhatItWasGiven) {
//     PutFile("old.json", "{}");                        // Makes a file; parents must exist.
//     store->Load(Path("old.json").c_str());            // UTF-8 path of a name in the folder.
//     EXPECT_EQ(GetFile("old.json"), "{}");
//   }
//
// The folder goes with everything in it when the test ends. What can't be removed fails the test:
// on Windows that is a file somebody forgot to close. A test that needs one kind of place only
// says TEMVAR_IN_A_PLAIN_PLACE instead, or makes a WorkFolder of its own.
#ifndef TESTS_SUPPORT_WORK_FOLDER_H_
#define TESTS_SUPPORT_WORK_FOLDER_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

namespace test {

enum class FolderKind { kPlain, kInternational, kLong };

// Between file-system paths and the UTF-8 text that the library takes.
inline std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

inline std::filesystem::path FromUtf8(std::string_view text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

class WorkFolder {
 public:
  explicit WorkFolder(FolderKind kind = FolderKind::kPlain) : top_(NewTopName()), folder_(top_) {
    if (kind == FolderKind::kInternational) folder_ /= u8"Ελληνικά 漢字かな 😀";
    while (kind == FolderKind::kLong && folder_.u16string().size() <= 280) {
      folder_ /= "one of the folders of a long path";
    }
    std::filesystem::create_directories(folder_);
  }

  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  ~WorkFolder() {
    std::error_code error;
    RemoveTree(top_, error);
    EXPECT_FALSE(error) << "can't remove " << Utf8(top_) << ": " << error.message();
  }

  const std::filesystem::path& path() const { return folder_; }

 private:
  static std::filesystem::path NewTopName() {
    std::random_device random;
    std::ostringstream name;
    name << "temvar-test-" << std::hex << random() << random();
    return std::filesystem::temp_directory_path() / name.str();
  }

  // Folders are moved to the top before they are emptied: the runtime of mingw (seen in 10.0) lists
  // no folder whose path is longer than 260 characters, remove_all() included.
  void RemoveTree(const std::filesystem::path& tree, std::error_code& error) {
    for (const auto& entry : std::filesystem::directory_iterator(tree, error)) {
      if (error) return;
      if (!std::filesystem::is_directory(entry.symlink_status(error))) {
        std::filesystem::remove(entry.path(), error);
        continue;
      }
      const std::filesystem::path moved = top_.string() + "-" + std::to_string(++moved_);
      std::filesystem::rename(entry.path(), moved, error);
      if (!error) RemoveTree(moved, error);
    }
    if (!error) std::filesystem::remove(tree, error);
  }

  const std::filesystem::path top_;
  std::filesystem::path folder_;
  int moved_ = 0;
};

// The fixture. Everything takes names below the folder in UTF-8, with `/` between them.
class WorkFolderTest : public testing::TestWithParam<FolderKind> {
 protected:
  const std::filesystem::path& Folder() const { return folder_.path(); }

  std::filesystem::path FilePath(std::string_view name) const {
    if (name.empty()) return Folder();
    return (Folder() / FromUtf8(name)).make_preferred();
  }

  // The UTF-8 path of `name`, with the separators of the system; of the folder if it is empty.
  std::string Path(std::string_view name = {}) const { return Utf8(FilePath(name)); }

  void PutFile(std::string_view name, std::string_view bytes) const {
    std::ofstream stream(FilePath(name), std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    ASSERT_TRUE(stream) << "can't write " << name;
  }

  std::string GetFile(std::string_view name) const {
    std::ifstream stream(FilePath(name), std::ios::binary);
    EXPECT_TRUE(stream) << "can't read " << name;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
  }

  void MakeFolder(std::string_view name) const {
    std::filesystem::create_directories(FilePath(name));
  }

  // Whether the folder's path is longer than the shell's functions of this system take: copying and
  // deleting trees and making directories with their parents fail there.
  bool IsBeyondTheShell() const {
    constexpr bool kWindows = std::filesystem::path::preferred_separator == '\\';
    return kWindows && GetParam() == FolderKind::kLong;
  }

  bool Exists(std::string_view name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(FilePath(name)));
  }

 private:
  const WorkFolder folder_{GetParam()};
};

inline std::string NameOfFolderKind(const testing::TestParamInfo<FolderKind>& info) {
  switch (info.param) {
    case FolderKind::kPlain:
      return "Plain";
    case FolderKind::kInternational:
      return "International";
    default:
      return "Long";
  }
}

}  // namespace test

// Runs each TEST_P of `suite`, a class that derives from WorkFolderTest, in every kind of place.
#define TEMVAR_IN_EVERY_PLACE(suite)                                              \
  INSTANTIATE_TEST_SUITE_P(                                                       \
      InEveryPlace, suite,                                                        \
      testing::Values(test::FolderKind::kPlain, test::FolderKind::kInternational, \
                      test::FolderKind::kLong),                                   \
      test::NameOfFolderKind)

// Runs each TEST_P of `suite` in a plain place alone, where the place can make no difference.
#define TEMVAR_IN_A_PLAIN_PLACE(suite)                                                      \
  INSTANTIATE_TEST_SUITE_P(InAPlainPlace, suite, testing::Values(test::FolderKind::kPlain), \
                           test::NameOfFolderKind)

#endif  // TESTS_SUPPORT_WORK_FOLDER_H_
