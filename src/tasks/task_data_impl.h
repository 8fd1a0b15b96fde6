#ifndef TEMVAR_TASKS_TASK_DATA_IMPL_H_
#define TEMVAR_TASKS_TASK_DATA_IMPL_H_

#include <atomic>
#include <cstdint>

#include "frame/ref.h"
#include "temvar/task_data.h"
#include "temvar/task_func.h"

namespace temvar {

class RkTaskDataImpl final : public RkTaskData {
 public:
  void SetPayload(void* payload) override { payload_ = payload; }
  void* GetPayload() override { return payload_; }
  void SetReleaser(void (*releaser)(void*)) override { releaser_ = releaser; }

  void AddRef() { refCount_.fetch_add(1, std::memory_order_relaxed); }
  void Release();

 private:
  std::atomic<int32_t> refCount_{1};
  void* payload_ = nullptr;
  void (*releaser_)(void*) = nullptr;
};

class RkTaskFuncImpl final : public RkTaskFunc {
 public:
  void Bind(void* payload, RkTaskCallback callback, void (*releaser)(void*)) override;
  void SetCallback(RkTaskCallback callback, RkTaskData* data) override;
  RkTaskCallback GetCallback() override { return callback_; }
  RkTaskData* GetData() override { return data_.get(); }

  const Ref<RkTaskDataImpl>& Data() const { return data_; }

  void AddRef() { refCount_.fetch_add(1, std::memory_order_relaxed); }
  void Release();

 private:
  std::atomic<int32_t> refCount_{1};
  Ref<RkTaskDataImpl> data_;
  RkTaskCallback callback_ = nullptr;
};

// The implementation behind an interface pointer; null for null and for what is not of this
// library.
RkTaskDataImpl* ToImpl(RkTaskData* data);
RkTaskFuncImpl* ToImpl(RkTaskFunc* func);

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_DATA_IMPL_H_
