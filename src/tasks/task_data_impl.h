#ifndef TEMVAR_TASKS_TASK_DATA_IMPL_H_
#define TEMVAR_TASKS_TASK_DATA_IMPL_H_

#include <atomic>
#include <cstdint>

#include "frame/ref.h"
#include "temvar/task_data.h"

namespace temvar {

// Only the count is shared between threads: payload and releaser are set before the box is, and
// are only read afterwards.
class RkTaskDataImpl final : public RkTaskData {
 public:
  void SetPayload(void* payload) override { payload_ = payload; }
  void* GetPayload() override { return payload_; }
  void SetReleaser(void (*releaser)(void*)) override { releaser_ = releaser; }

  void AddRef() { refCount_.fetch_add(1, std::memory_order_relaxed); }

  // The last one calls the releaser, which is host code: not under a lock of the library.
  void Release();

 private:
  std::atomic<int32_t> refCount_{1};
  void* payload_ = nullptr;
  void (*releaser_)(void*) = nullptr;
};

// The implementation of an interface pointer; null for null and for an object that is not of this
// library.
RkTaskDataImpl* ToImpl(RkTaskData* data);

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_DATA_IMPL_H_
