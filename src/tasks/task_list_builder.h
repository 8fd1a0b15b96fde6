// Lists of tasks for a host: nodes of malloc, which FreeTaskList of the scheduler and of the pool
// release.
#ifndef TEMVAR_TASKS_TASK_LIST_BUILDER_H_
#define TEMVAR_TASKS_TASK_LIST_BUILDER_H_

#include <cstdlib>
#include <new>
#include <utility>

#include "tasks/task_impl.h"
#include "temvar/task_list.h"

namespace temvar {

// The references in the nodes may be the last, so not under a lock of the library.
inline void ReleaseTaskList(TaskListNode* list) {
  while (list != nullptr) {
    TaskListNode* const next = list->next;
    DestroyRkTask(list->task);
    std::free(list);
    list = next;
  }
}

// Builds a list in order and releases it if the building fails.
class TaskListBuilder {
 public:
  TaskListBuilder() = default;
  ~TaskListBuilder() { ReleaseTaskList(head_); }
  TaskListBuilder(const TaskListBuilder&) = delete;
  TaskListBuilder& operator=(const TaskListBuilder&) = delete;

  // The node takes over the reference. Throws std::bad_alloc.
  void Append(Ref<RkTaskImpl> task) {
    auto* const node = static_cast<TaskListNode*>(std::malloc(sizeof(TaskListNode)));
    if (node == nullptr) throw std::bad_alloc();
    *node = {task.Detach(), nullptr};
    *end_ = node;
    end_ = &node->next;
  }

  TaskListNode* Finish() { return std::exchange(head_, nullptr); }

 private:
  TaskListNode* head_ = nullptr;
  TaskListNode** end_ = &head_;
};

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_LIST_BUILDER_H_
