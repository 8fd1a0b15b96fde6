#include <cstdlib>

#include "ways.h"

// The C library finds a block that is freed twice.
void crash_host::DamageHeap() {
  void* volatile block = std::malloc(2000);
  void* const neighbour = std::malloc(2000);
  std::free(block);
  std::free(block);
  std::free(neighbour);
}
