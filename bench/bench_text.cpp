// Text conversions of 16 MB beside iconv, in one process.
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <temvar/utility_string.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>

namespace {

constexpr size_t kSize = 16 * 1024 * 1024;

TMVUtilityString* const text = TmvUtilityString();

void AppendRun(std::string& out, const char* const* letters, size_t count, std::mt19937& random) {
  for (size_t i = 4 + random() % 12; i != 0; --i) out += letters[random() % count];
}

// Words of ASCII, Greek, CJK and now and then an emoji, as in a list of files of the world.
const std::string& MixedText() {
  static const std::string mixed = [] {
    const char* const ascii[] = {"a", "e", "i", "n", "o", "s", "t", "r", "_", "1"};
    const char* const greek[] = {"\xCE\xB1", "\xCE\xB5", "\xCE\xB9", "\xCE\xBF", "\xCF\x83"};
    const char* const cjk[] = {"\xE4\xB8\xAD", "\xE6\x96\x87", "\xE5\xAD\x97", "\xE3\x81\x8B"};
    const char* const emoji[] = {"\xF0\x9F\x98\x80", "\xF0\x9F\x8E\x89"};
    std::mt19937 random(1);
    std::string out;
    while (out.size() < kSize) {
      const auto kind = random() % 20;
      if (kind < 10) {
        AppendRun(out, ascii, 10, random);
      } else if (kind < 15) {
        AppendRun(out, greek, 5, random);
      } else if (kind < 19) {
        AppendRun(out, cjk, 4, random);
      } else {
        out += emoji[random() % 2];
      }
      out += ' ';
    }
    return out;
  }();
  return mixed;
}

const std::string& AsciiText() {
  static const std::string ascii(kSize, 'x');
  return ascii;
}

const std::u16string& Widened(const std::string& source) {
  static std::u16string mixed;
  static std::u16string ascii;
  std::u16string& wide = &source == &MixedText() ? mixed : ascii;
  if (wide.empty()) {
    TmvWideChar* const block = text->Utf8ToWide(source.c_str());
    wide.assign(block);
    text->FreeString(block);
  }
  return wide;
}

void Utf8ToWide(benchmark::State& state, const std::string& source) {
  for (auto _ : state) {
    TmvWideChar* const wide = text->Utf8ToWide(source.c_str());
    benchmark::DoNotOptimize(wide[0]);
    text->FreeString(wide);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * source.size()));
}

void WideToUtf8(benchmark::State& state, const std::string& source) {
  const std::u16string& wide = Widened(source);
  for (auto _ : state) {
    char* const utf8 = text->WideToUtf8(wide.c_str());
    benchmark::DoNotOptimize(utf8[0]);
    text->FreeString(utf8);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * source.size()));
}

// One call of iconv into a fresh block that is surely large enough, as a host would do it.
void Iconv(benchmark::State& state, const char* to, const char* from, const void* source,
           size_t size, size_t capacity, size_t bytes_of_utf8) {
  const iconv_t converter = iconv_open(to, from);
  if (converter == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open");
  for (auto _ : state) {
    // iconv takes its input as bytes that may change, and changes none.
    char* in = static_cast<char*>(const_cast<void*>(source));
    size_t in_left = size;
    char* const block = static_cast<char*>(std::calloc(capacity, 1));
    char* out = block;
    size_t out_left = capacity;
    if (iconv(converter, &in, &in_left, &out, &out_left) != 0) throw std::runtime_error("iconv");
    benchmark::DoNotOptimize(block[0]);
    std::free(block);
  }
  iconv_close(converter);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes_of_utf8));
}

void IconvToWide(benchmark::State& state, const std::string& source) {
  Iconv(state, "UTF-16LE", "UTF-8", source.data(), source.size(), source.size() * 2, source.size());
}

void IconvToUtf8(benchmark::State& state, const std::string& source) {
  const std::u16string& wide = Widened(source);
  Iconv(state, "UTF-8", "UTF-16LE", wide.data(), wide.size() * 2, wide.size() * 3, source.size());
}

void SanitizeUtf8(benchmark::State& state, const std::string& source) {
  std::string buffer = source;
  for (auto _ : state) {
    text->SanitizeUtf8(reinterpret_cast<uint8_t*>(buffer.data()),
                       static_cast<uint32_t>(buffer.size()), '?');
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * source.size()));
}

BENCHMARK_CAPTURE(Utf8ToWide, mixed, MixedText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IconvToWide, mixed, MixedText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WideToUtf8, mixed, MixedText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IconvToUtf8, mixed, MixedText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Utf8ToWide, ascii, AsciiText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IconvToWide, ascii, AsciiText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WideToUtf8, ascii, AsciiText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IconvToUtf8, ascii, AsciiText())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SanitizeUtf8, mixed, MixedText())->Unit(benchmark::kMillisecond);

}  // namespace
