// Compiled for the C++ ABI of Visual C++, without a standard library.
#include "foreign_host.h"

#include <temvar/lock.h>
#include <temvar/task.h>
#include <temvar/task_data.h>
#include <temvar/task_func.h>
#include <temvar/task_pool.h>
#include <temvar/task_schedular.h>

namespace {

volatile int sum = 0;
int released = 0;

void AddPayload(RkTask* task, RkTaskData* data) {
  sum = sum + *static_cast<int*>(data->GetPayload());
  task->ReportState(task, kTaskStateSucceeded);
}

void CountRelease(void*) { ++released; }

bool SameText(const char* a, const char* b) {
  while (*a != '\0' && *a == *b) ++a, ++b;
  return *a == *b;
}

}  // namespace

extern "C" const char* UseLibrary(const Library& library) {
  int payload = 5;
  library.lock->Lock(&payload);
  library.lock->Unlock(&payload);

  library.func->Bind(&payload, AddPayload, CountRelease);
  if (library.func->GetCallback() != AddPayload) return "GetCallback";
  library.task->SetFunc(library.func);
  if (library.task->GetFunc() != library.func) return "GetFunc";
  library.task->SetNameNumber(-1234567890123456789LL);
  if (!SameText(library.task->GetName(), "-1234567890123456789")) return "SetNameNumber";
  library.task->SetState(kTaskStateFailed);
  if (library.task->GetState() != kTaskStateFailed) return "GetState";
  if (library.task->GetType() != kTaskTypePlain) return "GetType";

  library.pool->SetPollInterval(77);
  if (library.pool->GetPollInterval() != 77) return "GetPollInterval";
  uint32_t count = 9;
  if (library.pool->ListRunning("none", count) != nullptr || count != 0) return "ListRunning";
  if (library.schedular->FindTask("none") != nullptr) return "FindTask";
  if (library.schedular->GetEventCount() != 0) return "GetEventCount";

  library.pool->Start(1);
  library.pool->AddTask(library.task);
  library.pool->AddFunc(library.func);
  while (sum < 10) {
  }
  library.pool->Stop();
  library.destroyTask(library.task);
  if (released != 0) return "released early";
  library.destroyFunc(library.func);
  return released == 1 ? nullptr : "released";
}
