#include "platform/posix/crash/minidump/context.h"

#include <cstring>

namespace temvar::posix::minidump {
namespace {

uint64_t Register(const ucontext_t& machine, int number) {
  return static_cast<uint64_t>(machine.uc_mcontext.gregs[number]);
}

}  // namespace

uint64_t StackPointerOf(const ucontext_t& machine) { return Register(machine, REG_RSP); }

uint64_t InstructionPointerOf(const ucontext_t& machine) { return Register(machine, REG_RIP); }

Location AppendContext(DumpFile& file, const ucontext_t& machine) {
  Context context = {};
  context.flags = kContextFlags;
  // The segment registers share one word; ds and es have no meaning in 64-bit code.
  const uint64_t segments = Register(machine, REG_CSGSFS);
  context.cs = static_cast<uint16_t>(segments);
  context.gs = static_cast<uint16_t>(segments >> 16);
  context.fs = static_cast<uint16_t>(segments >> 32);
  context.ss = static_cast<uint16_t>(segments >> 48);
  context.eflags = static_cast<uint32_t>(Register(machine, REG_EFL));
  context.rax = Register(machine, REG_RAX);
  context.rcx = Register(machine, REG_RCX);
  context.rdx = Register(machine, REG_RDX);
  context.rbx = Register(machine, REG_RBX);
  context.rsp = Register(machine, REG_RSP);
  context.rbp = Register(machine, REG_RBP);
  context.rsi = Register(machine, REG_RSI);
  context.rdi = Register(machine, REG_RDI);
  context.r8 = Register(machine, REG_R8);
  context.r9 = Register(machine, REG_R9);
  context.r10 = Register(machine, REG_R10);
  context.r11 = Register(machine, REG_R11);
  context.r12 = Register(machine, REG_R12);
  context.r13 = Register(machine, REG_R13);
  context.r14 = Register(machine, REG_R14);
  context.r15 = Register(machine, REG_R15);
  context.rip = Register(machine, REG_RIP);
  if (machine.uc_mcontext.fpregs != nullptr) {
    static_assert(sizeof(*machine.uc_mcontext.fpregs) == sizeof(context.fxsave));
    context.mxcsr = machine.uc_mcontext.fpregs->mxcsr;
    std::memcpy(context.fxsave, machine.uc_mcontext.fpregs, sizeof(context.fxsave));
  }
  return file.Append(&context, sizeof(context));
}

}  // namespace temvar::posix::minidump
