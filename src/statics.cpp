// The objects that live as long as the library, in the order in which they are built; they are
// destroyed in the reverse order. Nothing is made later than this, no accessor has a first call,
// and no thread is started.
#include <type_traits>

#include "crash/report_state.h"
#include "execution/task_pool_impl.h"
#include "frame/lock_impl.h"
#include "scheduler/task_schedular_impl.h"
#include "tasks/name_index.h"
#include "utilities/application/identifier_state.h"

namespace temvar {
namespace {

// An object that is not destroyed at the end of the process if the pool was not stopped: its
// threads may still use it, and the process must end at once. On Windows the system has ended the
// threads by then, at any point of their code: destroying a condition can wait for ever for a lock
// inside libwinpthread (of mingw-w64 10) that one of them held.
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

StaticObject<LockTable> lockTableObject;
StaticObject<LockTable::node_type> spareLockObject;
StaticObject<Mutex> lockTableGuardObject;
StaticObject<NameIndex> nameIndexObject;
IdentifierState identifierState;
ReportPaths reportPaths;
StaticObject<RkTaskPoolImpl> poolObject;
StaticObject<RkTaskSchedularImpl> schedularObject;

constinit TMVLockImpl lockObject;

}  // namespace

IdentifierState& GetIdentifierState() { return identifierState; }

ReportPaths& GetReportPaths() { return reportPaths; }

LockTable& lockTable = lockTableObject.Get();
LockTable::node_type& spareLock = spareLockObject.Get();
Mutex& lockTableGuard = lockTableGuardObject.Get();

NameIndex& nameIndex = nameIndexObject.Get();

Mutex registryMutex;
Mutex stateMutex;
Mutex pauseMutex;
namespace {

StaticObject<EventCount> drainConditionObject;
StaticObject<Condition> resumeConditionObject;

}  // namespace

EventCount& drainCondition = drainConditionObject.Get();
Condition& resumeCondition = resumeConditionObject.Get();
uint64_t resumeCount = 0;

namespace {

// The pool notifies the scheduler when a worker has finished a task.
const bool schedularObservesPool = [] {
  poolObject.Get().AddObserver(&schedularObject.Get());
  return true;
}();

}  // namespace
}  // namespace temvar

TMVLock* TmvLock() { return &temvar::lockObject; }

RkTaskPool* TmvTaskPool() { return &temvar::poolObject.Get(); }

RkTaskSchedular* TmvTaskSchedular() { return &temvar::schedularObject.Get(); }
