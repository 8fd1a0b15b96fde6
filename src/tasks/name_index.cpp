#include "tasks/name_index.h"

#include <algorithm>
#include <new>
#include <utility>

namespace temvar {
namespace {

constexpr size_t kPieceOfDying = 256;  // Some microseconds under the mutex.

// An event is registered under a key of its own as a rule, under several if it was renamed between.
const std::string& FirstKey(const RkTaskEventImpl& event) {
  const std::string* first = nullptr;
  event.keys.AnyOf([&first](const std::string& key) {
    if (first == nullptr || key < *first) first = &key;
    return false;
  });
  return *first;
}

// The packages above `package` and itself are no longer complete. Above one that isn't, none is.
void MarkIncomplete(RkTaskPackageImpl& package) {
  if (!std::exchange(package.isComplete, false)) return;
  package.indexEntry.parents.AnyOf([](RkTaskPackageImpl& parent) {
    MarkIncomplete(parent);
    return false;
  });
}

}  // namespace

// Finds the first place among those of the tasks of one name.
class NameIndex::Search {
 public:
  explicit Search(const TaskName& name) : name_(name) {}

  // Climbs to each event above `task`. False if there is none, and the task is of no use.
  bool Meets(RkTaskImpl& task) {
    bool isReached = false;
    // A task of the kind of packages is walked into and not compared.
    const bool counts = task.Type() != kTaskTypePackage;
    task.indexEntry.parents.AnyOf([&](RkTaskPackageImpl& parent) {
      isReached = Climb(task, parent, counts, 0) || isReached;
      return false;
    });
    return isReached;
  }

  bool HasGivenUp() const { return hasGivenUp_; }

  TaskPlace Result() const {
    if (!isTie_) return first_;
    // Several tasks of the name below one package: the walk of that package decides.
    return {first_.event, first_.package, first_.package->FindTask(name_)};
  }

 private:
  static constexpr int kDeepest = 50;

  bool Climb(RkTaskImpl& task, RkTaskPackageImpl& package, bool counts, int depth) {
    if (depth > kDeepest) return hasGivenUp_ = true;
    package.listedIn.AnyOf([&](RkTaskEventImpl& event) {
      if (counts) Note({&event, &package, &task});
      return false;
    });
    bool isReached = !package.listedIn.Empty();
    const bool isWalked = counts && package.Type() == kTaskTypePackage;
    package.indexEntry.parents.AnyOf([&](RkTaskPackageImpl& parent) {
      isReached = Climb(task, parent, isWalked, depth + 1) || isReached;
      return false;
    });
    return isReached;
  }

  void Note(const TaskPlace& place) {
    if (first_.event == place.event && first_.package == place.package) {
      isTie_ = isTie_ || first_.task != place.task;
    } else if (first_.event == nullptr || IsBefore(place, first_)) {
      first_ = place;
      isTie_ = false;
    }
  }

  static bool IsBefore(const TaskPlace& a, const TaskPlace& b) {
    if (a.event != b.event) return FirstKey(*a.event) < FirstKey(*b.event);
    for (const Ref<RkTaskImpl>& package : a.event->Packages()) {
      if (package.get() == static_cast<RkTaskImpl*>(a.package)) return true;
      if (package.get() == static_cast<RkTaskImpl*>(b.package)) return false;
    }
    return false;
  }

