#ifndef TEMVAR_UTILITY_FILE_H_
#define TEMVAR_UTILITY_FILE_H_

#include <cstdint>
#include <cstdio>

#include "temvar/binary_data.h"
#include "temvar/export.h"

// A path in its parts, which make the path again when they are joined. Each is new UTF-8 text
// of the record's owner; FreePathParts releases all three.
struct PathParts {
  char* Directory;  // Up to and including the last separator; empty if there is none.
  char* Name;       // The file name without its extension.
  char* Extension;  // From the last dot on, with the dot; empty if there is none.
};

// Files, paths and directory trees.
//
// Paths are UTF-8; slashes and backslashes both separate, unless an operation says otherwise. A
// path that is null, empty or no well-formed UTF-8 names no file: the operation fails as for a
// missing one. Paths of more than 260 characters work where docs/known-limits.md doesn't say
// otherwise. Failure is reported by the result alone: no message, no error code.
//
// New text is released with FreeString of TMVUtilityString. Nothing stays open after a call but
// the stream that OpenFile hands out. The object has no state: any thread may call any operation at
// any time, and two calls on one path meet only in the file system. Operations that make text or
// take a path throw std::bad_alloc, or fail as for another reason where the system keeps silent
// about memory.
class TMVUtilityFile {
 public:
  // Deletes a directory with all that is in it, or a single file, for good and without asking. One
  // backslash at the end of the path doesn't count. Links are deleted, not followed. False if
  // anything couldn't be deleted (what was deleted before stays so), for a missing path, and for a
  // path that is null, empty, just a drive or a root however it is written, of which nothing is
  // deleted.
  virtual bool DeleteDirectoryTree(const char* path) = 0;

  // Copies a directory with all that is in it, or a single file. If `destination` is a directory,
  // the copy goes into it under the source's own name; else it becomes the copy. Files that exist
  // are replaced, directories merged. False on failure; what was copied before it stays, and the
  // file that it failed at may be there in part.
  virtual bool CopyDirectoryTree(const char* source, const char* destination) = 0;

  // Makes a directory and its missing parents. False if it exists already, or on failure; parents
  // that were made before it stay.
  virtual bool CreateDirectoryPath(const char* path) = 0;

  // `total` plus the sizes of all files below the directory `path`; callers start with 0. What
  // can't be read, and a path that is no directory, adds nothing. Links to directories are followed
  // as directories, but for links back to a directory above; a directory that links lead to from
  // below a link is counted there once.
  virtual uint64_t DirectorySize(const char* path, uint64_t total) = 0;

  // Copies one file; an existing destination is replaced. False on failure; the destination may
  // then be empty or hold a part.
  virtual bool CopyFileTo(const char* source, const char* destination) = 0;

  // Renames a file or directory. False on failure, and if the destination exists; the source is
  // then there as before. To another drive a file is copied first.
  virtual bool MoveFileTo(const char* source, const char* destination) = 0;

  // Deletes one file. False on failure, and for a directory.
  virtual bool RemoveFile(const char* path) = 0;

  // New text: a size for people, with two decimals and B, KB, MB or GB, each 1024 of the one
  // before, as in "1.50 KB". There is no larger unit than GB.
  virtual char* FormatSize(uint64_t bytes) = 0;

  // New text: a path that is free. `path` itself if nothing has that name, else the first free one
  // of "name(1).txt" to "name(999).txt" beside it, and `path` again if all are taken. The number
  // goes before the last dot of the path, after the last backslash or, without one, the last
  // slash. Null for a null path, and for an existing path without a dot or a separator. Nothing is
  // made: somebody else can take the name before it is used.
  virtual char* MakeUniquePath(const char* path) = 0;

  // True if a file or directory of that name exists.
  virtual bool PathExists(const char* path) = 0;

  // The size of a file in bytes; 0 if it can't be opened.
  virtual int64_t FileSize(const char* path) = 0;

  // Sets the creation time and the last-write time of a file to a local time in the shape
  // "2024-01-31 17:05:09"; the hour 24 counts as 0 of the same day. False for a directory, a file
  // that can't be written or that is open anywhere, and for text of another shape or with values
  // that no calendar or clock has.
  // Systems that keep no creation time that can be set take the last-write time alone. True once
  // the file is open, also if the system doesn't take the time.
  virtual bool SetFileTimestamp(const char* path, const char* time) = 0;

  // Cuts a path at its last separator and its last dot; nothing is looked up. A null or empty path
  // returns three nulls. The dot is meant to be in the last component: if it is in a
  // directory's name, Extension begins there all the same and Name is the whole last component.
  virtual PathParts SplitPath(const char* path) = 0;

  // Releases the three texts of a record and leaves the record as it is. Null does nothing.
  virtual void FreePathParts(PathParts* parts) = 0;

  // True if the extension of `path`, in lower case (A to Z), is in `list`, which has the shape
  // ";.zip;.7z;": dotted lower-case extensions with a semicolon before and after each. False
  // without a dot, and if either is null.
  virtual bool ExtensionInList(const char* path, const char* list) = 0;

  // Opens a stream with a mode of fopen, which the caller closes with fclose. Null on failure, for
  // a directory, and for a mode that is none.
  virtual FILE* OpenFile(const char* path, const char* mode) = 0;

  // Reads a whole file into `result`, whose bytes are released with FreeBinayDataResult, also if
  // the file is empty. False if the file can't be opened or read, and for a file of 4 GiB or more
  // (2 GiB in a 32-bit process), which the record can't hold; the record is then left as it was.
  virtual bool ReadWholeFile(BinaryDataResult* result, const char* path) = 0;

  // Makes a file of `size` bytes, in place of what it held before. False on failure; the file may
  // then hold a part. True once all bytes are written: what the system loses later, as a network
  // drive may when the file is closed, doesn't show. A size of 4 GiB or more is refused by the
  // result alone: the file is made all the same, with as many bytes as the low 32 bits of the size
  // say.
  virtual bool WriteWholeFile(const void* data, uint64_t size, const char* path) = 0;

  // Looks for `text` in a file, line by line and without regard to the case of the letters A to Z:
  // 1 if a line holds it, 0 if none does, -1 if the file can't be opened or read. Bytes are
  // compared with bytes. A text never goes across the end of a line; the empty text is in every
  // line.
  virtual int32_t FileContainsText(const char* path, const char* text) = 0;

  // Makes a file of `size` zero bytes, in place of what it held before. False on failure; the file
  // may then be empty.
  virtual bool CreateFileOfSize(const char* path, uint64_t size) = 0;

  // Stores in `result` how many bytes the caller can still write to the disk of `path`, and leaves
  // it alone on failure. The disk is named by the text up to and including the first backslash, as
  // in "C:\"; a path without a backslash is a failure, also one with slashes.
  virtual bool GetFreeDiskSpace(uint64_t* result, const char* path) = 0;

  // True for a directory, or a link to one.
  virtual bool IsDirectory(const char* path) = 0;

 protected:
  ~TMVUtilityFile() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVUtilityFile* TmvUtilityFile();

#endif  // TEMVAR_UTILITY_FILE_H_
