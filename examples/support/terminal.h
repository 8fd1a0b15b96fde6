#ifndef EXAMPLES_SUPPORT_TERMINAL_H_
#define EXAMPLES_SUPPORT_TERMINAL_H_

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

// What the example programs need of the system beyond standard C++. One source file for each
// system, chosen by CMake: terminal_posix.cpp, terminal_windows.cpp.
namespace support {

// The arguments of the command line as UTF-8, without the program's own name. From the call on a
// console of Windows shows UTF-8 too.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

// Sends all that is printed to standard output from now on, also by libraries, to the end of a
// file, and returns a stream to what standard output was before: for a host that keeps its screen
// clean. Null, with nothing changed, if the file can't be opened.
std::FILE* DivertOutput(const std::filesystem::path& log);

// The keyboard and the screen of a program that runs a job. One object at a time.
//
// While it lives, keys arrive one by one without Enter, and Ctrl-C is only noted, the first time; a
// second Ctrl-C ends the process as usual. Input and output may be files or pipes as well: keys are
// then read from there.
class Terminal {
 public:
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Whether standard output was a screen when the object was made, on which a line can be written
  // over.
  bool HasLiveOutput() const { return outputIsTerminal_; }

  // The columns of that screen that a line can take without wrapping: 39 to 199, for a width of 40
  // to 200 columns; a narrower one wraps. 79 where there is no screen.
  size_t Columns() const;

  // Waits up to `timeout` for a key. 0 if none came; after the end of the input it only waits.
  char WaitForKey(std::chrono::milliseconds timeout);

  // Whether Ctrl-C was pressed.
  static bool Interrupted();

 private:
  // The screen, also after DivertOutput: a descriptor or a handle, which the object owns.
  std::intptr_t screen_ = -1;
  bool inputOpen_ = true;
  bool inputIsTerminal_ = false;
  bool outputIsTerminal_ = false;
};

}  // namespace support

#endif  // EXAMPLES_SUPPORT_TERMINAL_H_
