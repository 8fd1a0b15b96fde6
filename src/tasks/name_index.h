// Finds plain tasks of registered events by their names, and the events of packages.
//
// The result is what a walk of the registry would find first: events in the order of their keys,
// packages in order, children depth first. A name that one task alone has is found without a walk.
//
// Invariants, all of them under the registry mutex:
// 1. Each package of a registered event has the event in `listedIn`, and no other event is there.
// 2. A package that is `complete` has each of its children linked under its name, and so has each
//    package nested in it. The packages of a registered event are complete.
// 3. The children of a complete package have it in `parents`, and only packages that have a task as
//    their child are there. A package leaves its children when it dies, so these pointers don't
//    count references.
// 4. A linked task is in the chain of its name's hash, and has a parent. It may be below no
//    registered event any more: a search that meets such a task unlinks it, and the packages above
//    it are not complete from then on. So names of ended jobs don't slow down those of running
//    ones.
// 5. A linked task that isn't `isShared` is the only linked one with its hash.
// 6. A package that was once indexed is edited under the registry mutex, and a task that was once
// in
//    a package is renamed under it. Both flags are read without it; whoever edits a package, or
//    renames a task that is in none yet, while another thread registers its event for the first
//    time must order the two itself.
#ifndef TEMVAR_TASKS_NAME_INDEX_H_
#define TEMVAR_TASKS_NAME_INDEX_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "frame/mutex.h"
#include "tasks/task_event_impl.h"
#include "tasks/task_package_impl.h"

namespace temvar {

// Where a plain task is, without references.
struct TaskPlace {
  RkTaskEventImpl* event = nullptr;
  RkTaskPackageImpl* package = nullptr;  // The event's own package, also for a nested task.
  RkTaskImpl* task = nullptr;
};

class NameIndex {
 public:
  // The registry has the event under this key from now on, or no longer; the key outlives its
  // entry. Adding throws std::bad_alloc, and nothing has changed then.
  void AddEvent(RkTaskEventImpl& event, const std::string& key) TMV_REQUIRES(registryMutex);
  void RemoveEvent(RkTaskEventImpl& event, const std::string& key) TMV_REQUIRES(registryMutex);
  // The same for one package of a registered event.
  void AddPackage(RkTaskEventImpl& event, RkTaskPackageImpl& package) TMV_REQUIRES(registryMutex);

  // Makes a package complete. Throws std::bad_alloc, and it isn't complete then.
  void Complete(RkTaskPackageImpl& package) TMV_REQUIRES(registryMutex);
  // The package is indexed, and `child` is about to be inserted, which can't fail any more. Throws
  // std::bad_alloc, and nothing has changed then.
  void AddChild(RkTaskPackageImpl& package, RkTaskImpl& child) TMV_REQUIRES(registryMutex);
  // For a package that was indexed and dies, while it still has its children.
  void ForgetPackage(RkTaskPackageImpl& package) TMV_EXCLUDES(registryMutex);

  // A linked task takes this name.
  void Rename(RkTaskImpl& task, std::string& name) TMV_REQUIRES(registryMutex);

  // The first plain task of this name, or an empty place; nothing if only a walk can find out,
  // since many tasks have the name.
  std::optional<TaskPlace> Find(const TaskName& name) TMV_REQUIRES(registryMutex);
  // The same for the name of a task, which is most often the one to be found.
  std::optional<TaskPlace> FindNamesake(RkTaskImpl& task) TMV_REQUIRES(registryMutex);
  // The first event that lists this package directly, or null.
  static RkTaskEventImpl* FindListing(const RkTaskPackageImpl& package) TMV_REQUIRES(registryMutex);

 private:
  class Search;

  static constexpr size_t kLeastBuckets = 32;

  void EnterChildren(RkTaskPackageImpl& package) TMV_REQUIRES(registryMutex);
  void Enter(RkTaskPackageImpl& package, RkTaskImpl& child) TMV_REQUIRES(registryMutex);
  void Link(RkTaskImpl& task) TMV_REQUIRES(registryMutex);
  void Unlink(RkTaskImpl& task) TMV_REQUIRES(registryMutex);
  void Reserve(size_t count) TMV_REQUIRES(registryMutex);
  void Rehash(RkTaskImpl** buckets, size_t count) TMV_REQUIRES(registryMutex);
  RkTaskImpl*& BucketOf(const RkTaskImpl& task) TMV_REQUIRES(registryMutex) {
    return BucketOf(task.NameHash());
  }
  RkTaskImpl*& BucketOf(uint32_t hash) TMV_REQUIRES(registryMutex) {
    return buckets_[hash & (bucketCount_ - 1)];
  }

  // A power of two of them; more than the array of least ones if memory was to be had, so that
  // linking never fails.
  std::array<RkTaskImpl*, kLeastBuckets> leastBuckets_{};
  std::unique_ptr<RkTaskImpl*[]> moreBuckets_;
  RkTaskImpl** buckets_ TMV_GUARDED_BY(registryMutex) = leastBuckets_.data();
  size_t bucketCount_ TMV_GUARDED_BY(registryMutex) = kLeastBuckets;
  size_t linkedCount_ TMV_GUARDED_BY(registryMutex) = 0;
};

extern NameIndex& nameIndex;

}  // namespace temvar

#endif  // TEMVAR_TASKS_NAME_INDEX_H_