  const TaskName& name_;
  TaskPlace first_;
  bool isTie_ = false;
  bool hasGivenUp_ = false;
};

void NameIndex::AddEvent(RkTaskEventImpl& event, const std::string& key) {
  size_t count = 0;
  for (const Ref<RkTaskImpl>& entry : event.Packages()) {
    const RkTaskPackageImpl* const package = ToPackage(entry.get());
    if (package != nullptr && !package->isComplete) count += package->Tasks().size();
  }
  Reserve(linkedCount_ + count);
  event.SetRegistered();
  event.keys.Add(&key);
  try {
    for (const Ref<RkTaskImpl>& entry : event.Packages()) {
      if (RkTaskPackageImpl* const package = ToPackage(entry.get())) AddPackage(event, *package);
    }
  } catch (...) {
    RemoveEvent(event, key);
    throw;
  }
}

void NameIndex::RemoveEvent(RkTaskEventImpl& event, const std::string& key) {
  event.keys.Remove(&key);
  if (!event.keys.Empty()) return;
  for (const Ref<RkTaskImpl>& entry : event.Packages()) {
    if (RkTaskPackageImpl* const package = ToPackage(entry.get())) package->listedIn.Remove(&event);
  }
}

void NameIndex::AddPackage(RkTaskEventImpl& event, RkTaskPackageImpl& package) {
  Complete(package);
  package.listedIn.Add(&event);
}

void NameIndex::Complete(RkTaskPackageImpl& package) {
  if (package.isComplete) return;
  package.SetIndexed();
  package.isComplete = true;  // Before the descent, which a package within itself would never end.
  try {
    if (package.HasNested()) {
      for (const Ref<RkTaskImpl>& child : package.Tasks()) {
        if (RkTaskPackageImpl* const nested = ToPackage(child.get())) Complete(*nested);
      }
    }
    EnterChildren(package);
  } catch (...) {
    MarkIncomplete(package);
    throw;
  }
}

// Most of the time would go into waiting for memory. So what it takes to enter a child is fetched
// before, each step some children behind the one that it needs: the task, the bucket of its hash,
// the task at the head of that bucket.
void NameIndex::EnterChildren(RkTaskPackageImpl& package) {
  constexpr size_t kApart = 8;
  const RkTaskPackageImpl::Children& children = package.Tasks();
  const auto childAt = [&children](size_t i) {
    return i < children.size() ? children[i].get() : nullptr;  // Also before the first: it wraps.
  };
  for (size_t i = 0; i < children.size() + 3 * kApart; ++i) {
    if (const RkTaskImpl* const task = childAt(i)) task->PrefetchForIndex();
    if (const RkTaskImpl* const task = childAt(i - kApart)) __builtin_prefetch(&BucketOf(*task));
    if (const RkTaskImpl* const task = childAt(i - 2 * kApart)) {
      if (const RkTaskImpl* const head = BucketOf(*task)) head->PrefetchForIndex();
    }
    if (RkTaskImpl* const task = childAt(i - 3 * kApart)) Enter(package, *task);
  }
}

void NameIndex::AddChild(RkTaskPackageImpl& package, RkTaskImpl& child) {
  if (RkTaskPackageImpl* const nested = ToPackage(&child)) Complete(*nested);
  child.SetListed();
  Enter(package, child);
}

void NameIndex::Enter(RkTaskPackageImpl& package, RkTaskImpl& child) {
  child.indexEntry.parents.Add(&package);
  if (!child.indexEntry.isLinked) Link(child);
}

// In pieces, so that the end of a large package doesn't keep reports waiting.
void NameIndex::ForgetPackage(RkTaskPackageImpl& package) {
  const RkTaskPackageImpl::Children& children = package.Tasks();
  for (size_t i = 0; i < children.size();) {
    MutexLock registry(registryMutex);
    for (const size_t end = std::min(children.size(), i + kPieceOfDying); i < end; ++i) {
      if (!children[i]) continue;
      RkTaskImpl& child = *children[i];
      child.indexEntry.parents.Remove(&package);
      if (child.indexEntry.parents.Empty() && child.indexEntry.isLinked) Unlink(child);
    }
  }
}

void NameIndex::Rename(RkTaskImpl& task, std::string& name) {
  Unlink(task);
  task.SwapListedName(name);
  Link(task);
}

std::optional<TaskPlace> NameIndex::Find(const TaskName& name) {
  constexpr size_t kMany = 8;
  Search search(name);
  size_t met = 0;
  RkTaskImpl* last = nullptr;
  RkTaskImpl* next = nullptr;
  for (RkTaskImpl* task = BucketOf(name.hash); task != nullptr; task = next) {
    next = task->indexEntry.next;
    if (task->NameHash() != name.hash) continue;
    if (task->HasName(name.text) && !search.Meets(*task)) {
      Unlink(*task);
      task->indexEntry.parents.AnyOf([](RkTaskPackageImpl& parent) {
        MarkIncomplete(parent);
        return false;
      });
      continue;
    }
    last = task;
    if (++met > kMany || search.HasGivenUp()) return std::nullopt;
  }
  if (met == 1) last->indexEntry.isShared = false;
  return search.Result();
}

// The common case is a task whose name no other has, in one package of one event.
std::optional<TaskPlace> NameIndex::FindNamesake(RkTaskImpl& task) {
  RkTaskPackageImpl* const package = task.indexEntry.parents.Only();
  if (task.indexEntry.isLinked && !task.indexEntry.isShared && package != nullptr &&
      package->indexEntry.parents.Empty()) {
    RkTaskEventImpl* const event = package->listedIn.Only();
    if (event != nullptr) return TaskPlace{event, package, &task};
  }
  return Find(TaskName(task.Name()));
}

RkTaskEventImpl* NameIndex::FindListing(const RkTaskPackageImpl& package) {
  RkTaskEventImpl* first = package.listedIn.Only();
  if (first != nullptr) return first;
  package.listedIn.AnyOf([&first](RkTaskEventImpl& event) {
    if (first == nullptr || FirstKey(event) < FirstKey(*first)) first = &event;
    return false;
  });
  return first;
}

void NameIndex::Link(RkTaskImpl& task) {
  Reserve(linkedCount_ + 1);
  RkTaskImpl*& bucket = BucketOf(task);
  RkTaskImpl* same = bucket;
  while (same != nullptr && same->NameHash() != task.NameHash()) {
    same = same->indexEntry.next;
  }
  task.indexEntry.isShared = same != nullptr;
  if (same != nullptr) same->indexEntry.isShared = true;

  task.indexEntry.next = bucket;
  task.indexEntry.previous = nullptr;
  if (bucket != nullptr) bucket->indexEntry.previous = &task;
  bucket = &task;
  ++linkedCount_;
  task.indexEntry.isLinked = true;
}

void NameIndex::Unlink(RkTaskImpl& task) {
  RkTaskImpl* const next = task.indexEntry.next;
  RkTaskImpl* const previous = task.indexEntry.previous;
  (previous == nullptr ? BucketOf(task) : previous->indexEntry.next) = next;
  if (next != nullptr) next->indexEntry.previous = previous;
  --linkedCount_;
  task.indexEntry.isLinked = false;
  // An empty index doesn't keep the memory of its largest job.
  if (linkedCount_ == 0 && moreBuckets_ != nullptr) {
    moreBuckets_ = nullptr;
    Rehash(leastBuckets_.data(), kLeastBuckets);
  }
}

// Room for this many with few of them in a bucket. With memory exhausted they become more.
void NameIndex::Reserve(size_t count) {
  if (2 * count <= bucketCount_) return;
  size_t wanted = bucketCount_;
  while (wanted < 2 * count) wanted *= 2;
  std::unique_ptr<RkTaskImpl*[]> more(new (std::nothrow) RkTaskImpl*[wanted]());
  if (more == nullptr) return;
  Rehash(more.get(), wanted);
  moreBuckets_ = std::move(more);
}

// Moves the linked entries to other buckets, which are empty.
void NameIndex::Rehash(RkTaskImpl** buckets, size_t count) {
  RkTaskImpl** const old = std::exchange(buckets_, buckets);
  const size_t oldCount = std::exchange(bucketCount_, count);
  if (linkedCount_ == 0) return;
  for (size_t i = 0; i < oldCount; ++i) {
    RkTaskImpl* next = nullptr;
    for (RkTaskImpl* task = std::exchange(old[i], nullptr); task != nullptr; task = next) {
      next = task->indexEntry.next;
      RkTaskImpl*& bucket = BucketOf(*task);
      task->indexEntry.next = bucket;
      task->indexEntry.previous = nullptr;
      if (bucket != nullptr) bucket->indexEntry.previous = task;
      bucket = task;
    }
  }
}

}  // namespace temvar
