// Compression from memory to memory with zlib; nothing is kept between calls.
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>
#include <new>
#include <string>

#include "archives/utility_unzip_impl.h"
#include "archives/utility_zip_impl.h"
#include "utilities/file/binary_data_impl.h"

namespace temvar {
namespace {

constexpr char kZlibVersion[] = "1.2.5";
constexpr int kGzipWindowBits = 15 + 16;

// Stored blocks of level 0 are as long as the room for output, so this size is part of what
// DeflateBuffer returns.
constexpr size_t kPackedBlockSize = 1024;
// Small enough to stay in the processor's cache while it is filled, large enough to make the costs
// of a call of zlib disappear: it copies the last 32 KB aside before it returns.
constexpr size_t kUnpackedBlockSize = 256 << 10;

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

// Appends all that the stream packs. Returns zlib's last result, or Z_BUF_ERROR once the bytes are
// more than a BinaryDataResult can count.
int AppendPacked(ZlibStream& stream, std::string& bytes) {
  Bytef block[kPackedBlockSize];
  int result = Z_OK;
  while (result == Z_OK) {
    stream->next_out = block;
    stream->avail_out = sizeof(block);
    result = deflate(stream.get(), Z_FINISH);
    const size_t count = sizeof(block) - stream->avail_out;
    if (count > MaxBinaryDataSize() - bytes.size()) return Z_BUF_ERROR;
    bytes.append(reinterpret_cast<const char*>(block), count);
  }
  return result;
}

// Makes room for `count` bytes more. A string that doubles would touch the memory of a large result
// once more on its way; this one grows at once to the size that the rest of the input promises if
// it is packed like the part before. Room that is never used costs address space alone, of which a
// 32-bit process has little: the promise is trusted up to a bound, and beyond it up to four times
// what is there.
void MakeRoom(std::string& bytes, size_t count, const z_stream& stream) {
  constexpr size_t kTrusted = size_t{sizeof(void*) == 8 ? 256u : 64u} << 20;
  if (count <= bytes.capacity() - bytes.size() || stream.total_in == 0) return;
  const double ratio = static_cast<double>(stream.total_out) / static_cast<double>(stream.total_in);
  const double promised = static_cast<double>(stream.total_out) + ratio * stream.avail_in;
  const size_t most = std::max(kTrusted, std::min(bytes.size(), MaxBinaryDataSize() / 4) * 4);
  // An eighth more: the ratio of the first block is a guess, and growing again copies everything.
  const double wanted = promised * 1.125 + static_cast<double>(count);
  try {
    bytes.reserve(static_cast<size_t>(std::min(wanted, static_cast<double>(most))));
  } catch (const std::bad_alloc&) {
    // Without the promise, then: the string takes what it needs.
  }
}

// The same for what the stream unpacks, which goes straight into the string.
int AppendUnpacked(ZlibStream& stream, std::string& bytes) {
  int result = Z_OK;
  // A small input doesn't fill a large block.
  size_t room =
      std::clamp<size_t>(size_t{stream->avail_in} * 4, kPackedBlockSize, kUnpackedBlockSize);
  while (result == Z_OK) {
    const size_t before = bytes.size();
    MakeRoom(bytes, room, *stream.get());
    bytes.resize(before + room);
    stream->next_out = reinterpret_cast<Bytef*>(bytes.data()) + before;
    stream->avail_out = static_cast<uInt>(room);
    result = inflate(stream.get(), Z_NO_FLUSH);
    bytes.resize(before + room - stream->avail_out);
    if (bytes.size() > MaxBinaryDataSize()) return Z_BUF_ERROR;
    room = kUnpackedBlockSize;
  }
  return result;
}

// Hands the bytes over after a stream's regular end; prints a line after anything else.
bool Finish(BinaryDataResult* result, std::unique_ptr<std::string> bytes, int zlibResult,
            const char* message, const char* operation) {
  if (zlibResult == Z_STREAM_END) {
    FillBinaryData(result, std::move(bytes));
    return true;
  }
  // The code as text: the host may have set the stream to another base.
  std::cout << "Exception during zlib " << operation << ": (" << std::to_string(zlibResult) << ") ";
  if (message != nullptr) std::cout << message;
  std::cout << std::endl;
  return false;
}

// GunzipBuffer is defined by a loop that lets zlib take at most one byte and make at most one in
// each call, and that ends between two calls. Its result depends on the order in which zlib takes
// and makes bytes: at the end of the input, bytes that zlib could still make are not made, and
// after the last byte of output, at most one more is taken and looked at. That order is a property
// of the data alone, since zlib takes a byte only when it can't go on without it. So all but the
// tails of input and output is unpacked in one call of zlib, and the loop does the tails. For that
// it must begin where one of its own calls would:
//
// 1. A call ends when a second byte would be taken, or a second one made.
// 2. So a call ends between two bytes that are taken, or two that are made, in a row.
// 3. The bytes of stored blocks are taken and made at once, each in a call of its own.
//
// Data in which both kinds alternate all the time hides where calls end; the loop unpacks it from
// the start.
class GunzipRun {
 public:
  GunzipRun(const void* data, uint32_t size, void* output, uint32_t capacity)
      : data_(Input(data)),
        output_(static_cast<Bytef*>(output)),
        size_(size),
        capacity_(capacity) {}

