// A host that links the installed library: it runs a job and looks at the result.
#include <temvar/job.h>

#include <atomic>
#include <cstdio>

int main() {
  tmv::RunningPool pool(2);
  std::atomic<int> tasksRun{0};
  tmv::Job job("consumer");
  tmv::Job::Lane lane = job.AddLane();
  for (int number = 0; number < 3; ++number) lane.Then([&tasksRun] { ++tasksRun; });
  job.Start();
  const bool succeeded = job.Wait() == tmv::JobState::kSucceeded;
  std::printf("tasks %d, succeeded %d\n", tasksRun.load(), succeeded);
  return tasksRun == 3 && succeeded ? 0 : 1;
}
