#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include <stdexcept>

#include "support/child_process.h"
#include "support/work_folder.h"

namespace test {
namespace {

// The tests' own arguments hold no quotes and don't end in a backslash within quotes.
std::wstring CommandLine(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments) {
  std::wstring line = L"\"" + program.wstring() + L"\"";
  for (const std::string& argument : arguments) {
    std::wstring wide = FromUtf8(argument).wstring();
    if (!wide.empty() && wide.back() == L'\\') wide += L'\\';
    line += L" \"" + wide + L"\"";
  }
  return line;
}

HANDLE OpenOutput(const std::filesystem::path& output) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  const std::wstring path = output.empty() ? L"NUL" : output.wstring();
  return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                     CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

std::vector<std::string> Utf8Arguments(int, char**) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    const std::u8string text = std::filesystem::path(wide[i]).u8string();
    arguments.emplace_back(text.begin(), text.end());
  }
  LocalFree(wide);
  return arguments;
}

std::filesystem::path ProgramFolder() {
  wchar_t path[1024];
  GetModuleFileNameW(nullptr, path, 1024);
  return std::filesystem::path(path).parent_path();
}

ChildEnd RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::filesystem::path& output, std::chrono::seconds patience) {
  // Set here, it holds for the child too: no dialog about a crash.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  const HANDLE stream = OpenOutput(output);
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = stream;
  startup.hStdError = stream;
  PROCESS_INFORMATION process = {};
  std::wstring line = CommandLine(program.wstring() + L".exe", arguments);
  const auto start = std::chrono::steady_clock::now();
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                      &process)) {
    throw std::runtime_error("can't start " + program.string());
  }
  CloseHandle(stream);

  ChildEnd end;
  const auto limit = static_cast<DWORD>(std::chrono::milliseconds(patience).count());
  if (WaitForSingleObject(process.hProcess, limit) != WAIT_OBJECT_0) {
    end.timedOut = true;
    TerminateProcess(process.hProcess, 1);
    WaitForSingleObject(process.hProcess, INFINITE);
  }
  end.duration = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - start);
  DWORD status = 0;
  GetExitCodeProcess(process.hProcess, &status);
  end.status = status;
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return end;
}

}  // namespace test
