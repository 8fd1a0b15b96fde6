#ifndef TESTS_SOAK_MODEL_H_
#define TESTS_SOAK_MODEL_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include <temvar/handles.h>

// A generated event and what is known about how it must go. Its tasks check the promises of the
// scheduler as they run.
namespace soak {

enum class Kind {
  kPlain,      // Paused and resumed only: must run to its end.
  kCancelled,  // Cancelled at some moment, and taken out at once.
  kKept,       // Cancelled at some moment, the entry kept.
  kRemoved,    // Taken out of the registry while it runs.
  kWild,       // Tasks are inserted anywhere by anybody; nothing is promised about their order.
};

// Objects that are alive; all of them must be 0 at the end.
struct Balance {
  std::atomic<int64_t> payloads{0};
  std::atomic<int64_t> events{0};
  std::atomic<int64_t> hostFuncs{0};
};
Balance& Alive();

// What has started, for the summary.
struct Counts {
  std::atomic<uint64_t> events{0};
  std::atomic<uint64_t> tasks{0};
};
Counts& Count();

// A number below `count`.
size_t AnyIndex(std::mt19937_64& random, size_t count);

class EventModel;

struct TaskModel {
  std::string name;
  size_t package = 0;
  int32_t result = kTaskStateSucceeded;
  int pausePoints = 0;
  int sleepMicroseconds = 0;
  bool silent = false;       // Never reports.
  bool insertsNext = false;  // Inserts a task behind itself before it reports.
  bool cancelsItself = false;
  bool asks = false;  // Looks things up from within.
  TaskModel* next = nullptr;
  std::atomic<int> starts{0};
};

class EventModel : public std::enable_shared_from_this<EventModel> {
 public:
  static std::shared_ptr<EventModel> Make(Kind kind, const std::string& name,
                                          std::mt19937_64& random);
  ~EventModel();

  Kind kind() const { return kind_; }
  const std::string& name() const { return name_; }
  RkTask* task() const { return event_; }
  std::string SomeTaskName(std::mt19937_64& random);

  // Inserts a new task behind any other one, as the scheduler finds it by name.
  void InsertAnywhere(std::mt19937_64& random);

  bool WasCalled() const { return calls_ > 0; }
  int Inside() const { return inside_; }
  int64_t Starts() const { return starts_; }

  // Sets paused tasks active: those whose event has left the registry can't be resumed.
  void FreeParkedTasks();

  // Drops the references that the model holds. Its tasks hold the model, so this ends it.
  void LetGo();

 private:
  struct PackageModel {
    std::mutex mutex;
    std::vector<std::unique_ptr<TaskModel>> tasks;  // In order of making.
    TaskModel* first = nullptr;
    TaskModel* expected = nullptr;  // Null: the package itself.
    bool continueOnFailure = true;
    bool started = false;
    bool ended = false;
    int32_t lastResult = 0;
  };

  // Holds the model for as long as the library holds the function.
  struct Payload {
    std::shared_ptr<EventModel> model;
    TaskModel* task = nullptr;
    PackageModel* package = nullptr;
  };

  EventModel(Kind kind, std::string name);
  void Build(std::mt19937_64& random);
  void BuildPackage(std::mt19937_64& random);
  TaskModel* MakeTaskModel(PackageModel& package, size_t index);
  tmv::Task MakeTask(TaskModel* model);
  tmv::Func MakeFunc(RkTaskCallback callback, TaskModel* task, PackageModel* package);
  void InsertNext(TaskModel& model, RkTask* task);

  static void ReleasePayload(void* payload);
  static void RunTask(RkTask* task, RkTaskData* data);
  static void RunPackage(RkTask* task, RkTaskData* data);
  static void RunEvent(RkTask* task, RkTaskData* data);

  void Start(TaskModel& model);
  void Work(TaskModel& model, RkTask* task);
  void Report(TaskModel& model, RkTask* task);
  void CheckEnd(RkTask* event);
  bool IsChecked() const { return kind_ != Kind::kWild; }
  [[noreturn]] void Broken(const std::string& what) const;

  const Kind kind_;
  const std::string name_;
  std::vector<std::unique_ptr<PackageModel>> packages_;
  std::atomic<int> calls_{0};
  std::atomic<int> inside_{0};
  std::atomic<int64_t> starts_{0};
  std::atomic<uint64_t> lastTask_{0};

  std::mutex ownersMutex_;
  std::vector<tmv::Task> owners_;  // The references of the host, inserted tasks too.
  bool letGo_ = false;             // Another driver may still insert a task.
  tmv::Event event_;
};

}  // namespace soak

#endif  // TESTS_SOAK_MODEL_H_
