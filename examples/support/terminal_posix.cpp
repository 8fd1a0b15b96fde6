#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "support/terminal.h"

namespace support {

namespace {

volatile sig_atomic_t interrupted = 0;
termios savedSettings;

void NoteInterrupt(int) { interrupted = 1; }

// A program in the background must not touch the terminal's settings: the system would stop it.
bool OwnsTerminal() { return isatty(STDIN_FILENO) && tcgetpgrp(STDIN_FILENO) == getpgrp(); }

}  // namespace

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

std::FILE* DivertOutput(const std::filesystem::path& log) {
  std::fflush(stdout);
  const int screen = dup(STDOUT_FILENO);
  const int file = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  std::FILE* const stream = file < 0 || screen < 0 ? nullptr : fdopen(screen, "w");
  if (stream != nullptr) dup2(file, STDOUT_FILENO);
  if (stream == nullptr && screen >= 0) close(screen);
  if (file >= 0) close(file);
  return stream;
}

Terminal::Terminal() {
  outputIsTerminal_ = isatty(STDOUT_FILENO) != 0;
  screen_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  struct sigaction action = {};
  action.sa_handler = NoteInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, nullptr);

  inputIsTerminal_ = OwnsTerminal() && tcgetattr(STDIN_FILENO, &savedSettings) == 0;
  inputOpen_ = inputIsTerminal_ || !isatty(STDIN_FILENO);
  if (inputIsTerminal_) {
    termios settings = savedSettings;
    settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    tcsetattr(STDIN_FILENO, TCSANOW, &settings);
  }
}

Terminal::~Terminal() {
  if (inputIsTerminal_) tcsetattr(STDIN_FILENO, TCSANOW, &savedSettings);
  if (screen_ >= 0) close(static_cast<int>(screen_));
}

size_t Terminal::Columns() const {
  winsize size = {};
  if (ioctl(static_cast<int>(screen_), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 79;
  return std::clamp<size_t>(size.ws_col, 40, 200) - 1;
}

char Terminal::WaitForKey(std::chrono::milliseconds timeout) {
  if (!inputOpen_) {
    std::this_thread::sleep_for(timeout);
    return 0;
  }
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  if (poll(&input, 1, static_cast<int>(timeout.count())) <= 0) return 0;
  char key = 0;
  if (read(STDIN_FILENO, &key, 1) != 1) {
    inputOpen_ = false;
    return 0;
  }
  return key;
}

bool Terminal::Interrupted() { return interrupted != 0; }

}  // namespace support
