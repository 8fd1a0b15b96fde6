// Gives the stand-in's dump writer what a process after a crash may hold: stack pointers that lead
// nowhere, pages that can't be read, files that were mapped and are no images.
#include <elf.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <future>
#include <thread>

#include "crash/crash_run.h"
#include "platform/posix/crash/abort_message.h"
#include "platform/posix/crash/minidump/dump.h"
#include "platform/posix/crash/minidump/dump_file.h"

namespace {

using namespace test;
using testing::IsEmpty;

constexpr size_t kPage = 4096;

uint64_t AddressOf(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

// Pages that can be read and written, each with its number in every byte.
class Pages {
 public:
  explicit Pages(size_t count) : size_(count * kPage) {
    at_ = static_cast<char*>(
        mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    for (size_t i = 0; i < count; ++i) std::memset(at_ + i * kPage, static_cast<int>(i), kPage);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;
  ~Pages() { munmap(at_, size_); }

  void Close(size_t page) { mprotect(at_ + page * kPage, kPage, PROT_NONE); }
  const char* At(size_t page, size_t offset = 0) const { return at_ + page * kPage + offset; }

 private:
  size_t size_;
  char* at_;
};

// A file for a dump.
class OpenFile {
 public:
  explicit OpenFile(const std::filesystem::path& path)
      : descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { close(descriptor); }

  const int descriptor;
};

// A fault that never happened.
class Fault {
 public:
  Fault(uint64_t stack, uint64_t instruction) {
    machine_.uc_mcontext.gregs[REG_RSP] = static_cast<greg_t>(stack);
    machine_.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(instruction);
    info_.si_code = SEGV_MAPERR;
    info_.si_addr = reinterpret_cast<void*>(0x1234);
    record_.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
  }

  Minidump Dump(MINIDUMP_CALLBACK_ROUTINE callback = nullptr) {
    const WorkFolder folder;
    {
      const OpenFile file(folder.path() / "dump");
      EXPECT_TRUE(Write(file.descriptor, callback));
    }
    return ReadMinidump(folder.path() / "dump");
  }

  bool Write(int descriptor, MINIDUMP_CALLBACK_ROUTINE callback = nullptr) {
    CONTEXT context = {SIGSEGV, &info_, &machine_};
    EXCEPTION_POINTERS pointers = {&record_, &context};
    const MINIDUMP_EXCEPTION_INFORMATION exception = {GetCurrentThreadId(), &pointers, FALSE};
    const MINIDUMP_CALLBACK_INFORMATION information = {callback, nullptr};
    return temvar::posix::minidump::WriteDump(descriptor, &exception, &information);
  }

 private:
  ucontext_t machine_ = {};
  siginfo_t info_ = {};
  EXCEPTION_RECORD record_ = {};
};

TEST(MinidumpWriter, TakesAStackPointerThatLeadsAnywhere) {
  Pages pages(5);
  pages.Close(0);
  pages.Close(4);
  const char* const bottom = pages.At(1);
  const char* const top = pages.At(4);
  // The start is that of what the dump holds; null where that is of no interest.
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"within", pages.At(2, 1000), pages.At(2, 1000 - 128)},
      {"red zone cut by the end", pages.At(1, 16), bottom},
      {"in the guard", pages.At(0, 2000), bottom},
      {"at the upper end", pages.At(3, kPage - 8), pages.At(3, kPage - 8 - 128)},
      {"no address", reinterpret_cast<const char*>(UINT64_MAX - 7), nullptr},
  };
  for (const auto& [what, pointer, start] : cases) {
    SCOPED_TRACE(what);
    const Minidump dump = Fault(AddressOf(pointer), AddressOf(pointer)).Dump();
    EXPECT_THAT(dump.errors, IsEmpty());
    EXPECT_TRUE(dump.rangesApart);
    EXPECT_EQ(dump.exception.address, 0x1234u);
    EXPECT_EQ(dump.exception.registers.stack, AddressOf(pointer));
    if (start == nullptr) continue;
    const auto range = dump.memory.find(AddressOf(start));
    ASSERT_NE(range, dump.memory.end());
    EXPECT_EQ(range->second, std::string(start, top));
  }
}

TEST(MinidumpWriter, LeavesOutPagesThatCantBeRead) {
  Pages pages(4);
  pages.Close(1);
  const WorkFolder folder;
  const std::filesystem::path path = folder.path() / "dump";
  const OpenFile opened(path);
  temvar::posix::minidump::DumpFile file(opened.descriptor);
  const auto location = file.Append(pages.At(0, 10), 4 * kPage - 10);
  EXPECT_TRUE(file.Finish());
  EXPECT_EQ(ReadAll(path).substr(location.offset, location.size),
            std::string(kPage - 10 + kPage, '\0') + std::string(kPage, 2) + std::string(kPage, 3));
}

// A host's own stacks may lie side by side in one mapping: no address may come twice.
TEST(MinidumpWriter, KeepsStacksApartThatRunIntoEachOther) {
  std::promise<void> end;
  std::atomic<const char*> frame{nullptr};
  std::thread other([&] {
    frame.store(static_cast<const char*>(__builtin_frame_address(0)));
    end.get_future().wait();
  });
  while (frame.load() == nullptr) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  Fault fault(AddressOf(frame.load() - 64 * 1024), AddressOf(frame.load()));
  const Minidump dump = fault.Dump();
  end.set_value();
  other.join();
  EXPECT_THAT(dump.errors, IsEmpty());
  EXPECT_TRUE(dump.rangesApart);
  EXPECT_GT(dump.FindThread(dump.exception.thread)->stackSize, 64u * 1024);
}

TEST(MinidumpWriter, AsksTheCallbackAboutEachModule) {
  static int asked = 0;
  const Minidump dump = Fault(0, 0).Dump(
      [](PVOID, PMINIDUMP_CALLBACK_INPUT input, PMINIDUMP_CALLBACK_OUTPUT) -> BOOL {
        EXPECT_EQ(input->CallbackType, static_cast<DWORD>(ModuleCallback));
        EXPECT_NE(input->Module.BaseOfImage, 0u);
        return ++asked == 2;
      });
  EXPECT_THAT(dump.errors, IsEmpty());
  EXPECT_GT(asked, 2);
  EXPECT_EQ(dump.modules.size(), 1u);
}

// The beginning of an ELF image: header, two segments, and one note with a build identifier.
struct Image {
  Elf64_Ehdr header = {};
  Elf64_Phdr load = {};
  Elf64_Phdr notes = {};
  Elf64_Nhdr note = {};
  char owner[4] = {'G', 'N', 'U', '\0'};
  char id[20] = {'i', 'd'};

  Image() {
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_phoff = offsetof(Image, load);
    header.e_phentsize = sizeof(Elf64_Phdr);
    header.e_phnum = 2;
    load.p_type = PT_LOAD;
    load.p_memsz = kPage;
    notes.p_type = PT_NOTE;
    notes.p_vaddr = offsetof(Image, note);
    notes.p_memsz = sizeof(note) + sizeof(owner) + sizeof(id);
    note = {sizeof(owner), sizeof(id), NT_GNU_BUILD_ID};
  }
};

struct ImageCase {
  const char* what;
  std::function<void(Image&)> damage;
  bool listed;
  size_t idSize;
  size_t size = sizeof(Image);  // Of the file.
};

const ImageCase kImageCases[] = {
    {"sound", [](Image&) {}, true, 20},
    {"of no size", [](Image&) {}, false, 0, 0},
    {"segments after the end", [](Image& i) { i.header.e_phoff = 5000; }, false, 0},
    {"more segments than a page", [](Image& i) { i.header.e_phnum = UINT16_MAX; }, false, 0},
    {"segments of another size", [](Image& i) { i.header.e_phentsize = 8; }, false, 0},
    {"nothing to load", [](Image& i) { i.load.p_type = PT_NULL; }, false, 0},
    {"segment around the end", [](Image& i) { i.load.p_vaddr = UINT64_MAX - 9; }, false, 0},
    {"segment of 8 GiB", [](Image& i) { i.load.p_memsz = uint64_t{1} << 33; }, false, 0},
    {"notes after the end", [](Image& i) { i.notes.p_vaddr = kPage; }, true, 0},
    {"notes without end", [](Image& i) { i.notes.p_memsz = UINT64_MAX; }, true, 0},
    {"notes cut", [](Image& i) { i.notes.p_memsz = sizeof(Elf64_Nhdr) + 4; }, true, 0},
    {"no notes", [](Image& i) { i.notes.p_memsz = 0; }, true, 0},
    {"another owner", [](Image& i) { i.owner[2] = 'V'; }, true, 0},
    {"identifier without end", [](Image& i) { i.note.n_descsz = UINT32_MAX; }, true, 0},
    {"identifier too long",
     [](Image& i) {
       i.note.n_descsz = 65;
       i.notes.p_memsz = 200;
     },
     true, 0},
};

TEST(MinidumpWriter, TakesEveryFileForAnImageThatLooksLikeOneAndNoOther) {
  const WorkFolder folder;
  for (const ImageCase& test : kImageCases) {
    Image image;
    test.damage(image);
    // As odd as a name can be.
    const std::filesystem::path path = folder.path() / "line\nend, \xFF and \\";
    const OpenFile file(path);
    const auto size = static_cast<ssize_t>(test.size);
    ASSERT_EQ(write(file.descriptor, &image, test.size), size);
    // The second page lies beyond the end of the file: whoever touches it dies.
    void* const mapped =
        mmap(nullptr, 2 * kPage, PROT_READ | PROT_EXEC, MAP_PRIVATE, file.descriptor, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    const Minidump dump = Fault(AddressOf(mapped), AddressOf(mapped)).Dump();
    munmap(mapped, 2 * kPage);

    EXPECT_THAT(dump.errors, IsEmpty()) << test.what;
    EXPECT_TRUE(dump.rangesApart) << test.what;
    const DumpModule* const module = dump.FindModule(AddressOf(mapped));
    EXPECT_EQ(module != nullptr, test.listed) << test.what;
    if (module == nullptr) continue;
    EXPECT_EQ(module->buildId.size(), test.idSize) << test.what;
    EXPECT_EQ(module->size, kPage) << test.what;
  }
}

TEST(AbortMessage, OfTheHeapIsNoAssertion) {
  using temvar::posix::IsHeapMessage;
  EXPECT_TRUE(IsHeapMessage("malloc(): corrupted top size"));
  EXPECT_TRUE(IsHeapMessage("double free or corruption (!prev)"));
  EXPECT_FALSE(IsHeapMessage("malloc-bench: main.c:12: main: Assertion `size > 0' failed.\n"));
  EXPECT_FALSE(IsHeapMessage("free(): : main.c:12: main: Assertion `0' failed.\n"));
  EXPECT_FALSE(IsHeapMessage("*** stack smashing detected ***: terminated\n"));
}

}  // namespace
