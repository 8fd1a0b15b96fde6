#include "tasks/task_func_impl.h"

#include <memory>
#include <typeinfo>
#include <utility>

#include "tasks/task_impl.h"

namespace temvar {

void RkTaskFuncImpl::Bind(void* payload, RkTaskCallback callback, void (*releaser)(void*)) {
  auto data = Ref<RkTaskDataImpl>::Adopt(new RkTaskDataImpl);
  data->SetPayload(payload);
  data->SetReleaser(releaser);
  callback_ = callback;
  StoreData(std::move(data));
}

void RkTaskFuncImpl::SetCallback(RkTaskCallback callback, RkTaskData* data) {
  callback_ = callback;
  StoreData(Ref<RkTaskDataImpl>(ToImpl(data)));
}

void RkTaskFuncImpl::StoreData(Ref<RkTaskDataImpl> data) {
  prefetchedData_.Set(this, data.get());
  data_ = std::move(data);
}

void RkTaskFuncImpl::Release() {
  if (refCount_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

RkTaskFuncImpl* ToImpl(RkTaskFunc* func) {
  if (func == nullptr || typeid(*func) != typeid(RkTaskFuncImpl)) return nullptr;
  return static_cast<RkTaskFuncImpl*>(func);
}

Ref<RkTaskFuncImpl> MakeBoundFunc(BoundCall call) {
  auto payload = std::make_unique<BoundCall>(std::move(call));
  auto func = Ref<RkTaskFuncImpl>::Adopt(new RkTaskFuncImpl);
  func->Bind(payload.get(), RunBoundCall, DeleteBoundCall);
  payload.release();
  return func;
}

void RunBoundCall(RkTask* task, RkTaskData* data) {
  const Ref<RkTaskImpl> taskGuard(ToImpl(task));
  const Ref<RkTaskDataImpl> dataGuard(ToImpl(data));
  if (!dataGuard) throw std::bad_function_call();
  const auto* call = static_cast<const BoundCall*>(dataGuard->GetPayload());
  if (call == nullptr) throw std::bad_function_call();
  (*call)(task);
}

void DeleteBoundCall(void* payload) { delete static_cast<BoundCall*>(payload); }

}  // namespace temvar

RkTaskFunc* CreateRkTaskFunc() { return new temvar::RkTaskFuncImpl; }

void DuplicateRkTaskFunc(RkTaskFunc* func) {
  if (temvar::RkTaskFuncImpl* impl = temvar::ToImpl(func)) impl->AddRef();
}

void DestroyRkTaskFunc(RkTaskFunc* func) {
  if (temvar::RkTaskFuncImpl* impl = temvar::ToImpl(func)) impl->Release();
}
