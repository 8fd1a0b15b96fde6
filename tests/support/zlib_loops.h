// The loops over zlib that GunzipBuffer and InflateBuffer are documented as: slow, right to the
// byte.
#ifndef TESTS_SUPPORT_ZLIB_LOOPS_H_
#define TESTS_SUPPORT_ZLIB_LOOPS_H_

#include <zlib.h>

#include <cstdint>
#include <string>

namespace test {

// One byte in and one byte out a call; returns 0 or -1, and sets `*capacity` with 0 only.
inline int32_t GunzipByBytes(const uint8_t* data, uint32_t size, uint8_t* output,
                             uint32_t* capacity) {
  z_stream stream = {};
  stream.next_in = const_cast<Bytef*>(data);
  stream.next_out = output;
  if (inflateInit2(&stream, 31) != Z_OK) return -1;
  int result = Z_OK;
  while (result == Z_OK && stream.total_out < *capacity && stream.total_in < size) {
    stream.avail_in = stream.avail_out = 1;
    result = inflate(&stream, Z_NO_FLUSH);
    if (result != Z_DATA_ERROR) continue;
    Bytef header[] = {0x78, 0x01};
    stream.next_in = header;
    stream.avail_in = sizeof(header);
    result = inflate(&stream, Z_NO_FLUSH) == Z_OK ? Z_OK : Z_DATA_ERROR;
    stream.next_in = const_cast<Bytef*>(data) + stream.total_in;
  }
  if (inflateEnd(&stream) != Z_OK || (result != Z_OK && result != Z_STREAM_END)) return -1;
  *capacity = static_cast<uint32_t>(stream.total_out);
  return 0;
}

// Blocks of 1024 bytes, appended to `bytes`; returns zlib's last result, and its message or "".
inline int InflateByBlocks(const uint8_t* data, uint32_t size, std::string* bytes,
                           std::string* message) {
  z_stream stream = {};
  stream.next_in = const_cast<Bytef*>(data);
  stream.avail_in = size;
  int result = inflateInit(&stream);
  while (result == Z_OK) {
    Bytef block[1024];
    stream.next_out = block;
    stream.avail_out = sizeof(block);
    result = inflate(&stream, Z_NO_FLUSH);
    bytes->append(reinterpret_cast<char*>(block), sizeof(block) - stream.avail_out);
  }
  *message = stream.msg == nullptr ? "" : stream.msg;
  inflateEnd(&stream);
  return result;
}

}  // namespace test

#endif  // TESTS_SUPPORT_ZLIB_LOOPS_H_
