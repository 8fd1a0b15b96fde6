// Memory that runs out in operations on files and archives.
#include <unzip.h>

#include <filesystem>
#include <map>
#include <string>

#include "faults/out_of_memory.h"
#include "support/work_folder.h"
#include "support/zip_file.h"

namespace {

using namespace test;

bool IsClosed(std::FILE* stream) { return stream != nullptr && std::fclose(stream) == 0; }

uint32_t Size(const std::string& text) { return static_cast<uint32_t>(text.size()); }

class FilesOutOfMemory : public WorkFolderTest {
 protected:
  // A file, and a folder with two files of names of equal length.
  void MakeTree() const {
    for (const char* made : {"copy", "copy.zip", "fresh"}) {
      std::filesystem::remove_all(FilePath(made));
    }
    MakeFolder("tree/inner");
    PutFile("file", kLongText);
    PutFile("tree/inner/a.txt", std::string(300, 'a'));
    PutFile("tree/inner/b.txt", kLongText);
  }

  // All files with their contents, those of the archives without their times.
  std::string State() const {
    std::map<std::string, std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder())) {
      const std::string name = Utf8(entry.path().lexically_relative(Folder()));
      std::string& text = found[name] = entry.is_directory() ? "folder" : GetFile(name);
      if (!name.ends_with(".zip")) continue;
      const std::string archive = std::exchange(text, "");
      for (const ZipEntry& packed : ReadZip(archive)) text += packed.name + packed.data;
    }
    std::string state;
    for (const auto& [name, text] : found) state += name + ": " + text + "\n";
    return state;
  }

  const std::string filePath_ = Path("file");
  const std::string treePath_ = Path("tree");
  const std::string copyPath_ = Path("copy");
  const char* const file = filePath_.c_str();
  const char* const tree = treePath_.c_str();
  const char* const copy = copyPath_.c_str();
  BinaryDataResult bytes = {};
  OutOfMemory memory{[this] { MakeTree(); }, [this] { return State(); }};
};
TEMVAR_IN_A_PLAIN_PLACE(FilesOutOfMemory);

TEST_P(FilesOutOfMemory, Files) {
  TMVUtilityFile& files = *TmvUtilityFile();
  const std::string fresh = Path("fresh/inner");
  const std::string inner = Path("tree/inner/a.txt");
  uint64_t space = 0;
  PathParts parts = {};

  TRY(files.DeleteDirectoryTree(tree), kFalse | kKeepsPart);
  TRY(files.CopyDirectoryTree(tree, copy), kFalse | kKeepsPart);
  TRY(files.CreateDirectoryPath(fresh.c_str()), kFalse | kKeepsPart);
  TRY(files.DirectorySize(tree, 0));
  TRY(files.CopyFileTo(file, copy), kFalse);
  TRY(files.MoveFileTo(file, copy), kFalse);
  TRY(files.RemoveFile(file), kFalse);
  TRY(files.FormatSize(1536));
  TRY(files.MakeUniquePath(inner.c_str()));
  TRY(files.PathExists(file), kFalse);
  TRY(files.FileSize(file), kFalse);
  TRY(files.SetFileTimestamp(file, "2024-01-31 17:05:09"), kFalse);
  DO(parts = files.SplitPath("a/folder/name.ext"); files.FreePathParts(&parts));
  TRY(files.ExtensionInList("a.an-extension-of-some-length", ";.zip;"));
  TRY(IsClosed(files.OpenFile(file, "rb")), kFalse);
  TRY(Result(files.ReadWholeFile(&bytes, file), bytes), kFalse);
  TRY(files.WriteWholeFile(kLongText, 9, copy), kFalse | kKeepsPart);
  TRY(files.FileContainsText(file, "LONG FOR the room that"), kFalse);
  TRY(files.CreateFileOfSize(copy, 9), kFalse | kKeepsPart);
  TRY(files.GetFreeDiskSpace(&space, "C:\\"), kFalse);
  TRY(files.IsDirectory(tree), kFalse);
}

TEST_P(FilesOutOfMemory, Archives) {
  TMVUtilityUnzip& unzip = *TmvUtilityUnzip();
  TMVUtilityZip* const zip = CreateTmvUtilityZip();
  const std::string archivePath = Path("tree.zip");
  const char* const archive = archivePath.c_str();
  const std::string target = Path("copy.zip");
  MakeTree();
  zip->AddDirectory(tree, nullptr);
  ASSERT_TRUE(zip->WriteArchive(archive, nullptr));
  const std::string data(5000, 'x');
  const std::string gzip = Deflated(data, 31);
  const std::string zlib = Deflated(data, 15);
  std::string room(5000, '\0');
  uint32_t size = 5000;
  // What minizip 1.1 doesn't survive, and what the library sees to before it: the records of an
  // archive, and of an entry in its directory, and the state and the four tables of zlib (1.2.13).
  isSpared = [](size_t block) {
    return (block >= 200 && block <= 500) || block == 46 + 11 + 32 ||
           (block >= 5000 && block <= 8000) || block == 65536;
  };
  DO(zip->AddDirectory(tree, nullptr));
  DO(zip->AddFile(file, "inner/c.txt"));
  TRY(zip->WriteArchive(target.c_str(), ";.tmp;"), kFalse);
  TRY(Result(zip->DeflateBuffer(&bytes, data.data(), 5000, 9), bytes), kFalse);
  TRY(unzip.ExtractArchive(archive, copy), kFalse | kKeepsPart);
  TRY(Result(unzip.ExtractEntry(&bytes, archive, "inner/a.txt"), bytes), kFalse);
  TRY(unzClose(unzip.OpenArchive(archive)) == UNZ_OK, kFalse);
  TRY(unzip.GunzipBuffer(gzip.data(), Size(gzip), room.data(), &(size = 5000)), kFalse);
  TRY(Result(unzip.InflateBuffer(&bytes, zlib.data(), Size(zlib)), bytes), kFalse);
  DO(bytes.Owner = nullptr; FreeBinayDataResult(&bytes), kNever);
  DO(DestroyTmvUtilityZip(CreateTmvUtilityZip()));
  EXPECT_EQ(room, data);
  DestroyTmvUtilityZip(zip);
}

}  // namespace
