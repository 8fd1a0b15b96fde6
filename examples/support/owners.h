#ifndef EXAMPLES_SUPPORT_OWNERS_H_
#define EXAMPLES_SUPPORT_OWNERS_H_

#include <temvar/temvar.h>

#include <memory>

// Owners for the host's own references, so that every way out drops them.
namespace support {

struct DropTask {
  void operator()(RkTask* task) const { DestroyRkTask(task); }
};
struct DropFunc {
  void operator()(RkTaskFunc* func) const { DestroyRkTaskFunc(func); }
};

using TaskOwner = std::unique_ptr<RkTask, DropTask>;
using EventOwner = std::unique_ptr<RkTaskEvent, DropTask>;
using PackageOwner = std::unique_ptr<RkTaskPackage, DropTask>;
using FuncOwner = std::unique_ptr<RkTaskFunc, DropFunc>;

// Runs the pool for as long as it lives. The destructor waits for the functions that run, so what
// is paused must have been resumed or cancelled before.
class PoolLife {
 public:
  explicit PoolLife(uint32_t workers) { TmvTaskPool()->Start(workers); }
  ~PoolLife() { TmvTaskPool()->Stop(); }
  PoolLife(const PoolLife&) = delete;
  PoolLife& operator=(const PoolLife&) = delete;
};

}  // namespace support

#endif  // EXAMPLES_SUPPORT_OWNERS_H_
