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
// Progress and errors are told in lines on standard output and standard error. No operation
// tells why it failed in another way. A failed allocation throws std::bad_alloc.
class TMVUtilityUnzip {
 public:
  // Unpacks `archive` into the directory `destination`, an absolute path; missing directories are
  // made, existing files replaced, and every file gets its entry's time. True if it came through
  // all entries. An output that can't be opened costs that entry alone; a read, write or CRC error
  // ends the extraction with false, and what was unpacked before stays.
  //
  // An entry whose name would lead out of the destination ends it with false as well, after its own
  // line and "error opening NAME", and nothing is written for it: an absolute name, a colon, a NUL,
  // a component of ".." or of nothing but dots and blanks, a device such as NUL or COM1.txt, or a
  // way through a link that already lies in the destination. Names may be of any length. An empty
  // destination is false at once, with no line. Memory doesn't grow with the archive.
  virtual bool ExtractArchive(const char* archive, const char* destination) = 0;

  // Unpacks the gzip member at `data` into the caller's `output` of `*capacity` bytes, and sets
  // `*capacity` to the bytes produced. Result 0, also if output or input ran out first: exactly
  // that much is then written. -1 for what is no gzip data or is damaged; `*capacity` stays, the
  // output may be half written. One call of zlib for each byte: meant for short inputs.
  virtual int32_t GunzipBuffer(const void* data, uint32_t size, void* output,
                               uint32_t* capacity) = 0;

  // Unpacks one entry into memory. `entry` is its stored name, byte for byte, below 256 bytes.
  // The record's bytes go with FreeBinayDataResult. False, with the record as it was, if the
  // archive can't be opened or lacks the entry. True with Size 0 if the entry is damaged, or larger
  // than the 4 GiB that Size can tell: look at standard error, or check Size where it matters.
  virtual bool ExtractEntry(BinaryDataResult* result, const char* archive, const char* entry) = 0;

  // Unpacks zlib data (RFC 1950). The record's bytes go with FreeBinayDataResult. False for an
  // empty input; false with a line on standard output, and the record as it was, for data that is
  // damaged or cut short, or that unpacks to more than the 4 GiB that Size can tell.
  virtual bool InflateBuffer(BinaryDataResult* result, const void* data, uint32_t size) = 0;

  // Opens an archive for reading and gives minizip's handle (an unzFile), or null. The interface
  // can't close it: the caller hands it to unzClose of a minizip of the same version (1.1).
  virtual void* OpenArchive(const char* archive) = 0;

 protected:
  ~TMVUtilityUnzip() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVUtilityUnzip* TmvUtilityUnzip();

#endif  // TEMVAR_UTILITY_UNZIP_H_
