#ifndef TESTS_SOAK_DRIVER_H_
#define TESTS_SOAK_DRIVER_H_

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <random>
#include <string>

#include "model.h"
#include "watchdog.h"

namespace soak {

class Driver;

// What the drivers share.
struct Stage {
  std::deque<Driver> drivers;
  std::chrono::steady_clock::time_point end;
  // Whether the last events are left to Stop while they run, or are waited for.
  bool cutOff = false;
  // An event that stands in the registry all the time. To resume it wakes everything parked.
  tmv::Event bell;
};

// One thread of a host: makes events one after the other, and while its own event runs it does
// anything to it and to those of the others.
class Driver {
 public:
  Driver(Stage& stage, size_t index, uint64_t seed, Activity& activity);

  void Run();

  // Ends what Run left to Stop. Only after Stop.
  void LetGo();

  // The event that this driver runs now, or null. Any thread.
  std::shared_ptr<EventModel> Current();

 private:
  void Publish(std::shared_ptr<EventModel> event);
  void RunEvent();
  bool HasEnded(const EventModel& event) const;
  void FreeIfGone(EventModel& event);
  void EndIt(EventModel& event);
  void DoAnything();
  void PauseAWhile(EventModel& event);
  void CancelOrRemove(EventModel& event);
  void Ask(EventModel& event);
  void AddHostFunc();
  void Settle(EventModel& event);
  void AwaitQueue(EventModel& event);

  Stage& stage_;
  const size_t index_;
  std::mt19937_64 random_;
  Activity& activity_;
  uint64_t lastEvent_ = 0;
  bool endRequested_ = false;

  std::mutex mutex_;
  std::shared_ptr<EventModel> current_;
};

}  // namespace soak

#endif  // TESTS_SOAK_DRIVER_H_
