// MD5 of a file of 1 GB beside the programs that people use for it. The file is made in the folder
// for temporary files and is in the page cache, so that processors are compared and not disks.
#include <benchmark/benchmark.h>
#include <temvar/utility_string.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

constexpr int64_t kSize = int64_t{1} << 30;

class LargeFile {
 public:
  LargeFile() : path_(std::filesystem::temp_directory_path() / "temvar-bench-digest.bin") {
    std::string block(1 << 20, '\0');
    std::mt19937 random(1);
    for (char& byte : block) byte = static_cast<char>(random());
    std::ofstream stream(path_, std::ios::binary);
    for (int64_t size = 0; size < kSize; size += static_cast<int64_t>(block.size()))
      stream << block;
  }
  ~LargeFile() { std::filesystem::remove(path_); }
  std::string path() const { return path_.string(); }

 private:
  const std::filesystem::path path_;
};

const std::string& Path() {
  static const LargeFile file;
  static const std::string path = file.path();
  return path;
}

void Md5OfFile(benchmark::State& state) {
  const std::string path = Path();
  for (auto _ : state) {
    char* const digest = TmvUtilityString()->Md5OfFile(path.c_str());
    TmvUtilityString()->FreeString(digest);
  }
  state.SetBytesProcessed(state.iterations() * kSize);
}

void Program(benchmark::State& state, const std::string& command) {
  const std::string line = command + " '" + Path() + "'";
  for (auto _ : state) {
    if (std::system(line.c_str()) != 0) state.SkipWithError("the program failed or is missing");
  }
  state.SetBytesProcessed(state.iterations() * kSize);
}

BENCHMARK(Md5OfFile)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(Program, md5sum, std::string("md5sum"))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(Program, openssl, std::string("openssl dgst -md5"))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

}  // namespace