  // 0 or -1. `*produced` is set with 0 only.
  int32_t Run(uint32_t* produced) {
    int result = Begin();
    if (result == Z_OK && size_ > kTail && capacity_ > kTail) result = RunAhead();
    while (result == Z_OK && stream_->total_out < capacity_ && stream_->total_in < size_) {
      result = Step(1, 1);
    }
    if (result != Z_OK && result != Z_STREAM_END) return -1;
    if (stream_.End() != Z_OK) return -1;
    *produced = static_cast<uint32_t>(stream_->total_out);
    return 0;
  }

 private:
  // More than the search for the end of a call takes and makes.
  static constexpr uInt kTail = 256;

  int Begin() {
    stream_.End();
    const int result =
        inflateInit2_(stream_.get(), kGzipWindowBits, kZlibVersion, sizeof(z_stream));
    stream_->next_in = data_;
    stream_->next_out = output_;
    return result;
  }

  // Unpacks all but the tails, up to the end of a call. Z_OK if the loop has to go on.
  int RunAhead() {
    int result = Step(size_ - kTail, capacity_ - kTail);
    for (uInt i = 0; result == Z_OK; ++i) {
      // Nowhere did a call end: the loop has to do it all.
      if (i == kTail) return Begin();
      const uLong before = stream_->total_in + stream_->total_out;
      result = i % 2 == 0 ? Step(1, 0) : Step(0, 1);
      if (result == Z_BUF_ERROR) result = Z_OK;  // No move, which is an answer here.
      // The byte before was of the other kind, and the next one is no byte of this kind.
      if (i > 0 && stream_->total_in + stream_->total_out == before) break;
    }
    return result;
  }

  // One call of zlib that takes up to `taken` bytes and makes up to `made`.
  int Step(uInt taken, uInt made) {
    static constexpr Bytef kZlibHeader[] = {0x78, 0x01};
    stream_->avail_in = taken;
    stream_->avail_out = made;
    int result = inflate(stream_.get(), Z_NO_FLUSH);
    if (result != Z_DATA_ERROR) return result;
    // Offers the stream a plain zlib header in place of what it refused. The zlib of today (1.2.13)
    // stays in its failed state, so that this ends in -1 too.
    stream_->next_in = Input(kZlibHeader);
    stream_->avail_in = sizeof(kZlibHeader);
    result = inflate(stream_.get(), Z_NO_FLUSH);
    if (result == Z_OK) stream_->next_in = data_ + stream_->total_in;
    return result == Z_STREAM_END ? Z_DATA_ERROR : result;
  }

  Bytef* const data_;
  Bytef* const output_;
  const uint32_t size_;
  const uint32_t capacity_;
  ZlibStream stream_{inflateEnd};
};

}  // namespace

bool TMVUtilityZipImpl::DeflateBuffer(BinaryDataResult* result, const void* data, uint32_t size,
                                      int32_t level) {
  if (size == 0) return false;
  ZlibStream stream(deflateEnd);
  if (deflateInit_(stream.get(), level, kZlibVersion, sizeof(z_stream)) != Z_OK) return false;
  stream->next_in = Input(data);
  stream->avail_in = size;
  auto bytes = std::make_unique<std::string>();
  const int last = AppendPacked(stream, *bytes);
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
  const int last = AppendUnpacked(stream, *bytes);
  stream.End();
  return Finish(result, std::move(bytes), last, stream->msg, "decompression");
}

int32_t TMVUtilityUnzipImpl::GunzipBuffer(const void* data, uint32_t size, void* output,
                                          uint32_t* capacity) {
  return GunzipRun(data, size, output, *capacity).Run(capacity);
}

}  // namespace temvar
