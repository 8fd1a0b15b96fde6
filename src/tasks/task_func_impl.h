#ifndef TEMVAR_TASKS_TASK_FUNC_IMPL_H_
#define TEMVAR_TASKS_TASK_FUNC_IMPL_H_

#include <atomic>
#include <cstdint>
#include <functional>

#include "frame/prefetch.h"
#include "frame/ref.h"
#include "tasks/task_data_impl.h"
#include "temvar/task_func.h"

namespace temvar {

// Set up before it is shared, like RkTaskDataImpl.
class RkTaskFuncImpl final : public RkTaskFunc {
 public:
  void Bind(void* payload, RkTaskCallback callback, void (*releaser)(void*)) override;
  void SetCallback(RkTaskCallback callback, RkTaskData* data) override;
  RkTaskCallback GetCallback() override { return callback_; }
  RkTaskData* GetData() override { return data_.get(); }

  const Ref<RkTaskDataImpl>& Data() const { return data_; }
  // From any thread, also while the callback sets other data.
  void PrefetchData() const { prefetchedData_.Fetch(this, sizeof(RkTaskDataImpl)); }

  void AddRef() { refCount_.fetch_add(1, std::memory_order_relaxed); }
  void Release();

 private:
  void StoreData(Ref<RkTaskDataImpl> data);

  std::atomic<int32_t> refCount_{1};
  PrefetchHint prefetchedData_;
  Ref<RkTaskDataImpl> data_;
  RkTaskCallback callback_ = nullptr;
};

// The implementation of an interface pointer; null for null and for an object that is not of this
// library.
RkTaskFuncImpl* ToImpl(RkTaskFunc* func);

// A bound call runs a callable of the library's own in the way of a host's function: the callable
// is the payload, run by one fixed callback and freed by one fixed releaser.
using BoundCall = std::function<void(RkTask*)>;

// A new holder, with one reference, that runs `call`.
Ref<RkTaskFuncImpl> MakeBoundFunc(BoundCall call);

// The callback. Holds task and data alive across the call. Throws std::bad_function_call if the
// stored callable is empty.
void RunBoundCall(RkTask* task, RkTaskData* data);

// The releaser: destroys the callable. Null does nothing.
void DeleteBoundCall(void* payload);

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_FUNC_IMPL_H_
