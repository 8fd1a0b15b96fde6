#include <windows.h>
// After windows.h, on which it depends.
#include <shellapi.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "support/terminal.h"

namespace support {

namespace {

std::atomic<bool> interrupted{false};
DWORD savedMode = 0;

// FALSE passes Ctrl-C on to the next handler, which ends the process.
BOOL WINAPI NoteInterrupt(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  return interrupted.exchange(true) ? FALSE : TRUE;
}

HANDLE Input() { return GetStdHandle(STD_INPUT_HANDLE); }

std::string ToUtf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<size_t>(size > 0 ? size : 1), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();
  return utf8;
}

// A console reports all its events, of which only the press of a character key is a key here.
char ReadConsoleKey() {
  INPUT_RECORD record = {};
  DWORD count = 0;
  if (!ReadConsoleInputW(Input(), &record, 1, &count) || count != 1) return 0;
  if (record.EventType != KEY_EVENT || !record.Event.KeyEvent.bKeyDown) return 0;
  const wchar_t key = record.Event.KeyEvent.uChar.UnicodeChar;
  return key < 128 ? static_cast<char>(key) : '\0';
}

// A pipe can't be waited on. False at its end; `bytes` is what can be read now.
bool PipeHolds(DWORD& bytes) {
  bytes = 0;
  return PeekNamedPipe(Input(), nullptr, 0, nullptr, &bytes, nullptr) != 0;
}

}  // namespace

std::vector<std::string> Utf8Arguments(int, char**) {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(ToUtf8(wide[i]));
  LocalFree(wide);
  SetConsoleOutputCP(CP_UTF8);
  return arguments;
}

std::FILE* DivertOutput(const std::filesystem::path& log) {
  std::fflush(stdout);
  const int output = _fileno(stdout);
  const int screen = _dup(output);
  const int file =
      _wopen(log.c_str(), _O_WRONLY | _O_CREAT | _O_APPEND | _O_TEXT, _S_IREAD | _S_IWRITE);
  std::FILE* const stream = file < 0 || screen < 0 ? nullptr : _fdopen(screen, "w");
  if (stream != nullptr) _dup2(file, output);
  if (stream == nullptr && screen >= 0) _close(screen);
  if (file >= 0) _close(file);
  return stream;
}

Terminal::Terminal() {
  DWORD outputMode = 0;
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  outputIsTerminal_ = GetConsoleMode(output, &outputMode) != 0;
  // The C library closes its handle when the output is diverted.
  HANDLE screen = INVALID_HANDLE_VALUE;
  DuplicateHandle(GetCurrentProcess(), output, GetCurrentProcess(), &screen, 0, FALSE,
                  DUPLICATE_SAME_ACCESS);
  screen_ = reinterpret_cast<std::intptr_t>(screen);
  SetConsoleCtrlHandler(NoteInterrupt, TRUE);
  inputIsTerminal_ = GetConsoleMode(Input(), &savedMode) != 0;
  if (inputIsTerminal_) {
    SetConsoleMode(Input(), savedMode & ~static_cast<DWORD>(ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT));
  }
}

Terminal::~Terminal() {
  if (inputIsTerminal_) SetConsoleMode(Input(), savedMode);
  SetConsoleCtrlHandler(NoteInterrupt, FALSE);
  if (screen_ != -1) CloseHandle(reinterpret_cast<HANDLE>(screen_));
}

size_t Terminal::Columns() const {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (!GetConsoleScreenBufferInfo(reinterpret_cast<HANDLE>(screen_), &info)) return 79;
  return static_cast<size_t>(std::clamp(info.srWindow.Right - info.srWindow.Left + 1, 40, 200)) - 1;
}

char Terminal::WaitForKey(std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  if (inputOpen_ && inputIsTerminal_) {
    const DWORD wait = WaitForSingleObject(Input(), static_cast<DWORD>(timeout.count()));
    return wait == WAIT_OBJECT_0 ? ReadConsoleKey() : '\0';
  }
  if (inputOpen_ && GetFileType(Input()) == FILE_TYPE_PIPE) {
    DWORD bytes = 0;
    while ((inputOpen_ = PipeHolds(bytes)) && bytes == 0) {
      if (std::chrono::steady_clock::now() >= deadline) return 0;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  char key = 0;
  DWORD count = 0;
  if (inputOpen_ && ReadFile(Input(), &key, 1, &count, nullptr) && count == 1) return key;
  inputOpen_ = false;
  std::this_thread::sleep_until(deadline);
  return 0;
}

bool Terminal::Interrupted() { return interrupted.load(); }

}  // namespace support
