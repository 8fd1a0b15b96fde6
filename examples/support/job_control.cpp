#include "support/job_control.h"

#include <chrono>

namespace support {

// The function runs after the last package, or at the end of a cancel; twice if the two meet.
JobControl::JobControl(tmv::Event event) : event_(std::move(event)) {
  event_->SetFunc(tmv::MakeFunc([this] { ended_ = true; }));
}

// A cancelled event is still in the registry.
JobControl::~JobControl() { TmvTaskSchedular()->RemoveEvent(Name()); }

void JobControl::Start() { TmvTaskSchedular()->AddEvent(event_); }

// PauseEvent waits until each running task has come to a pause point, which can take as long as the
// longest piece of work. It does so on a thread of its own, so that the keyboard stays alive.
void JobControl::Pause() {
  if (IsPaused()) return;
  pauserDone_ = false;
  pauser_ = std::thread([this] {
    TmvTaskSchedular()->PauseEvent(Name());
    pauserDone_ = true;
  });
}

// A resume ends a PauseEvent that waits, but not one that has yet to begin: so it is repeated until
// the pause is over, and made once more for what that has paused.
void JobControl::Resume() {
  if (!IsPaused()) return;
  while (!pauserDone_) {
    TmvTaskSchedular()->ResumeEvent(Name());
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  pauser_.join();
  TmvTaskSchedular()->ResumeEvent(Name());
}

// A cancel is a task of the pool: it needs a free worker, and it takes out active tasks only. A
// paused task keeps its worker, is not active, and wakes only on a resume of its event, which must
// be registered then. So the order is:
// 1. The flag, at which a running task returns at its next look and frees its worker.
// 2. The resume, so that parked tasks wake, find the flag and return, and queued ones are active.
// 3. The cancel, which keeps the entry: it then waits for the running tasks before it calls the
//    event's function.
void JobControl::Cancel() {
  cancelled_ = true;
  Resume();
  TmvTaskSchedular()->CancelEventEx(Name(), false);
}

}  // namespace support
