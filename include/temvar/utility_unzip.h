#ifndef TEMVAR_UTILITY_UNZIP_H_
#define TEMVAR_UTILITY_UNZIP_H_

#include <cstdint>

#include "temvar/binary_data.h"
#include "temvar/export.h"
#include "temvar/types.h"

// Unpacks ZIP archives, whole or one entry, and buffers in the zlib and gzip formats. Stored and
// deflated entries are read; there are no passwords. Paths and entry names are UTF-8.
//
// No state and no lock: any number of threads may call any operation at once, also on one archive.
// Progress and errors are printed in lines on standard output and standard error; no operation
// reports in another way why it failed. A failed allocation throws std::bad_alloc, or fails as
// damaged data does where zlib or minizip report it so; what was unpacked before stays.
class TMVUtilityUnzip {
 public:
  // Unpacks `archive` into the directory `destination`, an absolute path; missing directories are
  // made, existing files replaced, and every file gets its entry's time. True if it came through
  // all entries. An output that can't be opened costs that entry alone, and a directory that can't
  // be made costs nothing: its line "creating directory: NAME" is printed and the extraction goes
  // on. A read, write or CRC error ends it with false; what was unpacked before stays, and a part
  // of the file that it ended at.
  //
  // A name that leads out of the destination ends it with false as well, after the entry's line and
  // "error opening NAME": an absolute name, a drive, a NUL, more ".." than components before them.
  // A name that stays inside but can't or mustn't be opened prints "error opening NAME" and costs
  // that entry alone: a way through a link in the destination, the archive itself, and on Windows a
  // device such as NUL or COM1.txt and a colon. An entry that is shorter than the archive states
  // counts if its CRC is right. Names may be of any length. An empty destination is false at once,
  // with no line. Memory doesn't grow with the archive.
  virtual bool ExtractArchive(const char* archive, const char* destination) = 0;

  // Unpacks the gzip member at `data` into the caller's `output` of `*capacity` bytes, and sets
  // `*capacity` to the bytes produced. Result 0, also if output or input ran out first: exactly
  // that much is then written. -1 for bytes that are no gzip data or damaged; `*capacity` stays,
  // the output may be half written. What follows the member is not looked at.
  virtual int32_t GunzipBuffer(const void* data, uint32_t size, void* output,
                               uint32_t* capacity) = 0;

  // Unpacks one entry into memory. `entry` is its stored name, byte for byte, below 256 bytes.
  // The record's bytes go with FreeBinayDataResult. False, with the record as it was, if the
  // archive can't be opened or lacks the entry. True with Size 0 if the entry is damaged, or larger
  // than the 4 GiB that Size can count: look at standard error, or check Size where it matters.
  virtual bool ExtractEntry(BinaryDataResult* result, const char* archive, const char* entry) = 0;

  // Unpacks zlib data (RFC 1950). The record's bytes go with FreeBinayDataResult. False for an
  // empty input; false with a line on standard output, and the record as it was, for data that is
  // damaged or cut short, or that unpacks to more than the 4 GiB that Size can count.
  virtual bool InflateBuffer(BinaryDataResult* result, const void* data, uint32_t size) = 0;

  // Opens an archive for reading and returns minizip's handle (an unzFile); null for a file that
  // can't be opened or doesn't end in a whole end record. The interface can't close it: the caller
  // hands it to unzClose of a minizip of the same version (1.1).
  virtual void* OpenArchive(const char* archive) = 0;

 protected:
  ~TMVUtilityUnzip() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVUtilityUnzip* TmvUtilityUnzip();

#endif  // TEMVAR_UTILITY_UNZIP_H_
