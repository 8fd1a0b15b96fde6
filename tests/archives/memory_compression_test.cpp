// DeflateBuffer, InflateBuffer and GunzipBuffer, against zlib called directly.
#include <iostream>
#include <random>
#include <sstream>

#include "archives/archive_test.h"
#include "support/zlib_loops.h"

namespace {

using namespace test;

constexpr BinaryDataResult kUntouched = {nullptr, nullptr, 77, 78};

struct Outcome {
  bool result = false;
  std::string bytes;
  std::string out;
};

// Runs an operation on a record; a false one must leave the record alone.
template <typename Operation>
Outcome Run(Operation operation) {
  Outcome outcome;
  BinaryDataResult record = kUntouched;
  const auto output = OutputOf([&] { outcome.result = operation(&record); });
  outcome.out = output.out;
  EXPECT_EQ(output.err, "");
  if (outcome.result) {
    EXPECT_EQ(record.Reserved, 0u);
    outcome.bytes.assign(record.Data, record.Size);
    FreeBinayDataResult(&record);
  } else {
    EXPECT_EQ(record.Owner, nullptr);
    EXPECT_EQ(record.Size, 77u);
  }
  return outcome;
}

Outcome Deflate(const std::string& data, int32_t level) {
  const auto size = static_cast<uint32_t>(data.size());
  return Run([&](auto* to) { return tmv::MakeZip()->DeflateBuffer(to, data.data(), size, level); });
}

Outcome Inflate(const std::string& data) {
  const auto size = static_cast<uint32_t>(data.size());
  return Run([&](auto* to) { return TmvUtilityUnzip()->InflateBuffer(to, data.data(), size); });
}

// Sizes around the 1024-byte blocks in which both work.
TEST(MemoryCompression, EveryLevelComesBack) {
  for (const size_t size : {1u, 1023u, 1024u, 1025u, 100'000u}) {
    const std::string data = NoisyBytes(size / 2) + std::string(size - size / 2, 'a');
    for (int32_t level = -1; level <= 9; ++level) {
      const Outcome packed = Deflate(data, level);
      ASSERT_TRUE(packed.result);
      // Stored blocks are cut by the room for output, so that only they differ.
      EXPECT_TRUE(level == 0 || packed.bytes == Deflated(data, 15, level));
      EXPECT_TRUE(Inflate(packed.bytes + "what follows").bytes == data);
      EXPECT_EQ(packed.out, "");
    }
  }
}

TEST(MemoryCompression, OtherLevelsAndEmptyInputAreRefusedWithoutALine) {
  for (const Outcome& refused :
       {Deflate("data", 10), Deflate("data", -2), Deflate("", 6), Inflate("")}) {
    EXPECT_FALSE(refused.result);
    EXPECT_EQ(refused.out, "");
  }
}

TEST(MemoryCompression, BadInputIsPrintedInALine) {
  std::cout << std::hex;  // The host's setting, which codes don't follow.
  const std::string needsDictionary("\x78\xBB\0\0\0\0", 6);
  EXPECT_EQ(Inflate(needsDictionary).out, "Exception during zlib decompression: (2) \n");
  EXPECT_EQ(Inflate("no zlib stream").out,
            "Exception during zlib decompression: (-3) incorrect header check\n");
  std::cout << std::dec;
}

// Result, capacity, and the whole buffer with 8 bytes after it.
using Gunzipped = std::tuple<int32_t, uint32_t, std::string>;

template <typename Operation>
Gunzipped Gunzip(Operation operation, const std::string& data, uint32_t capacity) {
  std::string bytes(capacity + 8, '#');
  const int32_t result =
      operation(reinterpret_cast<const uint8_t*>(data.data()), static_cast<uint32_t>(data.size()),
                reinterpret_cast<uint8_t*>(bytes.data()), &capacity);
  return {result, capacity, bytes};
}

int32_t ByLibrary(const uint8_t* data, uint32_t size, uint8_t* output, uint32_t* capacity) {
  return TmvUtilityUnzip()->GunzipBuffer(data, size, output, capacity);
}

// A stream of any shape, whole or damaged: random settings of zlib, flushes in odd places, several
// members, bits turned, the end cut off.
std::string AnyStream(std::mt19937& random, int windowBits) {
  const auto below = [&random](size_t limit) { return static_cast<size_t>(random()) % limit; };
  std::string packed;
  do {
    std::string data = NoisyBytes(below(3000), static_cast<uint32_t>(random()));
    const size_t letters = 1 + below(256);  // With few, codes are short; with all, of 8 bits.
    for (char& byte : data) byte = static_cast<char>(static_cast<uint8_t>(byte) % letters);
    if (below(3) == 0) data += std::string(below(5000), 'r');
    z_stream stream = {};
    const int strategies[] = {Z_DEFAULT_STRATEGY, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    deflateInit2(&stream, static_cast<int>(below(10)), Z_DEFLATED, windowBits, 8,
                 strategies[below(4)]);
    stream.next_in = reinterpret_cast<Bytef*>(data.data());
    std::string member(2 * data.size() + 2000, '\0');
    stream.next_out = reinterpret_cast<Bytef*>(member.data());
    stream.avail_out = static_cast<uInt>(member.size());
    const int flushes[] = {Z_NO_FLUSH, Z_PARTIAL_FLUSH, Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_BLOCK};
    for (size_t i = below(4); i > 0; --i) {
      stream.avail_in = static_cast<uInt>(below(data.size() - stream.total_in + 1));
      deflate(&stream, flushes[below(5)]);
    }
    stream.avail_in = static_cast<uInt>(data.size() - stream.total_in);
    deflate(&stream, Z_FINISH);
    packed += member.substr(0, stream.total_out);
    deflateEnd(&stream);
  } while (below(4) == 0);
  for (size_t i = below(2) * below(3); i > 0; --i) {
    char& byte = packed[below(packed.size())];
    byte = static_cast<char>(byte ^ 1 << below(8));
  }
  if (below(3) == 0) packed.resize(below(packed.size() + 1));
  return packed;
}

TEST(MemoryCompression, ResultsAreThoseOfTheDocumentedLoops) {
  std::mt19937 random(20240131);
  std::ostringstream printed;
  std::streambuf* const console = std::cout.rdbuf(printed.rdbuf());
  for (int i = 0; i < 3000; ++i) {
    const std::string packed = AnyStream(random, 31);
    const uint32_t length = std::get<uint32_t>(Gunzip(GunzipByBytes, packed, 20'000));
    // Around the end of the contents, and anywhere.
    const uint32_t near = length + static_cast<uint32_t>(random() % 9);
    const auto capacity = i % 2 == 0 ? near - std::min(near, 6u) : near % 8000;
    ASSERT_EQ(Gunzip(ByLibrary, packed, capacity), Gunzip(GunzipByBytes, packed, capacity)) << i;

    const std::string zlib = AnyStream(random, 15);
    ASSERT_EQ(Gunzip(ByLibrary, zlib, 100), Gunzip(GunzipByBytes, zlib, 100)) << "no gzip";
    std::string contents;
    std::string message;
    const int last = InflateByBlocks(reinterpret_cast<const uint8_t*>(zlib.data()),
                                     static_cast<uint32_t>(zlib.size()), &contents, &message);
    tmv::Bytes record;
    printed.str("");
    const bool isWhole = TmvUtilityUnzip()->InflateBuffer(record.Out(), zlib.data(),
                                                          static_cast<uint32_t>(zlib.size()));
    ASSERT_EQ(isWhole, last == Z_STREAM_END) << i;
    ASSERT_EQ(record.View(), isWhole ? contents : "") << i;
    const std::string line = "Exception during zlib decompression: (" + std::to_string(last) + ") ";
    ASSERT_EQ(printed.str(), isWhole || zlib.empty() ? "" : line + message + "\n") << i;
  }
  std::cout.rdbuf(console);
}

}  // namespace
