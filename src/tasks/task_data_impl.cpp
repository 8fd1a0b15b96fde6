#include "tasks/task_data_impl.h"

#include <typeinfo>

namespace temvar {

// The decrement releases what this thread did to the object, and the last one acquires what all
// others did, before it destroys.
void RkTaskDataImpl::Release() {
  if (refCount_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  // Called for a null payload too: the host may use the releaser as a notification alone.
  if (releaser_ != nullptr) releaser_(payload_);
  delete this;
}

RkTaskDataImpl* ToImpl(RkTaskData* data) {
  if (data == nullptr || typeid(*data) != typeid(RkTaskDataImpl)) return nullptr;
  return static_cast<RkTaskDataImpl*>(data);
}

}  // namespace temvar

RkTaskData* CreateRkTaskData() { return new temvar::RkTaskDataImpl; }

void DuplicateRkTaskData(RkTaskData* data) {
  if (temvar::RkTaskDataImpl* impl = temvar::ToImpl(data)) impl->AddRef();
}

void DestroyRkTaskData(RkTaskData* data) {
  if (temvar::RkTaskDataImpl* impl = temvar::ToImpl(data)) impl->Release();
}
