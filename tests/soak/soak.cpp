// A randomised run of the scheduler through its exports:
//   soak SEED SECONDS
// Several threads make events and pause, resume, cancel, remove, edit and look up each other's;
// tasks pause their own event and each other's; workers of the host's own come and go. The events
// themselves check what is promised: the order inside a package, one end for each event,
// states, look-ups. At the end Stop must return and everything must have been released once. A run
// that doesn't come to its end aborts: the stacks of its threads show where they hang.
#include <deque>
#include <future>
#include <iostream>

#include "model.h"

namespace {

using namespace soak;

class Driver;

// What the drivers share.
struct Stage {
  std::deque<Driver> drivers;
  std::chrono::steady_clock::time_point end;
  // Whether the last events are left to Stop while they run, or are waited for.
  bool cutOff = false;
  // An event that is in the registry all the time. To resume it wakes everything parked.
  tmv::Event bell;
};

// One thread of a host: makes events one after the other, and while its own event runs it does
// anything to it and to those of the others.
class Driver {
 public:
  Driver(Stage& stage, size_t index, uint64_t seed) : stage_(stage), index_(index), random_(seed) {}

  void Run() {
    while (std::chrono::steady_clock::now() < stage_.end) RunEvent();
  }

  // Ends what Run left to Stop. Only after Stop.
  void LetGo() {
    if (current_ == nullptr) return;
    Schedular().RemoveEvent(current_->name.c_str());
    current_->LetGo();
    current_ = nullptr;
  }

  // The event that this driver runs now, or null. Any thread.
  std::shared_ptr<EventModel> Current() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return current_;
  }

 private:
  void Nap(uint64_t mostMicroseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(random_() % mostMicroseconds));
  }

  void Publish(std::shared_ptr<EventModel> event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    current_.swap(event);
  }

  void RunEvent() {
    const auto kind = static_cast<Kind>(random_() % 5);
    const std::string name = "event " + std::to_string(index_) + "." + std::to_string(++lastEvent_);
    const auto event = std::make_shared<EventModel>(kind, name);
    event->Build(random_);
    Schedular().AddEvent(event->task());
    Publish(event);
    endRequested_ = false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!HasEnded(*event)) {
      DoAnything();
      FreeIfGone(*event);
      const auto now = std::chrono::steady_clock::now();
      const bool isLate = now > stage_.end;
      if (kind == Kind::kPlain && stage_.cutOff && isLate) return;
      if (kind != Kind::kPlain && (isLate || (!endRequested_ && random_() % 20 == 0))) {
        endRequested_ = true;
        CancelOrRemove(*event);
        if (isLate) Nap(2000);
      }
      if (now > std::max(deadline, stage_.end + std::chrono::seconds(30))) {
        Fail(name + " doesn't end");
      }
    }
    Publish(nullptr);
    Settle(*event);
  }

  // A cancelled event's function is called, by the cancel or by the end that came before it.
  bool HasEnded(const EventModel& event) const {
    if (event.kind == Kind::kPlain) return event.calls > 0;
    if (event.kind == Kind::kRemoved) return endRequested_;
    return endRequested_ && event.calls > 0;
  }

  // A task that is parked when its event leaves the registry can't be resumed any more. It would
  // keep its worker, which the cancel may need.
  void FreeIfGone(EventModel& event) {
    if (tmv::Task::Adopt(Schedular().FindEvent(event.name.c_str()))) return;
    event.FreeParkedTasks();
    Schedular().ResumeEvent(stage_.bell->GetName());
  }

  void DoAnything() {
    const std::shared_ptr<EventModel> event =
        stage_.drivers[static_cast<size_t>(random_() % stage_.drivers.size())].Current();
    if (event == nullptr) {
      Nap(100);
      return;
    }
    switch (random_() % 12) {
      case 0:
      case 1:
        return PauseAWhile(*event);
      case 2:
        if (event.get() != current_.get() && random_() % 10 == 0) CancelOrRemove(*event);
        return;
      case 3:
        if (event->kind == Kind::kCancelled && random_() % 10 == 0) {
          Schedular().CancelEventOfTask(event->SomeTaskName(random_).c_str());
        }
        return;
      case 4:
        if (event->kind == Kind::kWild) event->InsertAnywhere(random_);
        return;
      case 5:
      case 6:
        return Ask(*event);
      case 7:
        TmvTaskPool()->SetPollInterval(static_cast<int32_t>(random_() % 600) - 50);
        return;
      default:
        return Nap(500);
    }
  }

  void PauseAWhile(EventModel& event) {
    Schedular().PauseEvent(event.name.c_str());
    Nap(1000);
    Schedular().ResumeEvent(event.name.c_str());
  }

  void CancelOrRemove(EventModel& event) {
    const char* const name = event.name.c_str();
    if (event.kind == Kind::kRemoved) Schedular().RemoveEvent(name);
    if (event.kind == Kind::kCancelled) Schedular().CancelEvent(name);
    if (event.kind == Kind::kKept || event.kind == Kind::kWild) {
      Schedular().CancelEventEx(name, false);
    }
  }

  void Ask(EventModel& event) {
    const tmv::Task found = tmv::Task::Adopt(Schedular().FindEvent(event.name.c_str()));
    if (found) {
      if (event.name != found->GetName()) Fail("FindEvent returned another event");
      for (RkTask* task : tmv::TaskList(Schedular().ListCurrentTasks(found))) {
        const std::string name = task->GetName();
        if (!name.starts_with(event.name)) Fail("a foreign current task");
      }
    }
    uint32_t count = 0;
    const tmv::TaskList running(TmvTaskPool()->ListRunning(event.name.c_str(), count));
    const auto length = static_cast<uint32_t>(std::distance(running.begin(), running.end()));
    if (length != count) Fail("ListRunning miscounted");
    const std::string task = event.SomeTaskName(random_);
    const bool cancelled = Schedular().IsTaskCancelled(task.c_str());
    if (cancelled && event.kind == Kind::kPlain) Fail(task + " reads as cancelled");
    if (Schedular().GetEventCount() < 1) Fail("the registry lost an event");
  }

  // Waits until nothing of the event can run any more, and drops it.
  void Settle(EventModel& event) {
    Schedular().RemoveEvent(event.name.c_str());
    int64_t starts = 0;
    do {
      starts = event.starts;
      AwaitQueue(event);
    } while (event.inside > 0 || event.starts != starts);
    // A worker may hold a task that it hasn't begun. It must not park: nobody would free it.
    event.closed = true;
    while (event.inside > 0) FreeIfGone(event);
    event.LetGo();
  }

  // What was queued before has started, or was dropped, when a function after it is released.
  void AwaitQueue(EventModel& event) {
    std::shared_ptr<int> token = std::make_shared<int>();
    const std::weak_ptr<int> life = token;
    TmvTaskPool()->AddFunc(tmv::MakeFunc([token = std::move(token)] {}));
    while (!life.expired() || event.inside > 0) {
      FreeIfGone(event);
      Nap(300);
    }
  }

  Stage& stage_;
  const size_t index_;
  std::mt19937_64 random_;
  uint64_t lastEvent_ = 0;
  bool endRequested_ = false;

  std::mutex mutex_;
  std::shared_ptr<EventModel> current_;
};

