#include "tasks/task_data_impl.h"

#include <typeinfo>

namespace temvar {

void RkTaskDataImpl::Release() {
  if (refCount_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (releaser_ != nullptr) releaser_(payload_);
  delete this;
}

void RkTaskFuncImpl::Bind(void* payload, RkTaskCallback callback, void (*releaser)(void*)) {
  auto data = Ref<RkTaskDataImpl>::Adopt(new RkTaskDataImpl);
  data->SetPayload(payload);
  data->SetReleaser(releaser);
  callback_ = callback;
  data_ = std::move(data);
}

void RkTaskFuncImpl::SetCallback(RkTaskCallback callback, RkTaskData* data) {
  callback_ = callback;
  data_ = Ref<RkTaskDataImpl>(ToImpl(data));
}

void RkTaskFuncImpl::Release() {
  if (refCount_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

RkTaskDataImpl* ToImpl(RkTaskData* data) {
  if (data == nullptr || typeid(*data) != typeid(RkTaskDataImpl)) return nullptr;
  return static_cast<RkTaskDataImpl*>(data);
}

RkTaskFuncImpl* ToImpl(RkTaskFunc* func) {
  if (func == nullptr || typeid(*func) != typeid(RkTaskFuncImpl)) return nullptr;
  return static_cast<RkTaskFuncImpl*>(func);
}

}  // namespace temvar

RkTaskData* CreateRkTaskData() { return new temvar::RkTaskDataImpl; }

void DuplicateRkTaskData(RkTaskData* data) {
  if (temvar::RkTaskDataImpl* impl = temvar::ToImpl(data)) impl->AddRef();
}

void DestroyRkTaskData(RkTaskData* data) {
  if (temvar::RkTaskDataImpl* impl = temvar::ToImpl(data)) impl->Release();
}

RkTaskFunc* CreateRkTaskFunc() { return new temvar::RkTaskFuncImpl; }

void DuplicateRkTaskFunc(RkTaskFunc* func) {
  if (temvar::RkTaskFuncImpl* impl = temvar::ToImpl(func)) impl->AddRef();
}

void DestroyRkTaskFunc(RkTaskFunc* func) {
  if (temvar::RkTaskFuncImpl* impl = temvar::ToImpl(func)) impl->Release();
}
