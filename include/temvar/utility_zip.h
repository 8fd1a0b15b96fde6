#ifndef TEMVAR_UTILITY_ZIP_H_
#define TEMVAR_UTILITY_ZIP_H_

#include <cstdint>

#include "temvar/binary_data.h"
#include "temvar/export.h"
#include "temvar/types.h"

// Packs files into a new ZIP archive, in two steps: collect with AddFile and AddDirectory, then
// write it all with WriteArchive. The list of files stays, so that it can be written again or
// grow further; nothing empties it. Paths and names are UTF-8.
//
// One object belongs to one thread at a time; separate objects are independent. Messages go to
// standard output. A failed allocation throws std::bad_alloc: AddDirectory keeps what it has added,
// WriteArchive leaves no archive, and is false if there was no memory to open or close it.
class TMVUtilityZip {
 public:
  // Adds every file below `directory`; directories themselves leave no trace in the archive. The
  // name in the archive is the file's path without its first strlen(root) bytes, counting a
  // separator that is added to a root without one. A null or empty root means `directory`, so
  // that names are relative to it. The text isn't compared: give a root that the path begins with.
  // A path no longer than its root gets an empty name, as AddFile knows it. A directory that links
  // lead to is walked once, under the first of them, and not if it is being walked already. What
  // can't be listed, pipes and devices, and an empty text add nothing.
  virtual void AddDirectory(const char* directory, const char* root) = 0;

  // Adds the file at `path` under `name`. An empty name means the file's own: what follows the
  // last backslash of the path, or the last slash if it has none. A path that was
  // added before gets the new name. Whether the file exists shows in WriteArchive.
  virtual void AddFile(const char* path, const char* name) = 0;

  // Writes the archive, replacing an existing file, with the files in the byte order of their
  // paths. Files whose extension is in `exclusions`, such as ";.zip;.tmp;" (lower case, may be
  // null), are left out. False only if the archive can't be created or finished; what was written
  // stays. A file that can't be read, or written into the archive, prints a line and its entry is
  // empty, cut, damaged or missing. Names are stored in the ANSI code page, times in local time.
  // Memory doesn't grow with the size of the files.
  virtual bool WriteArchive(const char* archive, const char* exclusions) = 0;

  // Packs a buffer in the zlib format (RFC 1950); level 0 to 9, or -1 for zlib's default. The
  // record's bytes go with FreeBinayDataResult. False, with the record as it was, for an empty
  // input, another level, or (with a line on standard output) an error of zlib. Any thread.
  virtual bool DeflateBuffer(BinaryDataResult* result, const void* data, uint32_t size,
                             int32_t level) = 0;

 protected:
  ~TMVUtilityZip() = default;
};

// A new object with an empty list; the caller owns it. Throws std::bad_alloc.
TMV_API TMVUtilityZip* CreateTmvUtilityZip();

// Destroys and frees the object. Null does nothing.
TMV_API void DestroyTmvUtilityZip(TMVUtilityZip* zip);

#endif  // TEMVAR_UTILITY_ZIP_H_
