#ifndef TEMVAR_HANDLES_H_
#define TEMVAR_HANDLES_H_

// Owners for C++ hosts, C++17 and later, all in this header: each releases what it holds by the
// export or the operation that is meant for it. They add nothing to the library, and a host that
// prefers to pair the calls by hand loses nothing.
//
//   tmv::Task, Event, Package, Data, Func   a counted reference; a copy adds one
//   tmv::Manifest, Zip, DbgReport, Thread   an object with a single owner
//   tmv::Text, WideText                     a text block that the library handed out
//   tmv::Bytes                              a BinaryDataResult
//   tmv::PathPieces                         the PathParts of a path
//   tmv::TaskList                           a list of tasks
//   tmv::RunningPool                        Start and Stop of the pool around a scope
//   tmv::MakeFunc, MakeTask                 a C++ callable as the function of a task
//   tmv::KeepGoing                          a pause point for such a callable
//   tmv::FindEvent, PositionOf              from a name to an event, how far a package is
//   tmv::Utf8, PathOf                       between std::filesystem::path and the library's text
//
// On top of it, each in a header of its own: temvar/job.h (jobs made of callables, which most hosts
// want), describe.h (why a job makes no progress), settings.h (typed reads), crash_watch.h (crash
// reports in one call), load.h (the library loaded at run time).
//
// Threads: two threads may use two handles of one object, but not one handle at the same time
// unless both only read it.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "temvar/temvar.h"

namespace tmv {

namespace detail {

inline void AddReference(RkTask* task) { DuplicateRkTask(task); }
inline void AddReference(RkTaskData* data) { DuplicateRkTaskData(data); }
inline void AddReference(RkTaskFunc* func) { DuplicateRkTaskFunc(func); }
inline void DropReference(RkTask* task) { DestroyRkTask(task); }
inline void DropReference(RkTaskData* data) { DestroyRkTaskData(data); }
inline void DropReference(RkTaskFunc* func) { DestroyRkTaskFunc(func); }

// Calls one export, for std::unique_ptr.
template <auto Destroy>
struct Destroyer {
  template <typename Interface>
  void operator()(Interface* object) const {
    Destroy(object);
  }
};

struct StringFreer {
  void operator()(void* block) const { TmvUtilityString()->FreeString(block); }
};

}  // namespace detail

// One reference on a task, an event, a package, a data holder or a function holder. A default
// handle holds nothing. It converts to the plain pointer wherever one is asked for.
template <typename Interface>
class Ref {
 public:
  // An empty handle.
  Ref() = default;
  Ref(std::nullptr_t) {}

  // Takes over a reference that the caller owns: the result of a Create export, or of an operation
  // whose result the caller drops ("+1").
  static Ref Adopt(Interface* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  // Adds a reference: for a pointer that the caller only borrowed, such as the argument of a task's
  // function or the result of a Get operation.
  static Ref Share(Interface* object) {
    if (object) detail::AddReference(object);
    return Adopt(object);
  }

  // A copy adds a reference; a move takes it over and leaves an empty handle.
  Ref(const Ref& other) : Ref(Share(other.object_)) {}
  Ref(Ref&& other) noexcept : object_(other.Release()) {}
  ~Ref() { Reset(); }

  // An event or a package is a task: their handles become tmv::Task.
  template <typename Derived,
            typename = std::enable_if_t<!std::is_same_v<Derived, Interface> &&
                                        std::is_convertible_v<Derived*, Interface*>>>
  Ref(Ref<Derived> other) : object_(other.Release()) {}

  // Drops what it holds and takes over the argument's reference.
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // The plain pointer, borrowed: it is valid for as long as somebody holds a reference.
  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  Interface& operator*() const { return *object_; }
  operator Interface*() const { return object_; }

  // Passes the reference to the caller, who drops it.
  Interface* Release() { return std::exchange(object_, nullptr); }

  // Drops the reference.
  void Reset() {
    if (Interface* object = Release()) detail::DropReference(object);
  }

 private:
  Interface* object_ = nullptr;
};

// A counted reference on each kind of object.
using Task = Ref<RkTask>;
using Event = Ref<RkTaskEvent>;
using Package = Ref<RkTaskPackage>;
using Data = Ref<RkTaskData>;
using Func = Ref<RkTaskFunc>;

// Objects with a single owner: std::unique_ptr, and a function that makes each.
using Manifest = std::unique_ptr<TMVAndroidManifest, detail::Destroyer<DestroyTmvAndroidManifest>>;
using Zip = std::unique_ptr<TMVUtilityZip, detail::Destroyer<DestroyTmvUtilityZip>>;
using DbgReport = std::unique_ptr<TMVDbgReport, detail::Destroyer<DestroyTmvDbgReport>>;
using Thread = std::unique_ptr<RkTaskThread, detail::Destroyer<DestroyRkTaskThread>>;

// A new object of each kind. Throws std::bad_alloc.
inline Manifest MakeManifest() { return Manifest(CreateTmvAndroidManifest()); }
inline Zip MakeZip() { return Zip(CreateTmvUtilityZip()); }
inline DbgReport MakeDbgReport() { return DbgReport(CreateTmvDbgReport()); }
inline Thread MakeThread() { return Thread(CreateRkTaskThread()); }

// A text that an operation handed out as a new block, or null where it reported failure by null.
//   tmv::Text folder(TmvUtilitySys()->GetTempDirectory());
template <typename Char>
class BasicText {
 public:
  // Null: no text.
  BasicText() = default;
  // Takes over the block; null is allowed.
  explicit BasicText(Char* block) : block_(block) {}

