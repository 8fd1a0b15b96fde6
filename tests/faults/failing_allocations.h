// Memory that runs out on purpose, by functions in place of the runtime's: operator new, malloc,
// calloc, realloc, strdup and the starts of threads. Elsewhere than on Windows every call of the
// process is met. On Windows those of this library and of the C++ runtime are, and the starts of
// C++ threads; not those of libgcc, which end the process, and of libwinpthread, with which
// libstdc++ throws out of throwing without end.
#ifndef TESTS_FAULTS_FAILING_ALLOCATIONS_H_
#define TESTS_FAULTS_FAILING_ALLOCATIONS_H_

#include <cstddef>
#include <cstdint>

namespace test {

// While the object lives, the allocation or start that comes after `successes` others fails, and
// with `andLater` all after it. One object at a time.
class Failing {
 public:
  enum Threads { kThisThread = 1, kOthers = 2, kAllThreads = 3 };

  Failing(int successes, bool andLater, Threads threads);
  ~Failing();

  // How many have failed so far.
  int Count() const;
};

// Blocks of sizes for which this is true never fail. Null for none.
inline bool (*isSpared)(size_t size) = nullptr;

// Blocks of memory that were allocated and are not yet freed.
int64_t LiveBlocks();

}  // namespace test

#endif  // TESTS_FAULTS_FAILING_ALLOCATIONS_H_
