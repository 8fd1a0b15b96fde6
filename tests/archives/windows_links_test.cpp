// Links and file identities on Windows, as the system would report them: Wine makes no links, so
// the library's calls meet functions of this test.
#include "archives/archive_test.h"
#include "support/import_patch.h"

namespace {

using namespace test;

// What the system says of every path that ends in "link", and of the identity of a file.
struct Reported {
  DWORD error = 0;  // Of a look at its attributes.
  DWORD tag = 0;
  bool found = true;
  bool sameFiles = false;
};
Reported reported;

bool IsLink(const wchar_t* path) {
  const std::wstring_view text(path);
  return text.size() >= 5 && text.substr(text.size() - 5) == L"\\link";
}

DWORD WINAPI Attributes(const wchar_t* path) {
  const DWORD real = GetFileAttributesW(path);
  if (!IsLink(path)) return real;
  SetLastError(reported.error);
  return reported.error != 0 ? INVALID_FILE_ATTRIBUTES : real | FILE_ATTRIBUTE_REPARSE_POINT;
}

HANDLE WINAPI FindFirst(const wchar_t* path, WIN32_FIND_DATAW* data) {
  if (IsLink(path) && !reported.found) return INVALID_HANDLE_VALUE;
  const HANDLE find = FindFirstFileW(path, data);
  if (IsLink(path)) data->dwReserved0 = reported.tag;
  return find;
}

// As ReFS may: numbers that differ in their upper half alone.
BOOL WINAPI Information(HANDLE, FILE_INFO_BY_HANDLE_CLASS, void* data, DWORD size) {
  static BYTE number = 0;
  std::memset(data, 0, size);
  static_cast<FILE_ID_INFO*>(data)->FileId.Identifier[15] = reported.sameFiles ? 1 : ++number;
  return TRUE;
}

class WindowsLinksTest : public ArchiveTest {
 protected:
  void SetUp() override {
    ArchiveTest::SetUp();
    reported = {};
    ASSERT_NE(PatchImport("libTemvar.dll", "GetFileAttributesW", &Attributes), nullptr);
    ASSERT_NE(PatchImport("libTemvar.dll", "FindFirstFileW", &FindFirst), nullptr);
    ASSERT_NE(PatchImport("libTemvar.dll", "GetFileInformationByHandleEx", &Information), nullptr);
  }
};
TEMVAR_IN_A_PLAIN_PLACE(WindowsLinksTest);

TEST_P(WindowsLinksTest, WhatMayLeadElsewhereIsNotEntered) {
  const std::tuple<const char*, Reported, bool> cases[] = {
      {"a junction", {.tag = IO_REPARSE_TAG_MOUNT_POINT}, false},
      {"a symbolic link", {.tag = IO_REPARSE_TAG_SYMLINK}, false},
      {"a folder of a cloud store", {.tag = IO_REPARSE_TAG_CLOUD}, true},
      {"a reparse point without a tag", {.found = false}, false},
      {"no right to look", {.error = ERROR_ACCESS_DENIED}, false},
      {"a drive that is not ready", {.error = ERROR_NOT_READY}, false},
      {"gone since", {.error = ERROR_FILE_NOT_FOUND}, true},
  };
  for (const auto& [what, report, isEntered] : cases) {
    SCOPED_TRACE(what);
    TakeFreshDestination();
    MakeFolder(Out("link"));
    PutArchive({{.name = "link/file", .data = "1"}, {.name = "last", .data = "2"}});
    reported = report;
    EXPECT_EQ(Extract().out,
              (isEntered ? Extracts("link/file") : Refuses("link/file")) + Extracts("last"));
    EXPECT_EQ(Exists(Out("link/file")), isEntered);
  }
}

TEST_P(WindowsLinksTest, FilesAreToldApartByTheWholeNumber) {
  MakeFolder("out");
  for (const bool sameFiles : {true, false}) {
    PutFile("out/file", "old");
    PutArchive({{.name = "file", .data = "new"}});
    reported.sameFiles = sameFiles;
    Extract();
    EXPECT_EQ(GetFile("out/file"), sameFiles ? "old" : "new");
  }
}

}  // namespace