  // Whether there is a text, be it empty.
  explicit operator bool() const { return block_ != nullptr; }

  // The text; the empty text for null.
  const Char* c_str() const { return block_ ? block_.get() : &kEmpty; }
  std::basic_string_view<Char> View() const { return c_str(); }
  operator std::basic_string<Char>() const { return c_str(); }

 private:
  static constexpr Char kEmpty{};
  std::unique_ptr<Char, detail::StringFreer> block_;
};

// UTF-8 and UTF-16.
using Text = BasicText<char>;
using WideText = BasicText<TmvWideChar>;

// Bytes that an operation hands out. Pass Out() where a BinaryDataResult* is asked for:
//   tmv::Bytes file;
//   if (TmvUtilityFile()->ReadWholeFile(file.Out(), path)) { use file.View(); }
class Bytes {
 public:
  // No bytes.
  Bytes() = default;
  // A move takes the bytes over.
  Bytes(Bytes&& other) noexcept : record_(std::exchange(other.record_, {})) {}
  Bytes& operator=(Bytes&& other) noexcept {
    std::swap(record_, other.record_);
    return *this;
  }
  ~Bytes() { FreeBinayDataResult(&record_); }

  // The record, empty again, for an operation to fill.
  BinaryDataResult* Out() {
    FreeBinayDataResult(&record_);
    record_ = {};
    return &record_;
  }

  // The bytes, valid until Out() or the end of the object; Data() is null for no bytes.
  const char* Data() const { return record_.Data; }
  uint32_t Size() const { return record_.Size; }
  std::string_view View() const { return {record_.Data, record_.Size}; }

 private:
  BinaryDataResult record_{};
};

// A path as the library takes it, and a path of the library's text: UTF-8, whatever the code page.
inline std::string Utf8(const std::filesystem::path& path) {
  const auto text = path.u8string();
  return std::string(text.begin(), text.end());
}
inline std::filesystem::path PathOf(std::string_view utf8) {
#if defined(__cpp_char8_t)
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
#else
  return std::filesystem::u8path(utf8.begin(), utf8.end());
#endif
}

// The parts of a path: "c:\logs\run.txt" has "c:\logs\", "run" and ".txt".
class PathPieces {
 public:
  // Splits a path, UTF-8.
  explicit PathPieces(const char* path) : parts_(TmvUtilityFile()->SplitPath(path)) {}
  explicit PathPieces(const std::filesystem::path& path) : PathPieces(Utf8(path).c_str()) {}
  PathPieces(const PathPieces&) = delete;
  PathPieces& operator=(const PathPieces&) = delete;
  ~PathPieces() { TmvUtilityFile()->FreePathParts(&parts_); }

  // Null or empty paths have empty parts.
  const char* Directory() const { return OrEmpty(parts_.Directory); }
  const char* Name() const { return OrEmpty(parts_.Name); }
  const char* Extension() const { return OrEmpty(parts_.Extension); }

 private:
  static const char* OrEmpty(const char* text) { return text ? text : ""; }
  PathParts parts_;
};

// A list of tasks that an operation of the scheduler or of the pool handed out. The tasks are valid
// as long as the list; keep one longer with Task::Share.
//   for (RkTask* task : tmv::TaskList(TmvTaskSchedular()->ListCurrentTasks(event))) { ... }
class TaskList {
 public:
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = RkTask*;
    using difference_type = std::ptrdiff_t;
    using pointer = RkTask* const*;
    using reference = RkTask*;

