#ifndef TEMVAR_TASK_LIST_H_
#define TEMVAR_TASK_LIST_H_

class RkTask;

// A node of a list of tasks, as ListCurrentTasks of the scheduler and ListRunning of the pool
// return it. Each node owns a reference on its task. Release a list only with FreeTaskList of
// either of them.
struct TaskListNode {
  RkTask* task;        // With a reference of its own.
  TaskListNode* next;  // Null at the end.
};

#endif  // TEMVAR_TASK_LIST_H_
