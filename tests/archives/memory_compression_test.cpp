// DeflateBuffer, InflateBuffer and GunzipBuffer, against zlib called directly.
#include "archives/archive_test.h"

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
  return Run([&](BinaryDataResult* record) {
    return tmv::MakeZip()->DeflateBuffer(record, data.data(), static_cast<uint32_t>(data.size()),
                                         level);
  });
}

Outcome Inflate(const std::string& data) {
  return Run([&](BinaryDataResult* record) {
    return TmvUtilityUnzip()->InflateBuffer(record, data.data(),
                                            static_cast<uint32_t>(data.size()));
  });
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

TEST(MemoryCompression, BadInputIsToldInALine) {
  const std::string packed = Deflated(NoisyBytes(5000), 15);
  std::string wrongSum = packed;
  wrongSum.back() ^= 1;
  const std::string dictionary("\x78\xBB\0\0\0\0", 6);
  const std::string start = "Exception during zlib decompression: (";
  const std::pair<std::string, std::string> cases[] = {
      {"not a zlib stream", "-3) incorrect header check"},
      {wrongSum, "-3) incorrect data check"},
      {packed.substr(0, 1), "-5) "},
      {packed.substr(0, 2500), "-5) "},
      {packed.substr(0, packed.size() - 1), "-5) "},
      {dictionary, "2) "},
      {Deflated("gzip", 31), "-3) incorrect header check"},
  };
  for (const auto& [input, text] : cases) {
    const Outcome refused = Inflate(input);
    EXPECT_FALSE(refused.result);
    EXPECT_EQ(refused.out, start + text + "\n");
  }
}

struct Gunzipped {
  int32_t result;
  uint32_t capacity;
  std::string bytes;
};

Gunzipped Gunzip(const std::string& data, uint32_t capacity) {
  Gunzipped gunzipped{0, capacity, std::string(capacity + 8, '#')};
  gunzipped.result = TmvUtilityUnzip()->GunzipBuffer(
      data.data(), static_cast<uint32_t>(data.size()), gunzipped.bytes.data(), &gunzipped.capacity);
  // Nothing behind the capacity is touched.
  EXPECT_EQ(gunzipped.bytes.substr(capacity), "########");
  gunzipped.bytes.resize(std::min(capacity, gunzipped.capacity));
  return gunzipped;
}

TEST(Gunzip, StopsWhereTheCapacityTheInputOrTheMemberEnds) {
  const std::string data = NoisyBytes(3000) + std::string(3000, 'a');
  const std::string packed = Deflated(data, 31);
  for (const uint32_t capacity : {0u, 1u, 2999u, 5999u, 6000u, 6001u, 9000u}) {
    const Gunzipped gunzipped = Gunzip(packed, capacity);
    EXPECT_EQ(gunzipped.result, 0);
    EXPECT_EQ(gunzipped.bytes, data.substr(0, capacity));
  }
  const Gunzipped half = Gunzip(packed.substr(0, packed.size() / 2), 9000);
  EXPECT_EQ(half.result, 0);
  EXPECT_GT(half.capacity, 1000u);
  EXPECT_EQ(half.bytes, data.substr(0, half.capacity));
  EXPECT_EQ(Gunzip(packed + packed, 20000).bytes, data);
  EXPECT_EQ(Gunzip("", 10).bytes, "");
  EXPECT_EQ(Gunzip("", 10).result, 0);
}

TEST(Gunzip, WhatIsNoGzipMemberIsRefused) {
  std::string wrongSum = Deflated("data", 31);
  wrongSum[wrongSum.size() - 6] ^= 1;
  for (const std::string& input :
       {Deflated("zlib", 15), std::string("\x1F\x8B no"), wrongSum, std::string(50, '\0')}) {
    const Gunzipped gunzipped = Gunzip(input, 100);
    EXPECT_EQ(gunzipped.result, -1);
    EXPECT_EQ(gunzipped.capacity, 100u);
  }
}

}  // namespace