    Iterator() = default;
    explicit Iterator(const TaskListNode* node) : node_(node) {}
    RkTask* operator*() const { return node_->task; }
    Iterator& operator++() {
      node_ = node_->next;
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator& other) const { return node_ == other.node_; }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    const TaskListNode* node_ = nullptr;
  };

  // An empty list.
  TaskList() = default;
  // Takes over the list; null is the empty one.
  explicit TaskList(TaskListNode* head) : head_(head) {}

  // Walks the tasks in the order of the list.
  Iterator begin() const { return Iterator(head_.get()); }
  Iterator end() const { return Iterator(); }
  // Whether there is no task.
  bool Empty() const { return !head_; }

 private:
  struct ListFreer {
    void operator()(TaskListNode* head) const { TmvTaskSchedular()->FreeTaskList(head); }
  };
  std::unique_ptr<TaskListNode, ListFreer> head_;
};

namespace detail {

// What the host put into an event or a package by MakeEvent and Add: the library has no operation
// that lists it. Held by the data of the object, and so as long as the object.
struct TreeRecord {
  std::string eventName;  // Empty for a package.
  std::vector<Task> children;
};

// The records of this program or DLL. Never destroyed: a worker may outlive the static objects.
class TreeRecords {
 public:
  static TreeRecords& Get() {
    static TreeRecords* const records = new TreeRecords;
    return *records;
  }

  // Adds a record to an object that has none. It goes with the data of the object.
  void Attach(RkTask* task, std::string eventName) {
    auto record = std::make_unique<TreeRecord>(TreeRecord{std::move(eventName), {}});
    const Data data = Data::Adopt(CreateRkTaskData());
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      records_.insert(record.get());
    }
    data->SetPayload(record.release());
    data->SetReleaser([](void* payload) {
      const std::unique_ptr<TreeRecord> owned(static_cast<TreeRecord*>(payload));
      const std::lock_guard<std::mutex> lock(Get().mutex_);
      Get().records_.erase(owned.get());
    });
    task->SetData(data);
  }

  // False if the object has no record, or the host has put another payload in its place.
  bool Append(RkTask* task, const Task& child) {
    const std::lock_guard<std::mutex> lock(mutex_);
    TreeRecord* const record = RecordOf(task);
    if (record != nullptr) record->children.push_back(child);
    return record != nullptr;
  }

  std::vector<Task> ChildrenOf(RkTask* task) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const TreeRecord* const record = RecordOf(task);
    return record == nullptr ? std::vector<Task>() : record->children;
  }

  std::set<std::string> EventNames() {
    std::set<std::string> names;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const TreeRecord* record : records_) names.insert(record->eventName);
    names.erase(std::string());
    return names;
  }

 private:
  TreeRecord* RecordOf(RkTask* task) const {
    RkTaskData* const data = task->GetData();
    if (data == nullptr) return nullptr;
    const auto found = records_.find(static_cast<TreeRecord*>(data->GetPayload()));
    return found == records_.end() ? nullptr : *found;
  }

  std::mutex mutex_;
  std::set<TreeRecord*> records_;
};

// What needs the pool and has to be ended before it stops: a job may be paused, and Stop would wait
// for it.
class PoolUser {
 public:
  virtual void EndWithPool() = 0;
  virtual std::string Describe() const = 0;
  virtual const std::string& EventName() const = 0;

 protected:
  ~PoolUser() = default;
};

// The users of this program or DLL. Never destroyed: a worker may outlive the static objects.
class PoolUsers {
 public:
  static PoolUsers& Get() {
    static PoolUsers* const users = new PoolUsers;
    return *users;
  }

  // False if the pool has ended, and the user with it.
  bool Add(const std::shared_ptr<PoolUser>& user) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!poolEnded_) users_[user.get()] = user;
    return !poolEnded_;
  }

  void Remove(const PoolUser* user) {
    const std::lock_guard<std::mutex> lock(mutex_);
    users_.erase(user);
  }

  void BeginPool() {
    const std::lock_guard<std::mutex> lock(mutex_);
    poolEnded_ = false;
  }

  void EndPool() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      poolEnded_ = true;
    }
    for (const std::shared_ptr<PoolUser>& user : List()) user->EndWithPool();
  }

  std::vector<std::shared_ptr<PoolUser>> List() {
    std::vector<std::shared_ptr<PoolUser>> users;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& [key, weak] : users_) {
      if (std::shared_ptr<PoolUser> user = weak.lock()) users.push_back(std::move(user));
    }
    return users;
  }

 private:
  std::mutex mutex_;
  std::map<const PoolUser*, std::weak_ptr<PoolUser>> users_;
  bool poolEnded_ = false;
};

}  // namespace detail

