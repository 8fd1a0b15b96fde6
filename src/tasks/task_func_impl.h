// Runs a callable of the library's own in the way of a host's function: the callable is a payload,
// run by one fixed callback and freed by one fixed releaser.
#ifndef TEMVAR_TASKS_BOUND_CALL_H_
#define TEMVAR_TASKS_BOUND_CALL_H_

#include <functional>

#include "frame/ref.h"
#include "tasks/task_data_impl.h"
#include "temvar/task.h"

namespace temvar {

using BoundCall = std::function<void(RkTask*)>;

// A new holder, with one reference, that runs `call`.
Ref<RkTaskFuncImpl> MakeBoundFunc(BoundCall call);

// The callback. Holds task and data alive across the call. Throws std::bad_function_call if the
// stored callable is empty.
void RunBoundCall(RkTask* task, RkTaskData* data);

// The releaser: destroys the callable. Null does nothing.
void DeleteBoundCall(void* payload);

}  // namespace temvar

#endif  // TEMVAR_TASKS_BOUND_CALL_H_
