#include "file_task.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "support/report.h"

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
bool ReadFile(RkTask* task, FileWork& work, Progress& progress, const support::JobControl& job) {
  std::ifstream file = OpenFile(work.path);
  std::vector<char> chunk(kChunk);
  do {
    if (!job.KeepGoing(task)) return false;
    file.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    CountChunk(work, chunk, static_cast<size_t>(file.gcount()));
    progress.bytes += static_cast<uint64_t>(file.gcount());
  } while (file);
  if (file.bad()) throw std::system_error(EIO, std::generic_category());
  return true;
}

}  // namespace

void RunFileTask(RkTask* task, FileWork& work, Progress& progress, const support::JobControl& job) {
  work.error = support::RunReported(task, [&] {
    if (!ReadFile(task, work, progress, job)) return false;
    work.outcome = FileWork::Outcome::kDone;
    ++progress.filesDone;
    return true;
  });
  if (work.error) {
    work.outcome = FileWork::Outcome::kFailed;
    ++progress.filesFailed;
  }
}

}  // namespace job_runner
