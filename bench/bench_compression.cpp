// GunzipBuffer and InflateBuffer beside zlib called once with room for the whole result, in one
// run.
#include <benchmark/benchmark.h>
#include <temvar/handles.h>
#include <zlib.h>

#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

namespace {

constexpr uint32_t kSize = 64 << 20;

// 64 MB that pack to a third: text with noise in between.
const std::string& Plain() {
  static const std::string plain = [] {
    std::mt19937 random(1);
    std::string text;
    text.reserve(kSize + 100);
    while (text.size() < kSize) {
      const size_t word = random() % 400;
      text += "word" + std::to_string(word * word) + (random() % 12 == 0 ? "\n" : " ");
      if (random() % 16 == 0) text += static_cast<char>(random());
    }
    text.resize(kSize);
    return text;
  }();
  return plain;
}

std::string Packed(int windowBits) {
  z_stream stream = {};
  deflateInit2(&stream, 6, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, kSize) + 64, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(Plain().data()));
  stream.avail_in = kSize;
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

const std::string& Gzipped() {
  static const std::string packed = Packed(31);
  return packed;
}
const std::string& Zlibbed() {
  static const std::string packed = Packed(15);
  return packed;
}

void Check(bool good) {
  if (!good) throw std::runtime_error("wrong result");
}

// One call of zlib into `output`.
void InflateOnce(const std::string& packed, int windowBits, char* output) {
  z_stream stream = {};
  inflateInit2(&stream, windowBits);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(output);
  stream.avail_out = kSize;
  Check(inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.total_out == kSize);
  inflateEnd(&stream);
}

// Packing takes longer than unpacking, and must not fall into the first measured round.
void Prepare(const benchmark::State&) {
  Gzipped();
  Zlibbed();
}

void Rate(benchmark::State& state) { state.SetBytesProcessed(state.iterations() * kSize); }

void GunzipBuffer(benchmark::State& state) {
  const auto output = std::make_unique<char[]>(kSize + 1000);
  for (auto _ : state) {
    // With room to spare, and with exactly the room needed.
    uint32_t capacity = kSize + static_cast<uint32_t>(state.range(0));
    const auto size = static_cast<uint32_t>(Gzipped().size());
    Check(TmvUtilityUnzip()->GunzipBuffer(Gzipped().data(), size, output.get(), &capacity) == 0 &&
          capacity == kSize);
  }
  Rate(state);
}
BENCHMARK(GunzipBuffer)->Arg(0)->Arg(1000)->Setup(Prepare)->Unit(benchmark::kMillisecond);

void GunzipOnce(benchmark::State& state) {
  const auto output = std::make_unique<char[]>(kSize);
  for (auto _ : state) InflateOnce(Gzipped(), 31, output.get());
  Rate(state);
}
BENCHMARK(GunzipOnce)->Setup(Prepare)->Unit(benchmark::kMillisecond);

void InflateBuffer(benchmark::State& state) {
  for (auto _ : state) {
    tmv::Bytes result;
    const auto size = static_cast<uint32_t>(Zlibbed().size());
    Check(TmvUtilityUnzip()->InflateBuffer(result.Out(), Zlibbed().data(), size) &&
          result.View().size() == kSize);
  }
  Rate(state);
}
BENCHMARK(InflateBuffer)->Setup(Prepare)->Unit(benchmark::kMillisecond);

// Into fresh memory, as InflateBuffer must; and into memory that was used before.
void InflateOnceFresh(benchmark::State& state) {
  for (auto _ : state) {
    const auto output = std::make_unique_for_overwrite<char[]>(kSize);
    InflateOnce(Zlibbed(), 15, output.get());
  }
  Rate(state);
}
BENCHMARK(InflateOnceFresh)->Setup(Prepare)->Unit(benchmark::kMillisecond);

void InflateOnce(benchmark::State& state) {
  const auto output = std::make_unique<char[]>(kSize);
  for (auto _ : state) InflateOnce(Zlibbed(), 15, output.get());
  Rate(state);
}
BENCHMARK(InflateOnce)->Setup(Prepare)->Unit(benchmark::kMillisecond);

}  // namespace
