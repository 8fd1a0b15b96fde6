#include "driver.h"

#include <thread>

namespace soak {
namespace {

RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }

void Nap(std::mt19937_64& random, int mostMicroseconds) {
  std::this_thread::sleep_for(
      std::chrono::microseconds(random() % static_cast<uint64_t>(mostMicroseconds)));
}

}  // namespace

Driver::Driver(Stage& stage, size_t index, uint64_t seed, Activity& activity)
    : stage_(stage), index_(index), random_(seed), activity_(activity) {}

void Driver::Run() {
  while (std::chrono::steady_clock::now() < stage_.end) RunEvent();
  activity_.Begin("done", true);
}

std::shared_ptr<EventModel> Driver::Current() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return current_;
}

void Driver::Publish(std::shared_ptr<EventModel> event) {
  const std::lock_guard<std::mutex> lock(mutex_);
  current_.swap(event);
}

void Driver::RunEvent() {
  const auto kind = static_cast<Kind>(random_() % 5);
  const std::string name = "event " + std::to_string(index_) + "." + std::to_string(++lastEvent_);
  const std::shared_ptr<EventModel> event = EventModel::Make(kind, name, random_);
  {
    const Doing doing(activity_, "AddEvent", name);
    Schedular().AddEvent(event->task());
  }
  Publish(event);
  endRequested_ = false;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!HasEnded(*event)) {
    DoAnything();
    FreeIfGone(*event);
    if (kind != Kind::kPlain && !endRequested_ && random_() % 20 == 0) EndIt(*event);
    const auto now = std::chrono::steady_clock::now();
    if (kind == Kind::kPlain && stage_.cutOff && now > stage_.end) return;
    if (kind != Kind::kPlain && now > stage_.end) EndIt(*event);
    if (now > std::max(deadline, stage_.end + std::chrono::seconds(30))) {
      activity_.Begin("waits for the end of " + name);
      std::this_thread::sleep_for(std::chrono::hours(1));  // Until the watchdog tells.
    }
  }
  Publish(nullptr);
  Settle(*event);
}

// A task that is parked when its event leaves the registry can't be resumed any more. It would keep
// its worker, which the cancel may need.
void Driver::FreeIfGone(EventModel& event) {
  if (tmv::Task::Adopt(Schedular().FindEvent(event.name().c_str()))) return;
  event.FreeParkedTasks();
  Schedular().ResumeEvent(stage_.bell->GetName());
}

// A cancelled event's function is called, by the cancel or by the end that came before it.
bool Driver::HasEnded(const EventModel& event) const {
  if (event.kind() == Kind::kPlain) return event.WasCalled();
  if (event.kind() == Kind::kRemoved) return endRequested_;
  return endRequested_ && event.WasCalled();
}

void Driver::EndIt(EventModel& event) {
  endRequested_ = true;
  CancelOrRemove(event);
}

void Driver::CancelOrRemove(EventModel& event) {
  const char* const name = event.name().c_str();
  const Doing doing(activity_, "cancels or removes", name);
  if (event.kind() == Kind::kRemoved) Schedular().RemoveEvent(name);
  if (event.kind() == Kind::kCancelled) Schedular().CancelEvent(name);
  if (event.kind() == Kind::kKept || event.kind() == Kind::kWild) {
    Schedular().CancelEventEx(name, false);
  }
}

void Driver::DoAnything() {
  const std::shared_ptr<EventModel> event =
      stage_.drivers[AnyIndex(random_, stage_.drivers.size())].Current();
  if (event == nullptr) {
    Nap(random_, 100);
    return;
  }
  const Doing doing(activity_, "edits and look-ups", event->name());
  switch (random_() % 12) {
    case 0:
    case 1:
      return PauseAWhile(*event);
    case 2:
      if (event.get() != current_.get() && random_() % 10 == 0) CancelOrRemove(*event);
      return;
    case 3:
      if (event->kind() == Kind::kCancelled && random_() % 10 == 0) {
        Schedular().CancelEventOfTask(event->SomeTaskName(random_).c_str());
      }
      return;
    case 4:
      if (event->kind() == Kind::kWild) event->InsertAnywhere(random_);
      return;
    case 5:
    case 6:
      return Ask(*event);
    case 7:
      return AddHostFunc();
    case 8:
      TmvTaskPool()->SetPollInterval(static_cast<int32_t>(random_() % 600) - 50);
      return;
    default:
      return Nap(random_, 500);
  }
}

void Driver::PauseAWhile(EventModel& event) {
  {
    const Doing doing(activity_, "PauseEvent", event.name());
    Schedular().PauseEvent(event.name().c_str());
  }
  Nap(random_, 1000);
  const Doing doing(activity_, "ResumeEvent", event.name());
  Schedular().ResumeEvent(event.name().c_str());
}

void Driver::Ask(EventModel& event) {
  const tmv::Task found = tmv::Task::Adopt(Schedular().FindEvent(event.name().c_str()));
  if (found) {
    if (event.name() != found->GetName()) Fail("FindEvent gave " + std::string(found->GetName()));
    TaskListNode* const list = Schedular().ListCurrentTasks(found);
    for (TaskListNode* node = list; node != nullptr; node = node->next) {
      const std::string name = node->task->GetName();
      if (name.rfind(event.name(), 0) != 0) Fail("ListCurrentTasks gave " + name);
    }
    Schedular().FreeTaskList(list);
  }
  uint32_t count = 0;
  TaskListNode* const running = TmvTaskPool()->ListRunning(event.name().c_str(), count);
  uint32_t length = 0;
  for (TaskListNode* node = running; node != nullptr; node = node->next) ++length;
  TmvTaskPool()->FreeTaskList(running);
  if (length != count) Fail("ListRunning gave a count that isn't the length of its list");
  const std::string task = event.SomeTaskName(random_);
  const bool cancelled = Schedular().IsTaskCancelled(task.c_str());
  if (cancelled && event.kind() == Kind::kPlain) Fail(task + " reads as cancelled");
  if (Schedular().GetEventCount() < 1) Fail("the registry lost an event");
}

// It may be dropped by a cancel, as what belongs to no event is, but it must be released.
void Driver::AddHostFunc() {
  ++Alive().hostFuncs;
  const std::shared_ptr<void> token(nullptr, [](void*) { --Alive().hostFuncs; });
  TmvTaskPool()->AddFunc(tmv::MakeFunc([token] {}));
}

// Waits until nothing of the event can run any more, and drops it.
void Driver::Settle(EventModel& event) {
  const Doing doing(activity_, "waits for the tasks of", event.name());
  Schedular().RemoveEvent(event.name().c_str());
  int64_t starts = 0;
  do {
    starts = event.Starts();
    AwaitQueue(event);
  } while (event.Inside() > 0 || event.Starts() != starts);
  event.LetGo();
}

// What was queued before has started, or was dropped, when a function behind it is released.
void Driver::AwaitQueue(EventModel& event) {
  std::shared_ptr<int> token = std::make_shared<int>();
  const std::weak_ptr<int> life = token;
  TmvTaskPool()->AddFunc(tmv::MakeFunc([token = std::move(token)] {}));
  while (!life.expired() || event.Inside() > 0) {
    FreeIfGone(event);
    Nap(random_, 300);
  }
}

void Driver::LetGo() {
  if (current_ == nullptr) return;
  Schedular().RemoveEvent(current_->name().c_str());
  current_->LetGo();
  current_ = nullptr;
}

}  // namespace soak
