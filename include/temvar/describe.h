#ifndef TEMVAR_DESCRIBE_H_
#define TEMVAR_DESCRIBE_H_

// For a host that asks why a job makes no progress, or whether it will; C++17, header-only.
//
//   tmv::Describe()      the state of everything that runs, as text for a log
//   tmv::Check(event)    the faults of an event that has not been started

#include <map>
#include <set>
#include <string>
#include <vector>

#include "temvar/handles.h"

namespace tmv {

namespace detail {

inline std::string NameOfState(int32_t state) {
  switch (state) {
    case kTaskStateCreated:
      return "created";
    case kTaskStateSucceeded:
      return "succeeded";
    case kTaskStateActive:
      return "active";
    case kTaskStateCancelled:
      return "cancelled";
    case kTaskStateFailed:
      return "failed";
    case kTaskStatePaused:
      return "paused";
    default:
      return "state " + std::to_string(state);
  }
}

// A line for the event and one for each package that has tasks.
inline std::string DescribeEvent(RkTask* event) {
  const std::string name = event->GetName();
  std::string text = "event " + name + ": " + NameOfState(event->GetState()) + "\n";
  uint32_t count = 0;
  const TaskList running(TmvTaskPool()->ListRunning(name.c_str(), count));
  for (RkTask* task : TaskList(TmvTaskSchedular()->ListCurrentTasks(event))) {
    const Package package = Package::Adopt(TmvTaskSchedular()->FindPackageOfTask(task->GetName()));
    text += "  task ";
    if (package) {
      text += std::to_string(package->GetCurrentIndex() + 1) + " of " +
              std::to_string(package->GetCount()) + " ";
    }
    text += std::string(task->GetName()) + ": " + NameOfState(task->GetState());
    for (RkTask* entry : running) {
      if (entry == task) text += ", running";
    }
    text += "\n";
  }
  return text;
}

}  // namespace detail

// What runs and what waits, as lines of text: the pool; each tmv::Job that has been started and not
// ended; each other event that tmv::MakeEvent of this program or DLL made and that is registered,
// with the task that each of its packages is at. A task that is "active" but not "running" waits
// for a worker, or has returned without a report. Each line is of its own moment. Any thread.
// Throws std::bad_alloc.
inline std::string Describe() {
  std::string text = "pool: " + std::to_string(TmvTaskPool()->GetThreadCount()) + " workers, " +
                     std::to_string(TmvTaskPool()->GetQueuedCount()) + " tasks queued, " +
                     std::to_string(TmvTaskSchedular()->GetEventCount()) + " events registered\n";
  std::set<std::string> names = detail::TreeRecords::Get().EventNames();
  for (const auto& user : detail::PoolUsers::Get().List()) {
    text += user->Describe();
    names.erase(user->EventName());
  }
  for (const std::string& name : names) {
    const Task event = Task::Adopt(TmvTaskSchedular()->FindEvent(name.c_str()));
    if (event) text += detail::DescribeEvent(event);
  }
  return text;
}

// What would keep an event from its end, one sentence each; empty if nothing is known. Looks into
// what tmv::Add has put in, before the event is handed to AddEvent: no package at all, a package
// without tasks, a package inside a package, two tasks of one name, or of the name of a task that
// is registered; and a name of the event that is taken. Any thread. Throws std::bad_alloc.
inline std::vector<std::string> Check(RkTask* event) {
  std::vector<std::string> problems;
  const std::string eventName = event->GetName();
  const auto say = [&problems](std::string text) { problems.push_back(std::move(text)); };
  const Task registered = Task::Adopt(TmvTaskSchedular()->FindEvent(eventName.c_str()));
  if (registered && registered != event) say("another event is named " + eventName);
  const std::vector<Task> packages = Children(event);
  if (packages.empty()) say("event " + eventName + " has no package");

  std::map<std::string, int> names;
  for (std::size_t i = 0; i < packages.size(); ++i) {
    const std::string place = "package " + std::to_string(i + 1);
    auto* const package = dynamic_cast<RkTaskPackage*>(packages[i].Get());
    const std::vector<Task> tasks = Children(packages[i]);
    if (package == nullptr || package->GetCount() == 0) say(place + " has no task");
    if (package != nullptr && package->GetCount() != tasks.size()) {
      say(place + " holds tasks that were not added by tmv::Add");
    }
    for (const Task& task : tasks) {
      const std::string name = task->GetName();
      if (task->GetType() != kTaskTypePlain) say(place + " holds a package, which never runs");
      if (names[name]++ == 1) say("two tasks are named " + name);
      const Task other = Task::Adopt(TmvTaskSchedular()->FindTask(name.c_str()));
      if (other && other != task && registered != event) say("another task is named " + name);
    }
  }
  return problems;
}

}  // namespace tmv

#endif  // TEMVAR_DESCRIBE_H_