namespace detail {

// A Start that fails half-way leaves threads, which Stop ends. One that finds the pool started has
// made none, and the pool is somebody else's.
inline void StartPool(uint32_t workers) {
  try {
    TmvTaskPool()->Start(workers);
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::operation_not_permitted) TmvTaskPool()->Stop();
    throw;
  } catch (...) {
    TmvTaskPool()->Stop();
    throw;
  }
  PoolUsers::Get().BeginPool();
}

// Stop waits for functions that run, paused ones too, and nothing but a resume wakes those.
inline void StopPool() {
  PoolUsers::Get().EndPool();
  for (const std::string& name : TreeRecords::Get().EventNames()) {
    TmvTaskSchedular()->ResumeEvent(name.c_str());
  }
  TmvTaskPool()->Stop();
}

}  // namespace detail

// Runs the pool from here to the end of the scope, once in the life of the library. The end cancels
// every tmv::Job of this program or DLL that has not ended, resumes every event of MakeEvent that
// is registered, then stops the pool and waits for the functions that run; other events that are
// paused have to be resumed before. Declare it after all that the tasks refer to, in a scope of one
// of the host's own threads; never as a static object, which would stop the pool at unload. Throws
// as Start does.
class RunningPool {
 public:
  // Starts the pool with that many workers. Throws as Start does.
  explicit RunningPool(uint32_t workers) { detail::StartPool(workers); }
  RunningPool(const RunningPool&) = delete;
  RunningPool& operator=(const RunningPool&) = delete;
  ~RunningPool() { detail::StopPool(); }
};

namespace detail {

// Whether a report that has just returned without an end of the task was swallowed by a pause. A
// task that no registered event holds stays active after a report that did count.
inline bool ReportWasLost(RkTask* task) {
  const int32_t state = task->GetState();
  if (state != kTaskStateActive && state != kTaskStatePaused) return false;
  const Task event = Task::Adopt(TmvTaskSchedular()->FindEventOfTask(task->GetName()));
  return event != nullptr;
}

}  // namespace detail

// Reports the end of a task from its function, 1 or 6, and does so again for as long as pauses
// swallow it. On a cancelled task it does nothing.
inline void ReportEnd(RkTask* task, int32_t state) {
  do {
    task->ReportState(task, state);
  } while (detail::ReportWasLost(task));
}

// A pause point for a long function: blocks while the task is paused. False if the task has been
// cancelled, and the function should return soon.
inline bool KeepGoing(RkTask* task) {
  task->ReportState(task, 0);
  return task->GetState() != kTaskStateCancelled;
}

namespace detail {

template <typename Callable>
void Invoke(Callable& callable, RkTask* task) {
  if constexpr (std::is_invocable_v<Callable&, RkTask*>) {
    static_assert(std::is_void_v<std::invoke_result_t<Callable&, RkTask*>>,
                  "a failure is an exception, so the callable returns nothing");
    callable(task);
  } else {
    static_assert(std::is_invocable_v<Callable&>, "the callable takes an RkTask* or nothing");
    static_assert(std::is_void_v<std::invoke_result_t<Callable&>>,
                  "a failure is an exception, so the callable returns nothing");
    callable();
  }
}

// The function that MakeFunc makes; the payload is the callable.
template <typename Callable>
void RunCallable(RkTask* task, RkTaskData* data) {
  int32_t outcome = kTaskStateSucceeded;
  try {
    Invoke(*static_cast<Callable*>(data->GetPayload()), task);
  } catch (...) {
    outcome = kTaskStateFailed;
  }
  ReportEnd(task, outcome);
}

}  // namespace detail

// A function holder that runs a callable of the form void(RkTask*) or void(). The worker reports
// success when it returns and failure when it throws, whatever it throws; it must not report by
// itself. The callable is moved or copied in and destroyed with the last reference on the holder's
// data, on whatever thread drops it, which can be a worker inside the pool: its destructor must not
// throw, wait for tasks, or call the pool or the scheduler.
template <typename Callable>
Func MakeFunc(Callable&& callable) {
  using Stored = std::decay_t<Callable>;
  auto stored = std::make_unique<Stored>(std::forward<Callable>(callable));
  Func func = Func::Adopt(CreateRkTaskFunc());
  func->Bind(stored.get(), detail::RunCallable<Stored>,
             [](void* payload) { delete static_cast<Stored*>(payload); });
  stored.release();
  return func;
}

