#include "reading.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace job_runner {

namespace {

// Between two pause points lies one chunk.
constexpr size_t kChunk = 64 * 1024;

std::ifstream OpenFile(const std::filesystem::path& path) {
  // Devices and pipes might never end, and a folder has no bytes.
  if (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path)) {
    throw std::runtime_error("not a readable file");
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::system_error(errno, std::generic_category());
  return file;
}

void CountChunk(FileWork& work, const std::vector<char>& chunk, size_t size) {
  const char* const begin = chunk.data();
  work.bytes += size;
  work.lines += static_cast<uint64_t>(std::count(begin, begin + size, '\n'));
  work.crc = static_cast<uint32_t>(
      crc32(work.crc, reinterpret_cast<const Bytef*>(begin), static_cast<uInt>(size)));
}

// False if the job was cancelled on the way.
bool ReadFile(tmv::JobContext& context, FileWork& work, Progress& progress) {
  std::ifstream file = OpenFile(work.path);
  std::vector<char> chunk(kChunk);
  do {
    if (!context.KeepGoing()) return false;
    file.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    CountChunk(work, chunk, static_cast<size_t>(file.gcount()));
    progress.bytes += static_cast<uint64_t>(file.gcount());
  } while (file);
  if (file.bad()) throw std::system_error(EIO, std::generic_category());
  return true;
}

void Read(tmv::JobContext& context, FileWork& work, Progress& progress) {
  try {
    if (ReadFile(context, work, progress)) work.outcome = FileWork::Outcome::kDone;
  } catch (...) {
    work.outcome = FileWork::Outcome::kFailed;
    throw;  // The job keeps the reason.
  }
}

}  // namespace

void AddReading(tmv::Job& job, std::vector<PackageWork>& packages, Progress& progress) {
  for (PackageWork& package : packages) {
    tmv::JobLane lane = job.AddLane(package.name);
    for (FileWork& file : package.files) {
      lane.Then(NameOf(file), [&](tmv::JobContext& context) { Read(context, file, progress); });
    }
  }
}

}  // namespace job_runner
