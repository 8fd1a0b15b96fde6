#ifndef EXAMPLES_CRASH_HOST_WAYS_H_
#define EXAMPLES_CRASH_HOST_WAYS_H_

#include <string>
#include <vector>

namespace crash_host {

struct Way {
  const char* name;  // On the command line.
  const char* text;  // For people.
  void (*crash)();
};

const std::vector<Way>& AllWays();

// Null for an unknown name.
const Way* FindWay(const std::string& name);

// Lets the runtime find a damaged heap: heap_posix.cpp, heap_windows.cpp.
void DamageHeap();

}  // namespace crash_host

#endif  // EXAMPLES_CRASH_HOST_WAYS_H_
