#include "platform/posix/crash/minidump/module_stream.h"

#include <unistd.h>

#include <cstring>
#include <iterator>
#include <utility>

#include "platform/posix/crash/minidump/images.h"
#include "platform/posix/files/narrow_path.h"

namespace temvar::posix::minidump {
namespace {

constexpr uint32_t kMaxModules = 4096;

// Static, since the stack of a report is small; one dump is made at a time.
constinit Module modules[kMaxModules] = {};
constinit char program[PATH_MAX] = "";
constinit TmvWideChar widePath[PATH_MAX] = {};

bool IsWanted(const Image& image, const MINIDUMP_CALLBACK_INFORMATION* callback) {
  if (callback == nullptr || callback->CallbackRoutine == nullptr) return true;
  WideFileName(image.path, widePath, std::size(widePath));
  MINIDUMP_CALLBACK_INPUT input = {};
  input.ProcessId = static_cast<DWORD>(getpid());
  input.CallbackType = ModuleCallback;
  input.Module = {widePath, image.base, static_cast<DWORD>(image.size)};
  MINIDUMP_CALLBACK_OUTPUT output = {ModuleWriteModule | ModuleWriteMiscRecord |
                                     ModuleWriteCvRecord};
  return callback->CallbackRoutine(callback->CallbackParam, &input, &output) != FALSE;
}

Module AppendImage(DumpFile& file, const Image& image) {
  Module module = {};
  module.base = image.base;
  module.size = static_cast<uint32_t>(image.size);
  module.nameOffset = file.AppendText(image.path);
  if (image.buildIdSize > 0) {
    struct {
      BuildIdHeader header;
      uint8_t id[kMaxBuildId];
    } record = {};
    record.header.signature = kBuildIdSignature;
    std::memcpy(record.id, image.buildId, image.buildIdSize);
    module.buildId = file.Append(&record, sizeof(record.header) + image.buildIdSize);
  }
  return module;
}

}  // namespace

void WriteModuleList(DumpFile& file, const MINIDUMP_CALLBACK_INFORMATION* callback) {
  static constinit Image image = {};
  ProgramPath(program);
  uint32_t count = 0;
  ImageReader images;
  while (count < kMaxModules && images.Next(image)) {
    if (!IsWanted(image, callback)) continue;
    modules[count] = AppendImage(file, image);
    // Readers take the first module for the program.
    if (std::strcmp(image.path, program) == 0) std::swap(modules[0], modules[count]);
    ++count;
  }
  const uint32_t size = count * static_cast<uint32_t>(sizeof(Module));
  const uint32_t list = file.Reserve(sizeof(count) + size);
  file.WriteAt(list, &count, sizeof(count));
  file.WriteAt(list + static_cast<uint32_t>(sizeof(count)), modules, size);
  file.AddStream(kModuleListStream, {static_cast<uint32_t>(sizeof(count)) + size, list});
}

}  // namespace temvar::posix::minidump
