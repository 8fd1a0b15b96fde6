// The objects that live as long as the library, in the order in which they are built; they go in
// the reverse order. Nothing is made later than this, no accessor has a first call, and no thread
// is started.
#include <type_traits>

#include "crash/report_state.h"
#include "execution/task_pool_impl.h"
#include "frame/lock_impl.h"
#include "scheduler/sync.h"
#include "scheduler/task_schedular_impl.h"
#include "utilities/application/identifier_state.h"

namespace temvar {
namespace {

// An object that is left as it is at the end of the process if the pool was not stopped: its
// threads may still use it, and the process is to end at once. On Windows the threads are gone by
// then, wherever they stood: to destroy a condition can wait for ever for a lock inside
// libwinpthread (of mingw-w64 10) that one of them held.
template <typename T>
class StaticObject {
 public:
  StaticObject() { ::new (&storage_.object) T; }
  ~StaticObject() {
    if (!RkTaskPoolImpl::IsRunning()) storage_.object.~T();
  }
  T& Get() { return storage_.object; }

 private:
  union Storage {
    Storage() {}
    ~Storage() {}
    T object;
  };
  Storage storage_;
};

StaticObject<LockTable> lock_table_object;
StaticObject<Mutex> lock_table_guard_object;
IdentifierState identifier_state;
ReportPaths report_paths;
StaticObject<RkTaskPoolImpl> pool_object;
StaticObject<RkTaskSchedularImpl> schedular_object;

constinit TMVLockImpl lock_object;

}  // namespace

IdentifierState& GetIdentifierState() { return identifier_state; }

ReportPaths& GetReportPaths() { return report_paths; }

LockTable& lock_table = lock_table_object.Get();
Mutex& lock_table_guard = lock_table_guard_object.Get();

Mutex registry_mutex;
Mutex state_mutex;
Mutex pause_mutex;
namespace {
StaticObject<EventCount> drain_condition_object;
StaticObject<Condition> resume_condition_object;
}  // namespace
EventCount& drain_condition = drain_condition_object.Get();
Condition& resume_condition = resume_condition_object.Get();
uint64_t resume_count = 0;

namespace {
// The pool tells the scheduler when a worker is back.
const bool schedular_observes_pool = [] {
  pool_object.Get().AddObserver(&schedular_object.Get());
  return true;
}();
}  // namespace

}  // namespace temvar

TMVLock* TmvLock() { return &temvar::lock_object; }

RkTaskPool* TmvTaskPool() { return &temvar::pool_object.Get(); }

RkTaskSchedular* TmvTaskSchedular() { return &temvar::schedular_object.Get(); }