// A plain task with a name and, if given, a callable as MakeFunc takes it. The name must be unique
// among the tasks of all registered events; without one the task gets a number that is.
inline Task MakeTask(const char* name) {
  Task task = Task::Adopt(CreateRkTask());
  task->SetName(name);
  return task;
}
inline Task MakeTask(const std::string& name) { return MakeTask(name.c_str()); }
template <typename Callable>
Task MakeTask(const char* name, Callable&& callable) {
  Task task = MakeTask(name);
  task->SetFunc(MakeFunc(std::forward<Callable>(callable)));
  return task;
}
template <typename Callable>
Task MakeTask(const std::string& name, Callable&& callable) {
  return MakeTask(name.c_str(), std::forward<Callable>(callable));
}
template <typename Callable,
          typename = std::enable_if_t<!std::is_convertible_v<Callable&&, std::string>>>
Task MakeTask(Callable&& callable) {
  return MakeTask(Text(TmvUtilityApp()->NewPrefixedId("task")).c_str(),
                  std::forward<Callable>(callable));
}

// A new package without tasks. Throws std::bad_alloc.
inline Package MakePackage() { return Package::Adopt(CreateRkTaskPackage()); }

// An event with a name and, if given, a callable as MakeFunc takes it. It runs once on a worker,
// when the event has ended or was cancelled: a cancel that meets the end calls the event's function
// a second time, and that call is passed over. The task that it gets is the event, whose state says
// how it ended: the state of the package that ended last, or kTaskStateCancelled.
//
// The event's own payload (GetData) notes the name for Describe and the packages for Check; a host
// that sets another payload does without.
inline Event MakeEvent(const char* name) {
  Event event = Event::Adopt(CreateRkTaskEvent());
  event->SetName(name);
  detail::TreeRecords::Get().Attach(event, event->GetName());
  return event;
}
inline Event MakeEvent(const std::string& name) { return MakeEvent(name.c_str()); }
template <typename Callable>
Event MakeEvent(const char* name, Callable&& callable) {
  Event event = MakeEvent(name);
  event->SetFunc(MakeFunc(
      [once = std::make_unique<std::atomic<bool>>(false),
       stored = std::decay_t<Callable>(std::forward<Callable>(callable))](RkTask* task) mutable {
        if (!once->exchange(true)) detail::Invoke(stored, task);
      }));
  return event;
}
template <typename Callable>
Event MakeEvent(const std::string& name, Callable&& callable) {
  return MakeEvent(name.c_str(), std::forward<Callable>(callable));
}

// AddPackage and AddTask that keep a note of what was added, in the payload (GetData) of the event
// or the package, so that Children lists it and Check looks into it.
inline void Add(const Event& event, const Package& package) {
  event->AddPackage(package);
  detail::TreeRecords::Get().Append(event, package);
}
inline void Add(const Package& package, const Task& task) {
  if (package->GetData() == nullptr) detail::TreeRecords::Get().Attach(package, {});
  package->AddTask(task);
  detail::TreeRecords::Get().Append(package, task);
}

// What was added by Add, in that order.
inline std::vector<Task> Children(RkTask* eventOrPackage) {
  return detail::TreeRecords::Get().ChildrenOf(eventOrPackage);
}

// The event that is registered under a name, or null.
inline Event FindEvent(const char* name) {
  Task found = Task::Adopt(TmvTaskSchedular()->FindEvent(name));
  auto* const event = dynamic_cast<RkTaskEvent*>(found.Get());
  if (event != nullptr) found.Release();
  return Event::Adopt(event);
}

// How far a package is, without a note of what was added: the child in progress with its
// neighbours, and its number among all. Null where there is none.
struct Position {
  uint32_t index = 0;  // Of the child in progress.
  uint32_t count = 0;  // Of all children.
  Task previous;       // The child before it.
  Task current;        // The child in progress.
  Task next;           // The child after it.
};
inline Position PositionOf(RkTaskPackage* package) {
  // The list has the current task of each package of an event, which needn't be registered.
  const Event around = Event::Adopt(CreateRkTaskEvent());
  around->AddPackage(package);
  const TaskList list(TmvTaskSchedular()->ListCurrentTasks(around));
  Position position;
  position.index = package->GetCurrentIndex();
  position.count = package->GetCount();
  position.previous = Task::Adopt(package->GetPrevious());
  position.current = list.Empty() ? Task() : Task::Share(*list.begin());
  position.next = Task::Adopt(package->GetNext());
  return position;
}

}  // namespace tmv

#endif  // TEMVAR_HANDLES_H_
