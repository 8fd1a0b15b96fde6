// The file surface that the library calls: the same answers, error codes included, from Windows and
// from what stands in for it elsewhere.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

#include "platform/win32.h"
#include "support/work_folder.h"
#include "utilities/system_path.h"

namespace {

using temvar::SystemPath;

// Wide text as UTF-8.
std::string Narrow(const TmvWideChar* text) { return temvar::ToUtf8(text).get(); }

class FilesTest : public temvar_test::WorkFolderTest {
 protected:
  SystemPath Wide(std::string_view name) const { return SystemPath(Path(name).c_str()); }

  HANDLE Open(std::string_view name, DWORD access, DWORD share, DWORD disposition) const {
    return CreateFileW(Wide(name).get(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
  }

  // Opens and closes; the error code, 0 for success.
  DWORD ErrorOfOpening(std::string_view name, DWORD access, DWORD share, DWORD disposition) const {
    const HANDLE file = Open(name, access, share, disposition);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return 0;
  }
};
TEMVAR_IN_EVERY_PLACE(FilesTest);

TEST_P(FilesTest, OpeningTellsWhyItFails) {
  PutFile("file", "x");
  MakeFolder("folder");
  constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
  EXPECT_EQ(ErrorOfOpening("file", GENERIC_READ, 1, OPEN_EXISTING), 0u);
  EXPECT_EQ(ErrorOfOpening("missing", GENERIC_READ, 1, OPEN_EXISTING), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(ErrorOfOpening("missing", GENERIC_WRITE, 0, TRUNCATE_EXISTING),
            DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(ErrorOfOpening("no folder/file", kBoth, 0, CREATE_ALWAYS), DWORD{ERROR_PATH_NOT_FOUND});
  EXPECT_EQ(ErrorOfOpening("file/file", GENERIC_READ, 1, OPEN_EXISTING),
            DWORD{ERROR_PATH_NOT_FOUND});
  EXPECT_EQ(ErrorOfOpening("folder", GENERIC_READ, 1, OPEN_EXISTING), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOfOpening("folder", kBoth, 0, CREATE_ALWAYS), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOfOpening("file", kBoth, 0, CREATE_NEW), DWORD{ERROR_FILE_EXISTS});
  EXPECT_EQ(ErrorOfOpening("file", kBoth, 0, 99), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(CreateFileW(TMV_WIDE(""), GENERIC_READ, 1, nullptr, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});
  EXPECT_EQ(GetFile("file"), "x");
}

TEST_P(FilesTest, DispositionsMakeAndEmptyFiles) {
  const struct {
    DWORD disposition;
    const char* before;  // Null for a file that isn't there.
    const char* after;
    DWORD last_error;
  } cases[] = {
      {CREATE_NEW, nullptr, "", 0},
      {CREATE_ALWAYS, nullptr, "", 0},
      {CREATE_ALWAYS, "old", "", ERROR_ALREADY_EXISTS},
      {OPEN_EXISTING, "old", "old", 0},
      {OPEN_ALWAYS, nullptr, "", 0},
      {OPEN_ALWAYS, "old", "old", ERROR_ALREADY_EXISTS},
      {TRUNCATE_EXISTING, "old", "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.disposition);
    std::filesystem::remove(FilePath("f"));
    if (c.before != nullptr) PutFile("f", c.before);
    SetLastError(99);
    const HANDLE file = Open("f", GENERIC_READ | GENERIC_WRITE, 0, c.disposition);
    const DWORD last_error = GetLastError();
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    if (c.disposition != OPEN_EXISTING && c.disposition != TRUNCATE_EXISTING) {
      EXPECT_EQ(last_error, c.last_error);
    }
    CloseHandle(file);
    EXPECT_EQ(GetFile("f"), c.after);
  }
}

TEST_P(FilesTest, AHandleWithoutSharingIsAlone) {
  PutFile("f", "kept");
  const HANDLE alone = Open("f", GENERIC_READ, 0, OPEN_EXISTING);
  ASSERT_NE(alone, INVALID_HANDLE_VALUE);
  constexpr DWORD kViolation = ERROR_SHARING_VIOLATION;
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING), kViolation);
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_WRITE, 0, CREATE_ALWAYS), kViolation);
  EXPECT_EQ(_wfopen(Wide("f").get(), TMV_WIDE("rb")), nullptr);
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(_wfopen(Wide("f").get(), TMV_WIDE("wb")), nullptr);
  CloseHandle(alone);
  EXPECT_EQ(GetFile("f"), "kept") << "a refused opening empties nothing";

  const HANDLE reader = Open("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  ASSERT_NE(reader, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING), 0u);
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_READ, 0, OPEN_EXISTING), kViolation);
  CloseHandle(reader);
}

TEST_P(FilesTest, BytesAndPositions) {
  const HANDLE file = Open("f", GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(SetFilePointer(file, -4, nullptr, FILE_END), 6u);
  char buffer[16] = {};
  EXPECT_TRUE(ReadFile(file, buffer, sizeof(buffer), &count, nullptr));
  EXPECT_EQ(std::string(buffer, count), "6789");
  EXPECT_TRUE(ReadFile(file, buffer, sizeof(buffer), &count, nullptr)) << "the end is no error";
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(SetFilePointer(file, -3, nullptr, FILE_CURRENT), 7u);

  EXPECT_EQ(SetFilePointer(file, -20, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NEGATIVE_SEEK});
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, 99), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});

