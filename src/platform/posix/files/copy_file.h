// Copies of single files, for everything of the stand-in that copies.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_COPY_FILE_H_
#define TEMVAR_PLATFORM_POSIX_FILES_COPY_FILE_H_

namespace temvar::posix {

// What became of a copy. errno has the reason where it failed.
enum class Copied {
  kWhole,
  kNoSource,       // The source can't be opened; the destination was not touched.
  kNoDestination,  // The destination can't be opened or made, and was not changed.
  kOntoItself,     // Both are one file, which was not changed.
  kPart,           // The destination was opened or made, and holds a part.
};

// Copies contents, permissions and last-write time to a file that is made or replaced. With
// `exclusive` a destination that exists is kNoDestination with EEXIST.
Copied CopyOneFile(const char* source, const char* destination, bool exclusive);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_FILES_COPY_FILE_H_
