// Compression from memory to memory with zlib; nothing is kept between calls.
#include <zlib.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <string>

#include "archives/utility_unzip_impl.h"
#include "archives/utility_zip_impl.h"
#include "utilities/file/binary_data_impl.h"

namespace temvar {
namespace {

constexpr char kZlibVersion[] = "1.2.5";
constexpr size_t kBlockSize = 1024;
constexpr int kGzipWindowBits = 15 + 16;

// A zlib stream that is ended on every way out.
class ZlibStream {
 public:
  using EndFunction = int (*)(z_stream*);

  explicit ZlibStream(EndFunction end) : end_(end) {}
  ~ZlibStream() { End(); }
  ZlibStream(const ZlibStream&) = delete;
  ZlibStream& operator=(const ZlibStream&) = delete;

  z_stream* get() { return &stream_; }
  z_stream* operator->() { return &stream_; }

  // zlib's result; 0 if there is nothing left to end.
  int End() {
    const int result = stream_.state == nullptr ? Z_OK : end_(&stream_);
    stream_.state = nullptr;
    return result;
  }

 private:
  z_stream stream_ = {};
  EndFunction end_;
};

Bytef* Input(const void* data) { return static_cast<Bytef*>(const_cast<void*>(data)); }

// Runs `step` until it gives something else than 0 and appends what comes out. Gives its last
// result, or Z_BUF_ERROR once the bytes are more than a BinaryDataResult can count.
template <typename Step>
int AppendAll(ZlibStream& stream, std::string& bytes, Step step) {
  Bytef block[kBlockSize];
  int result = Z_OK;
  while (result == Z_OK) {
    stream->next_out = block;
    stream->avail_out = kBlockSize;
    result = step(stream.get());
    const size_t count = kBlockSize - stream->avail_out;
    if (count > kMaxBinaryDataSize - bytes.size()) return Z_BUF_ERROR;
    bytes.append(reinterpret_cast<const char*>(block), count);
  }
  return result;
}

// Hands the bytes over after a stream's regular end; anything else is told in a line.
bool Finish(BinaryDataResult* result, std::unique_ptr<std::string> bytes, int zlibResult,
            const char* message, const char* operation) {
  if (zlibResult == Z_STREAM_END) {
    FillBinaryData(result, std::move(bytes));
    return true;
  }
  std::cout << "Exception during zlib " << operation << ": (" << zlibResult << ") ";
  if (message != nullptr) std::cout << message;
  std::cout << std::endl;
  return false;
}

}  // namespace

bool TMVUtilityZipImpl::DeflateBuffer(BinaryDataResult* result, const void* data, uint32_t size,
                                      int32_t level) {
  if (size == 0) return false;
  ZlibStream stream(deflateEnd);
  if (deflateInit_(stream.get(), level, kZlibVersion, sizeof(z_stream)) != Z_OK) return false;
  stream->next_in = Input(data);
  stream->avail_in = size;
  auto bytes = std::make_unique<std::string>();
  const int last =
      AppendAll(stream, *bytes, [](z_stream* zlib) { return deflate(zlib, Z_FINISH); });
  stream.End();
  return Finish(result, std::move(bytes), last, stream->msg, "compression");
}

bool TMVUtilityUnzipImpl::InflateBuffer(BinaryDataResult* result, const void* data, uint32_t size) {
  if (size == 0) return false;
  ZlibStream stream(inflateEnd);
  if (inflateInit_(stream.get(), kZlibVersion, sizeof(z_stream)) != Z_OK) return false;
  stream->next_in = Input(data);
  stream->avail_in = size;
  auto bytes = std::make_unique<std::string>();
  const int last =
      AppendAll(stream, *bytes, [](z_stream* zlib) { return inflate(zlib, Z_NO_FLUSH); });
  stream.End();
  return Finish(result, std::move(bytes), last, stream->msg, "decompression");
}

int32_t TMVUtilityUnzipImpl::GunzipBuffer(const void* data, uint32_t size, void* output,
                                          uint32_t* capacity) {
  static constexpr Bytef kZlibHeader[] = {0x78, 0x01};
  ZlibStream stream(inflateEnd);
  stream->next_in = Input(data);
  stream->next_out = static_cast<Bytef*>(output);
  if (inflateInit2_(stream.get(), kGzipWindowBits, kZlibVersion, sizeof(z_stream)) != Z_OK) {
    return -1;
  }
  while (stream->total_out < *capacity && stream->total_in < size) {
    stream->avail_in = 1;
    stream->avail_out = 1;
    int result = inflate(stream.get(), Z_NO_FLUSH);
    if (result == Z_STREAM_END) break;
    if (result == Z_DATA_ERROR) {
      // Offers the stream a plain zlib header in place of what it refused. The zlib of today
      // (1.2.13) stays in its failed state, so that this ends in -1 too.
      stream->next_in = Input(kZlibHeader);
      stream->avail_in = sizeof(kZlibHeader);
      result = inflate(stream.get(), Z_NO_FLUSH);
      if (result == Z_OK) stream->next_in = Input(data) + stream->total_in;
    }
    if (result != Z_OK) return -1;
  }
  if (stream.End() != Z_OK) return -1;
  *capacity = static_cast<uint32_t>(stream->total_out);
  return 0;
}

}  // namespace temvar
