#include "platform/posix/crash/minidump/images.h"

#include <elf.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/posix/crash/minidump/memory.h"

namespace temvar::posix::minidump {
namespace {

using FileHeader = ElfW(Ehdr);
using ProgramHeader = ElfW(Phdr);
using NoteHeader = ElfW(Nhdr);

constexpr size_t kMaxProgramHeaders = 128;
constexpr uint64_t kMaxNotes = 64 * 1024;

bool IsElf(uint64_t address, FileHeader& header) {
  return CopyMemory(address, &header, sizeof(header)) &&
         std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
         header.e_phentsize == sizeof(ProgramHeader);
}

uint64_t Padded(uint64_t size) { return (size + 3) & ~uint64_t{3}; }

// Looks for the note with the build identifier among the notes at `address`.
void ReadBuildId(uint64_t address, uint64_t size, Image& image) {
  uint64_t at = 0;
  NoteHeader note;
  while (size <= kMaxNotes && at + sizeof(note) <= size &&
         CopyMemory(address + at, &note, sizeof(note))) {
    const uint64_t name = address + at + sizeof(note);
    const uint64_t content = name + Padded(note.n_namesz);
    at += sizeof(note) + Padded(note.n_namesz) + Padded(note.n_descsz);
    if (at > size) return;
    char owner[4] = {};
    if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == sizeof(owner) &&
        note.n_descsz <= kMaxBuildId && CopyMemory(name, owner, sizeof(owner)) &&
        std::memcmp(owner, "GNU", sizeof(owner)) == 0) {
      if (CopyMemory(content, image.buildId, note.n_descsz)) image.buildIdSize = note.n_descsz;
      return;
    }
  }
}

// Fills in what the headers of the image at `image.base` say. False when they make no sense.
bool ReadHeaders(Image& image) {
  FileHeader header;
  if (!IsElf(image.base, header)) return false;
  ProgramHeader segments[kMaxProgramHeaders];
  const size_t count = std::min<size_t>(header.e_phnum, kMaxProgramHeaders);
  if (!CopyMemory(image.base + header.e_phoff, segments, count * sizeof(ProgramHeader))) {
    return false;
  }
  uint64_t first = UINT64_MAX;
  uint64_t last = 0;
  for (size_t i = 0; i < count; ++i) {
    const ProgramHeader& segment = segments[i];
    if (segment.p_type != PT_LOAD) continue;
    const uint64_t end = segment.p_vaddr + segment.p_memsz;
    if (end < segment.p_vaddr) return false;
    first = std::min<uint64_t>(first, segment.p_vaddr);
    last = std::max(last, end);
  }
  // A dump has 32 bits for the size of an image.
  if (first >= last || last - first > UINT32_MAX) return false;
  image.size = last - first;
  for (size_t i = 0; i < count && image.buildIdSize == 0; ++i) {
    const ProgramHeader& segment = segments[i];
    if (segment.p_type != PT_NOTE) continue;
    ReadBuildId(image.base + segment.p_vaddr - first, segment.p_memsz, image);
  }
  return true;
}

}  // namespace

bool ImageReader::Next(Image& image) {
  Mapping mapping;
  FileHeader header;
  while (maps_.Next(mapping)) {
    if (mapping.path[0] != '/' || std::strlen(mapping.path) >= PATH_MAX) continue;
    if (mapping.offset == 0 && mapping.readable && IsElf(mapping.start, header)) {
      std::strcpy(candidate_, mapping.path);
      candidateBase_ = mapping.start;
    }
    if (!mapping.executable || std::strcmp(mapping.path, candidate_) != 0) continue;
    candidate_[0] = '\0';
    image.base = candidateBase_;
    std::strcpy(image.path, mapping.path);
    image.buildIdSize = 0;
    if (ReadHeaders(image)) return true;
  }
  return false;
}

void ProgramPath(char* path) {
  const ssize_t length = readlink("/proc/self/exe", path, PATH_MAX - 1);
  path[length > 0 ? length : 0] = '\0';
}

}  // namespace temvar::posix::minidump
