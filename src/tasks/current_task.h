// Which task's function the calling thread runs.
#ifndef TEMVAR_TASKS_CURRENT_TASK_H_
#define TEMVAR_TASKS_CURRENT_TASK_H_

namespace temvar {

class RkTaskImpl;

// The task whose function runs on this thread or is about to, or null. Not owned.
inline constinit thread_local RkTaskImpl* current_task = nullptr;

}  // namespace temvar

#endif  // TEMVAR_TASKS_CURRENT_TASK_H_
