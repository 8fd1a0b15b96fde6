// Starts the desktop's opener as a program of its own: no shell reads the text, and nobody waits.
#include "platform/posix/shell/shell_open.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/posix/errors.h"
#include "platform/posix/files/narrow_path.h"
#include "platform/posix/text/text_conversion.h"

namespace {

constexpr char kOpener[] = "xdg-open";

// Results of ShellExecute: up to 32 they are error codes.
constexpr intptr_t kStarted = 33;

HINSTANCE Result(intptr_t value) { return reinterpret_cast<HINSTANCE>(value); }

// The opener's path by PATH; empty if there is none.
std::string FindOpener() {
  const char* const variable = std::getenv("PATH");
  std::string_view list = variable == nullptr ? "/usr/local/bin:/usr/bin:/bin" : variable;
  while (!list.empty()) {
    const size_t end = list.find(':');
    const std::string_view folder = list.substr(0, end);
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    // An empty entry would mean the current folder: no place to look for programs.
    if (folder.empty()) continue;
    std::string candidate = std::string(folder) + "/" + kOpener;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

// Whether the text begins with a scheme ("https:", "mailto:"). One letter is a drive.
bool IsAddress(std::u16string_view text) {
  size_t length = 0;
  for (; length < text.size(); ++length) {
    const char16_t unit = text[length];
    const bool letter = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    const bool other =
        (unit >= u'0' && unit <= u'9') || unit == u'+' || unit == u'-' || unit == u'.';
    if (!letter && (length == 0 || !other)) break;
  }
  return length >= 2 && length < text.size() && text[length] == u':';
}

std::string ToUtf8(LPCWSTR text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size == 0) return {};
  std::string utf8(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();
  return utf8;
}

// The opener's argument; empty for a text that is neither path nor address.
std::string Target(LPCWSTR file) {
  if (IsAddress(file)) return ToUtf8(file);
  const temvar::posix::NarrowPath path(file);
  if (!path.ok()) return {};
  // A name that begins with a dash must not be read as an option.
  return path.c_str()[0] == '-' ? std::string("./") + path.c_str() : path.c_str();
}

// Runs in the child of a process with other threads: system calls only.
[[noreturn]] void StartGrandchild(const char* program, char* const* arguments, int report) {
  const pid_t child = fork();
  if (child > 0) _exit(0);
  if (child == 0) execve(program, arguments, environ);
  // Only a failed fork or execve comes here: a start that works has closed the pipe.
  const int error = errno;
  const ssize_t written = write(report, &error, sizeof(error));
  _exit(written == sizeof(error) ? 0 : 1);
}

// Starts a program as a grandchild, which the system's first process reaps when it ends. 0, or the
// errno value of what failed, the program's start included.
int StartDetached(std::string program, std::string argument) {
  char* const arguments[] = {program.data(), argument.data(), nullptr};
  int report[2];  // Closed by a start that works, else it brings the errno value.
  if (pipe2(report, O_CLOEXEC) != 0) return errno;
  const pid_t child = fork();
  if (child == 0) StartGrandchild(program.c_str(), arguments, report[1]);
  int error = child < 0 ? errno : 0;
  // Before the read, which would else wait for this process's own end of the pipe.
  close(report[1]);
  if (child > 0) {
    ssize_t size = 0;
    do {
      size = read(report[0], &error, sizeof(error));
    } while (size < 0 && errno == EINTR);
    if (size != sizeof(error)) error = 0;
    // The child ends at once; left unreaped it would stay a zombie as long as the host runs.
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  close(report[0]);
  return error;
}

}  // namespace

HINSTANCE ShellExecuteW(HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR directory,
                        int) {
  const std::u16string_view action = verb == nullptr ? u"open" : verb;
  if (file == nullptr || parameters != nullptr || directory != nullptr ||
      (action != u"open" && action != u"explore")) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return Result(ERROR_ACCESS_DENIED);
  }
  const std::string program = FindOpener();
  const std::string target = Target(file);
  if (program.empty() || target.empty()) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return Result(ERROR_FILE_NOT_FOUND);
  }
  const int error = StartDetached(program, target);
  if (error == 0) return Result(kStarted);
  const DWORD code = temvar::posix::ErrorFromErrno(error);
  SetLastError(code);
  return Result(code <= 32 ? static_cast<intptr_t>(code) : intptr_t{ERROR_ACCESS_DENIED});
}

HINSTANCE ShellExecuteA(HWND window, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                        int show) {
  if (file == nullptr || parameters != nullptr || directory != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return Result(ERROR_ACCESS_DENIED);
  }
  const auto widen = [](const char* text) {
    std::u16string wide(std::char_traits<char>::length(text), u'\0');
    const int size = static_cast<int>(wide.size());
    MultiByteToWideChar(CP_ACP, 0, text, size, wide.data(), size);
    return wide;
  };
  return ShellExecuteW(window, widen(verb == nullptr ? "open" : verb).c_str(), widen(file).c_str(),
                       nullptr, nullptr, show);
}
