// What a registered task costs in memory: 100,000 tasks with a function of their own in packages of
// 1,000, as the allocator of glibc counts them.
//   bench_memory
#include <malloc.h>
#include <temvar/temvar.h>

#include <cstdio>
#include <string>

#include <temvar/handles.h>

namespace {

constexpr size_t kTasks = 100'000;
constexpr size_t kTasksInPackage = 1000;

// In blocks of the heap and in those of their own, such as the table of the index.
size_t BytesInUse() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

double BytesOfEach(size_t before) {
  return static_cast<double>(BytesInUse() - before) / static_cast<double>(kTasks);
}

tmv::Event MakeEvent() {
  tmv::Event event = tmv::Event::Adopt(CreateRkTaskEvent());
  event->SetName("memory");
  tmv::Package package;
  constexpr RkTaskCallback kNothing = [](RkTask*, RkTaskData*) {};
  for (size_t i = 0; i < kTasks; ++i) {
    if (i % kTasksInPackage == 0) {
      package = tmv::Package::Adopt(CreateRkTaskPackage());
      event->AddPackage(package);
    }
    const tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
    func->Bind(nullptr, kNothing, nullptr);
    const tmv::Task task = tmv::Task::Adopt(CreateRkTask());
    task->SetName(("task " + std::to_string(i)).c_str());
    task->SetFunc(func);
    package->AddTask(task);
  }
  return event;
}

}  // namespace

int main() {
  const size_t before = BytesInUse();
  const tmv::Event event = MakeEvent();
  std::printf("a task in a package:  %6.1f bytes\n", BytesOfEach(before));
  TmvTaskSchedular()->RegisterEvent(event);
  std::printf("and registered:       %6.1f bytes\n", BytesOfEach(before));
  TmvTaskSchedular()->RemoveEvent("memory");
  return 0;
}
