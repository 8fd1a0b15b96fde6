// Decoding of a compiled manifest, and look-ups in it. The document is the file that
// TEMVAR_BENCH_MANIFEST names (bench/compare_manifest makes one), else one of 5,000 elements made
// here.
#include <benchmark/benchmark.h>
#include <temvar/android_manifest.h>
#include <temvar/utility_string.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "support/manifest_builder.h"

namespace {

using test::Bytes;

Bytes Document() {
  if (const char* path = std::getenv("TEMVAR_BENCH_MANIFEST")) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  test::ManifestBuilder builder({"manifest", "package", "org.example.large", "activity", "name",
                                 ".ActivityOfTheHost", "exported", "theme"});
  builder.Start(0, {{1, 2}});
  for (int i = 0; i < 5000; ++i) {
    builder.Start(3, {{4, 5}, {6, test::kNone, 1}, {7, test::kNone, 0x0103000C}});
    builder.End(3);
  }
  return builder.End(0).Build();
}

void Decode(benchmark::State& state) {
  const Bytes document = Document();
  for (auto _ : state) {
    TMVAndroidManifest* manifest = CreateTmvAndroidManifest();
    manifest->Decode(document.data(), static_cast<int32_t>(document.size()));
    DestroyTmvAndroidManifest(manifest);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document.size()));
}

void LookUpAbsent(benchmark::State& state) {
  const Bytes document = Document();
  TMVAndroidManifest* manifest = CreateTmvAndroidManifest();
  manifest->Decode(document.data(), static_cast<int32_t>(document.size()));
  for (auto _ : state) {
    TmvUtilityString()->FreeString(manifest->GetAttributeValue("notThere"));
  }
  DestroyTmvAndroidManifest(manifest);
}

BENCHMARK(Decode)->Unit(benchmark::kMicrosecond);
BENCHMARK(LookUpAbsent)->Unit(benchmark::kMicrosecond);

}  // namespace
