// Which queued and running tasks belong to an event. The scheduler knows; it is asked without any
// lock of the pool, over a copy, since its own steps enter the pool with their locks held. It is
// asked through its interface, as a host would, so that the pool doesn't depend on its
// implementation.
#include <algorithm>
#include <iterator>

#include "execution/task_pool_impl.h"
#include "tasks/task_list_builder.h"
#include "temvar/task_schedular.h"

namespace temvar {
namespace {

// The event that a queued task belongs to, or null.
Ref<RkTaskImpl> OwnerOf(RkTaskImpl& task) {
  switch (task.Type()) {
    case kTaskTypePlain:
      return Ref<RkTaskImpl>::Adopt(ToImpl(TmvTaskSchedular()->FindEventOfTask(task.GetName())));
    case kTaskTypePackage:
      return Ref<RkTaskImpl>::Adopt(ToImpl(TmvTaskSchedular()->FindEventOfPackage(&task)));
    case kTaskTypeEvent:
      return Ref<RkTaskImpl>(&task);
    default:
      return {};
  }
}

// Null is the name of no event.
bool IsCalled(const Ref<RkTaskImpl>& event, const char* name) {
  return name != nullptr && event->HasName(name);
}

}  // namespace

uint32_t RkTaskPoolImpl::RemoveQueued(const char* name) {
  std::vector<PendingTask> queued;
  {
    MutexLock queue(queueMutex_);
    MutexLock incoming(incomingMutex_);
    FetchIncoming();
    // A cancel that is still queued belongs to no event and must not be lost. A host may queue
    // thousands of them, and each comes through here.
    std::copy_if(pendingTasks_.begin(), pendingTasks_.end(), std::back_inserter(queued),
                 [](const PendingTask& entry) { return !entry.task->IsInternal(); });
  }
  std::vector<uint64_t> serials;
  for (const PendingTask& entry : queued) {
    const Ref<RkTaskImpl> owner = OwnerOf(*entry.task);
    if (!owner || IsCalled(owner, name)) serials.push_back(entry.serial);
  }
  return static_cast<uint32_t>(ExtractQueued(serials).size());
}

// Takes the entries with these serials, which ascend, out of the queue.
std::vector<PendingTask> RkTaskPoolImpl::ExtractQueued(const std::vector<uint64_t>& serials) {
  std::vector<PendingTask> extracted;
  if (serials.empty()) return extracted;
  extracted.reserve(serials.size());
  // From here on nothing throws, so that the queue can't be left half sorted.
  MutexLock queue(queueMutex_);
  auto end = pendingTasks_.begin();
  auto next = serials.begin();
  for (PendingTask& entry : pendingTasks_) {
    while (next != serials.end() && *next < entry.serial) ++next;  // A worker has taken these.
    if (next != serials.end() && *next == entry.serial) {
      extracted.push_back(std::move(entry));
    } else {
      if (&*end != &entry) *end = std::move(entry);
      ++end;
    }
  }
  pendingTasks_.erase(end, pendingTasks_.end());
  NotePending();
  return extracted;
}

TaskListNode* RkTaskPoolImpl::ListRunning(const char* name, uint32_t& count) {
  count = 0;
  std::vector<Ref<RkTaskImpl>> running;
  {
    MutexLock queue(queueMutex_);
    running = runningTasks_;
  }
  TaskListBuilder list;
  for (Ref<RkTaskImpl>& task : running) {
    if (task->Type() != kTaskTypePlain || task->IsInternal()) continue;
    const Ref<RkTaskImpl> owner = OwnerOf(*task);
    if (!owner || !IsCalled(owner, name)) continue;
    list.Append(std::move(task));
    ++count;
  }
  return list.Finish();
}

void RkTaskPoolImpl::FreeTaskList(TaskListNode* list) { ReleaseTaskList(list); }

}  // namespace temvar
