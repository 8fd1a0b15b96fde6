#include "tasks/task_func_impl.h"

#include <memory>

#include "tasks/task_impl.h"

namespace temvar {

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