// Far above what a loaded machine with a sanitizer needs to come to its end.
constexpr std::chrono::seconds kPatience{150};

void RunDrivers(Stage& stage) {
  std::vector<std::thread> threads;
  for (Driver& driver : stage.drivers) threads.emplace_back(&Driver::Run, &driver);
  for (std::thread& thread : threads) thread.join();
}

// A worker of the host's own after the other. What one of them was assigned and has not begun,
// others must run.
void ComeAndGo(const Stage& stage, uint64_t seed) {
  std::mt19937_64 random(seed);
  while (std::chrono::steady_clock::now() < stage.end) {
    const tmv::Thread worker = tmv::MakeThread();
    worker->SetPool(TmvTaskPool());
    worker->Start();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    worker->Stop();
  }
}

// Tasks that pause an event leave the resume to this thread.
void ResumeNowAndThen(Stage& stage, const std::atomic<bool>& stopped) {
  while (!stopped) {
    for (Driver& driver : stage.drivers) {
      const std::shared_ptr<EventModel> event = driver.Current();
      if (event != nullptr) Schedular().ResumeEvent(event->name.c_str());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const uint64_t seed = std::stoull(argv[1]);
  const uint64_t seconds = std::stoull(argv[2]);

  Stage stage;
  stage.end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  stage.cutOff = seed % 2 == 1;
  stage.bell = tmv::MakeEvent("bell");
  Schedular().RegisterEvent(stage.bell);
  for (size_t i = 0; i < 4; ++i) stage.drivers.emplace_back(stage, i, seed * 1000 + i);

  std::atomic<size_t> turn{0};
  someEvent = [&stage, &turn] {
    const auto event = stage.drivers[turn++ % stage.drivers.size()].Current();
    return event == nullptr ? std::string() : event->name;
  };

  std::atomic<bool> stopped{false};
  std::promise<void> ended;
  std::thread watchdog([&stage, end = ended.get_future()] {
    if (end.wait_until(stage.end + kPatience) != std::future_status::ready) Fail("no end");
  });
  TmvTaskPool()->Start(static_cast<uint32_t>(1 + seed % 4));
  std::thread resumes(ResumeNowAndThen, std::ref(stage), std::cref(stopped));
  std::thread guests(ComeAndGo, std::cref(stage), seed);
  RunDrivers(stage);
  guests.join();
  TmvTaskPool()->Stop();
  ended.set_value();
  watchdog.join();
  stopped = true;
  resumes.join();
  for (Driver& driver : stage.drivers) driver.LetGo();
  Schedular().RemoveEvent("bell");
  if (livePayloads != 0) Fail(std::to_string(livePayloads) + " payloads were not released");
  if (Schedular().GetEventCount() != 0) Fail("events are registered still");
  std::cout << "seed " << seed << ": " << startedTasks << " tasks; all promises kept\n";
}
