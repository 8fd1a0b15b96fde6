// Synchronous notification: a subject calls each of its observers on the calling thread.
//
// Thread-safety: the list of observers is filled while the library loads and never changes
// afterwards, so Notify needs no lock and may run on several threads at once.
#ifndef TEMVAR_FRAME_SUBJECT_H_
#define TEMVAR_FRAME_SUBJECT_H_

#include <list>

namespace temvar {

// The messages of the pool. An observer compares the key as text. Both are sent with the pool's
// queueMutex held, so Update must be short and must not enter the pool.
//
// A worker has finished a task, which has left the list of running tasks; no data.
inline constexpr char kTaskPoolAddThreadToPool[] = "kTaskPoolAddThreadToPool";
// A task was assigned to a worker that is about to be woken; data is the address of an RkTask*.
inline constexpr char kTaskPoolReadyToRunThread[] = "kTaskPoolReadyToRunThread";

class TMVObserver {
 public:
  virtual ~TMVObserver() = default;

  // Receives one message; `data` is valid during the call only. A null key is no message. The base
  // class ignores every message.
  virtual void Update(void* /*data*/, const char* /*key*/) {}
};

class TMVSubject {
 public:
  virtual ~TMVSubject() = default;

  // Calls Update(data, key) on each observer, in the order of addition. An exception out of an
  // Update ends the walk and reaches the caller.
  virtual void Notify(void* data, const char* key) {
    for (TMVObserver* observer : observers_) observer->Update(data, key);
  }

  // Appends an observer, which is not owned. Before the first Notify.
  void AddObserver(TMVObserver* observer) { observers_.push_back(observer); }

 private:
  std::list<TMVObserver*> observers_;
};

}  // namespace temvar

#endif  // TEMVAR_FRAME_SUBJECT_H_