  // Beyond 4 GiB, with halves that look like failures and like negative numbers.
  const struct {
    LONG low;
    LONG high;
  } far_positions[] = {{5, 1}, {-1, 1}, {static_cast<LONG>(0x80000000), 2}};
  for (const auto& position : far_positions) {
    LONG high = position.high;
    const DWORD low = SetFilePointer(file, position.low, &high, FILE_BEGIN);
    EXPECT_EQ(low, static_cast<DWORD>(position.low));
    EXPECT_EQ(high, position.high);
    EXPECT_TRUE(low != INVALID_SET_FILE_POINTER || GetLastError() == 0);
    LARGE_INTEGER nowhere;
    nowhere.QuadPart = 0;
    LARGE_INTEGER here;
    EXPECT_TRUE(SetFilePointerEx(file, nowhere, &here, FILE_CURRENT));
    const auto expected = (static_cast<uint64_t>(position.high) << 32) | low;
    EXPECT_EQ(static_cast<uint64_t>(here.QuadPart), expected);
  }
  EXPECT_TRUE(FlushFileBuffers(file));
  CloseHandle(file);
  EXPECT_EQ(GetFile("f"), "0123456789") << "moving alone writes nothing";
}

TEST_P(FilesTest, WhatAHandleIsNotOpenForFails) {
  PutFile("f", "x");
  const HANDLE reader = Open("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  DWORD count = 99;
  EXPECT_FALSE(WriteFile(reader, "y", 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(count, 0u);
  CloseHandle(reader);
  char byte;
  EXPECT_FALSE(ReadFile(INVALID_HANDLE_VALUE, &byte, 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST_P(FilesTest, TimesOfOpenFiles) {
  PutFile("f", "x");
  const HANDLE file = Open("f", GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  FILETIME old_access;
  EXPECT_TRUE(GetFileTime(file, nullptr, &old_access, nullptr));
  // 2001-09-09 01:46:40 UTC and 1969-12-31 23:59:59 UTC, in ticks since 1601.
  for (const uint64_t ticks : {126'444'736'000'000'000u, 116'444'735'990'000'000u}) {
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    EXPECT_TRUE(SetFileTime(file, &time, nullptr, &time));
    const FILETIME keep{0, 0};
    EXPECT_TRUE(SetFileTime(file, &keep, &keep, &keep));
    FILETIME creation, access, write;
    EXPECT_TRUE(GetFileTime(file, &creation, &access, &write));
    for (const FILETIME& set : {creation, write}) {
      EXPECT_EQ(set.dwLowDateTime, time.dwLowDateTime);
      EXPECT_EQ(set.dwHighDateTime, time.dwHighDateTime);
    }
    EXPECT_EQ(access.dwLowDateTime, old_access.dwLowDateTime);
    EXPECT_EQ(access.dwHighDateTime, old_access.dwHighDateTime);
  }
  CloseHandle(file);
}

TEST_P(FilesTest, WholeFileOperationsTellWhyTheyFail) {
  PutFile("a", "a");
  PutFile("b", "b");
  MakeFolder("folder/inner");
  const auto error = [](BOOL result) { return result ? DWORD{0} : GetLastError(); };
  const auto code = [](auto value) { return static_cast<DWORD>(value); };
  const SystemPath a = Wide("a"), b = Wide("b"), folder = Wide("folder"), none = Wide("none"),
                   lost = Wide("none/x");
  EXPECT_EQ(error(CopyFileW(a.get(), b.get(), TRUE)), code(ERROR_FILE_EXISTS));
  EXPECT_EQ(error(CopyFileW(none.get(), b.get(), FALSE)), code(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(error(CopyFileW(a.get(), lost.get(), FALSE)), code(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(error(CopyFileW(a.get(), folder.get(), FALSE)), code(ERROR_ACCESS_DENIED));
  EXPECT_EQ(error(MoveFileW(a.get(), b.get())), code(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(error(MoveFileW(none.get(), lost.get())), code(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(error(MoveFileW(a.get(), lost.get())), code(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(error(DeleteFileW(none.get())), code(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(error(DeleteFileW(lost.get())), code(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(error(DeleteFileW(folder.get())), code(ERROR_ACCESS_DENIED));
  EXPECT_EQ(error(CreateDirectoryW(folder.get(), nullptr)), code(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(error(CreateDirectoryW(a.get(), nullptr)), code(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(error(CreateDirectoryW(lost.get(), nullptr)), code(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(GetFile("a") + GetFile("b"), "ab");
}

TEST_P(FilesTest, ListsADirectory) {
  std::multiset<std::string> expected = {".", ".."};
  for (const char* name : {"plain.txt", "ελληνικά", "漢字", "😀", ".dot", "a b"}) {
    MakeFolder("list");
    PutFile(std::string("list/") + name, "12345");
    expected.insert(name);
  }
  MakeFolder("list/folder");
  expected.insert("folder");

  std::multiset<std::string> names;
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileW(Wide("list/*").get(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  do {
    const std::string name = Narrow(data.cFileName);
    names.insert(name);
    const bool directory = name == "folder" || name == "." || name == "..";
    EXPECT_EQ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0, directory) << name;
    EXPECT_EQ(data.nFileSizeLow, directory ? 0u : 5u) << name;
    EXPECT_EQ(data.nFileSizeHigh, 0u) << name;
    EXPECT_NE(data.ftLastWriteTime.dwHighDateTime, 0u) << name;
  } while (FindNextFileW(find, &data));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
  EXPECT_TRUE(FindClose(find));
  EXPECT_EQ(names, expected);
}

TEST_P(FilesTest, LooksAtOneName) {
  PutFile("ä.txt", "12345");
  MakeFolder("folder");
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileW(Wide("ä.txt").get(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_EQ(Narrow(data.cFileName), "ä.txt");
  EXPECT_EQ(data.nFileSizeLow, 5u);
  EXPECT_FALSE(FindNextFileW(find, &data));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
  FindClose(find);

  const struct {
    const char* pattern;
    DWORD error;
  } failures[] = {{"missing", ERROR_FILE_NOT_FOUND},
                  {"missing/name", ERROR_PATH_NOT_FOUND},
                  {"missing/*", ERROR_PATH_NOT_FOUND},
                  {"folder/", ERROR_FILE_NOT_FOUND}};
  for (const auto& failure : failures) {
    EXPECT_EQ(FindFirstFileW(Wide(failure.pattern).get(), &data), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), failure.error) << failure.pattern;
  }
  EXPECT_FALSE(FindClose(INVALID_HANDLE_VALUE));
}

TEST_P(FilesTest, SizesBeyond4GiB) {
  FILE* const stream = _wfopen(Wide("huge").get(), TMV_WIDE("wb"));
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(_chsize_s(_fileno(stream), (int64_t{1} << 32) + 7), 0);
  EXPECT_EQ(_fseeki64(stream, 0, SEEK_END), 0);
  EXPECT_EQ(_ftelli64(stream), (int64_t{1} << 32) + 7);
  EXPECT_EQ(_chsize_s(_fileno(stream), 3), 0);
  std::fclose(stream);
  EXPECT_EQ(GetFile("huge"), std::string(3, '\0'));
}

TEST_P(FilesTest, AccessTellsExistenceAndRights) {
  PutFile("f", "");
  EXPECT_EQ(_waccess(Wide("f").get(), 0), 0);
  EXPECT_EQ(_waccess(Wide("f").get(), 6), 0);
  EXPECT_EQ(_waccess(Wide("").get(), 0), 0) << "the folder";
  errno = 0;
  EXPECT_EQ(_waccess(Wide("missing").get(), 0), -1);
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
