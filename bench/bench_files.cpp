// DirectorySize of a tree of 100,000 files beside du, in one run.
#include <benchmark/benchmark.h>
#include <temvar/utility_file.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

// 100,000 files of 0 to 99 bytes in 1,000 folders of 10 each, two levels deep.
class Tree {
 public:
  Tree() : path_(fs::temp_directory_path() / "temvar-bench-tree") {
    fs::remove_all(path_);
    for (int i = 0; i < 100'000; ++i) {
      const fs::path folder = path_ / std::to_string(i / 1000) / std::to_string(i / 100 % 10);
      if (i % 100 == 0) fs::create_directories(folder);
      const auto size = static_cast<size_t>(i % 100);
      std::ofstream(folder / ("file " + std::to_string(i))) << std::string(size, 'x');
      bytes_ += size;
    }
  }
  ~Tree() { fs::remove_all(path_); }

  std::string path() const { return path_.string(); }
  uint64_t bytes() const { return bytes_; }

 private:
  const fs::path path_;
  uint64_t bytes_ = 0;
};

const Tree& TheTree() {
  static const Tree tree;
  return tree;
}

void DirectorySize(benchmark::State& state) {
  const std::string path = TheTree().path();
  for (auto _ : state) {
    if (TmvUtilityFile()->DirectorySize(path.c_str(), 0) != TheTree().bytes()) {
      throw std::runtime_error("wrong size");
    }
  }
}
BENCHMARK(DirectorySize)->Unit(benchmark::kMillisecond)->UseRealTime();

// du follows links as DirectorySize does, and counts the bytes of files; directories count too.
void Du(benchmark::State& state) {
  const std::string command = "du -s -b -L '" + TheTree().path() + "' > /dev/null";
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error("du failed");
  }
}
BENCHMARK(Du)->Unit(benchmark::kMillisecond)->UseRealTime();

// The C++ library's own walk.
void RecursiveIterator(benchmark::State& state) {
  for (auto _ : state) {
    uint64_t total = 0;
    for (const auto& entry : fs::recursive_directory_iterator(TheTree().path())) {
      if (entry.is_regular_file()) total += entry.file_size();
    }
    if (total != TheTree().bytes()) throw std::runtime_error("wrong size");
  }
}
BENCHMARK(RecursiveIterator)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadWholeFile(benchmark::State& state) {
  const std::string path = (fs::temp_directory_path() / "temvar-bench-file").string();
  TmvUtilityFile()->CreateFileOfSize(path.c_str(), 100 << 20);
  for (auto _ : state) {
    BinaryDataResult result;
    if (!TmvUtilityFile()->ReadWholeFile(&result, path.c_str())) throw std::runtime_error("unread");
    FreeBinayDataResult(&result);
  }
  state.SetBytesProcessed(state.iterations() * (100 << 20));
  fs::remove(path);
}
BENCHMARK(ReadWholeFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void StreamIntoString(benchmark::State& state) {
  const std::string path = (fs::temp_directory_path() / "temvar-bench-file").string();
  TmvUtilityFile()->CreateFileOfSize(path.c_str(), 100 << 20);
  for (auto _ : state) {
    std::string bytes(100 << 20, '\0');
    std::ifstream(path, std::ios::binary).read(bytes.data(), 100 << 20);
    benchmark::DoNotOptimize(bytes.data());
  }
  state.SetBytesProcessed(state.iterations() * (100 << 20));
  fs::remove(path);
}
BENCHMARK(StreamIntoString)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
