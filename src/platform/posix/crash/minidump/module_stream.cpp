#include "platform/posix/crash/minidump/module_stream.h"

#include <unistd.h>

#include <cstring>

#include "platform/posix/crash/minidump/images.h"
#include "platform/posix/files/narrow_path.h"

namespace temvar::posix::minidump {
namespace {

class ModuleListWriter {
 public:
  ModuleListWriter(DumpFile& file, const MINIDUMP_CALLBACK_INFORMATION* callback)
      : file_(file), callback_(callback) {
    ProgramPath(program_);
  }

  void Write() {
    capacity_ = CountImages();
    const size_t size = sizeof(count_) + capacity_ * sizeof(Module);
    list_ = file_.Reserve(size);
    WriteImages(true);
    WriteImages(false);
    file_.WriteAt(list_, &count_, sizeof(count_));
    // What another thread has unloaded meanwhile leaves its place unused.
    const size_t used = sizeof(count_) + count_ * sizeof(Module);
    file_.AddStream(kModuleListStream, {static_cast<uint32_t>(used), list_});
  }

 private:
  uint32_t CountImages() {
    ImageReader images;
    uint32_t count = 0;
    while (images.Next(image_)) ++count;
    return count;
  }

  // Either the program, or everything else.
  void WriteImages(bool program) {
    ImageReader images;
    while (count_ < capacity_ && images.Next(image_)) {
      const bool is_program = std::strcmp(image_.path, program_) == 0;
      if (is_program == program && Wanted()) WriteImage();
    }
  }

  bool Wanted() {
    if (callback_ == nullptr || callback_->CallbackRoutine == nullptr) return true;
    WideFileName(image_.path, wide_path_, sizeof(wide_path_) / sizeof(wide_path_[0]));
    MINIDUMP_CALLBACK_INPUT input = {};
    input.ProcessId = static_cast<DWORD>(getpid());
    input.CallbackType = ModuleCallback;
    input.Module = {wide_path_, image_.base, static_cast<DWORD>(image_.size)};
    MINIDUMP_CALLBACK_OUTPUT output = {ModuleWriteModule | ModuleWriteMiscRecord |
                                       ModuleWriteCvRecord};
    return callback_->CallbackRoutine(callback_->CallbackParam, &input, &output) != FALSE;
  }

  void WriteImage() {
    Module module = {};
    module.base = image_.base;
    module.size = static_cast<uint32_t>(image_.size);
    module.name_offset = file_.AppendText(image_.path);
    if (image_.build_id_size > 0) {
      struct {
        BuildIdHeader header;
        uint8_t id[kMaxBuildId];
      } record = {};
      record.header.signature = kBuildIdSignature;
      std::memcpy(record.id, image_.build_id, image_.build_id_size);
      module.build_id = file_.Append(&record, sizeof(record.header) + image_.build_id_size);
    }
    const size_t at = sizeof(count_) + count_ * sizeof(Module);
    file_.WriteAt(list_ + static_cast<uint32_t>(at), &module, sizeof(module));
    ++count_;
  }

  DumpFile& file_;
  const MINIDUMP_CALLBACK_INFORMATION* callback_;
  uint32_t list_ = 0;
  uint32_t count_ = 0;
  uint32_t capacity_ = 0;
  char program_[PATH_MAX];
  TmvWideChar wide_path_[PATH_MAX];
  Image image_;
};

}  // namespace

void WriteModuleList(DumpFile& file, const MINIDUMP_CALLBACK_INFORMATION* callback) {
  ModuleListWriter(file, callback).Write();
}

}  // namespace temvar::posix::minidump
