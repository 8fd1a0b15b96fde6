// Unpacking of an archive of 4,600 files beside libzip, in one run. Both print a line a file, make
// folders as they come, give each file its time and check each CRC.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <temvar/handles.h>
#include <unistd.h>
#include <zip.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string Text(size_t size, std::mt19937& random) {
  std::string text;
  while (text.size() < size) {
    const size_t word = random() % 400;
    text += "word" + std::to_string(word * word) + (random() % 12 == 0 ? "\n" : " ");
  }
  return text.substr(0, size);
}

std::string Noise(size_t size, std::mt19937& random) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

// Some 100 MB in memory: three quarters of text, one quarter that doesn't pack.
class Folder {
 public:
  Folder() {
    fs::remove_all(path_);
    std::mt19937 random(1);
    for (int i = 0; i < 4600; ++i) {
      const fs::path folder =
          path_ / "tree" / ("part" + std::to_string(i / 115)) / std::to_string(i % 3);
      fs::create_directories(folder);
      const size_t size = 2000 + random() % 40000;
      std::ofstream(folder / ("file" + std::to_string(i) + ".dat"), std::ios::binary)
          << (i % 4 == 0 ? Noise(size, random) : Text(size, random));
    }
    tmv::Zip zip = tmv::MakeZip();
    zip->AddDirectory((path_ / "tree").c_str(), nullptr);
    zip->WriteArchive(Archive().c_str(), nullptr);
  }
  ~Folder() { fs::remove_all(path_); }

  std::string Archive() const { return path_ / "a.zip"; }
  std::string Destination() const { return path_ / "out"; }

  // An empty place again, out of the measured time.
  void Clear(benchmark::State& state) const {
    state.PauseTiming();
    fs::remove_all(Destination());
    state.ResumeTiming();
  }

 private:
  const fs::path path_ = "/dev/shm/temvar-bench-archives";
};

const Folder& TheFolder() {
  static const Folder folder;
  return folder;
}

// The lines of the files would drown those of the benchmark.
class Silence {
 public:
  Silence() : kept_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int nothing = open("/dev/null", O_WRONLY);
    dup2(nothing, STDOUT_FILENO);
    close(nothing);
  }
  ~Silence() {
    std::fflush(stdout);
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
  }

 private:
  const int kept_;
};

void Unpack(benchmark::State& state) {
  const Folder& folder = TheFolder();
  const Silence silence;
  for (auto _ : state) {
    folder.Clear(state);
    if (!TmvUtilityUnzip()->ExtractArchive(folder.Archive().c_str(),
                                           folder.Destination().c_str())) {
      throw std::runtime_error("not unpacked");
    }
  }
}
BENCHMARK(Unpack)->Unit(benchmark::kMillisecond)->UseRealTime();

void UnpackEntry(zip_t* archive, zip_uint64_t index, const std::string& destination,
                 std::string& known, std::vector<char>& block) {
  zip_stat_t info;
  zip_stat_index(archive, index, 0, &info);
  const std::string path = destination + info.name;
  const std::string folder = path.substr(0, path.rfind('/'));
  if (folder != known) fs::create_directories(known = folder);
  std::printf(" extracting: %s\n", path.c_str());
  zip_file_t* const input = zip_fopen_index(archive, index, 0);
  std::FILE* const output = std::fopen(path.c_str(), "wb");
  zip_int64_t count = 0;
  while ((count = zip_fread(input, block.data(), block.size())) > 0) {
    std::fwrite(block.data(), 1, static_cast<size_t>(count), output);
  }
  std::fclose(output);
  if (count < 0 || zip_fclose(input) != 0) throw std::runtime_error("damaged");
  const timespec times[] = {{0, UTIME_OMIT}, {info.mtime, 0}};
  utimensat(AT_FDCWD, path.c_str(), times, 0);
}

void UnpackWithLibzip(benchmark::State& state) {
  const Folder& folder = TheFolder();
  const Silence silence;
  std::vector<char> block(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    folder.Clear(state);
    int error = 0;
    zip_t* const archive = zip_open(folder.Archive().c_str(), ZIP_RDONLY, &error);
    if (archive == nullptr) throw std::runtime_error("not opened");
    std::string known;
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
      UnpackEntry(archive, static_cast<zip_uint64_t>(i), folder.Destination() + "/", known, block);
    }
    zip_discard(archive);
  }
}
BENCHMARK(UnpackWithLibzip)->Arg(8192)->Arg(64 << 10)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
