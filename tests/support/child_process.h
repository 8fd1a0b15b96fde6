// Starts a program and reports how it ended. child_process_posix.cpp, child_process_windows.cpp.
#ifndef TESTS_SUPPORT_CHILD_PROCESS_H_
#define TESTS_SUPPORT_CHILD_PROCESS_H_

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace test {

struct ChildEnd {
  bool timedOut = false;  // It was ended by force.
  int signal = 0;         // The signal that ended it; always 0 on Windows.
  uint32_t status = 0;    // Its exit status if no signal ended it.
  std::chrono::milliseconds duration{0};
};

// The arguments of main, without the program, in UTF-8.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

// The folder of the program that is running, where the other programs of the build lie as well.
std::filesystem::path ProgramFolder();

// Runs a program and waits for its end. Its output goes to `output`, or is thrown away if that is
// empty. `program` is a path; on Windows ".exe" is added.
ChildEnd RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::filesystem::path& output = {},
                  std::chrono::seconds patience = std::chrono::seconds(250));

}  // namespace test

#endif  // TESTS_SUPPORT_CHILD_PROCESS_H_
