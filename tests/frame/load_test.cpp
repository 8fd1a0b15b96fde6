// A host that loads the library by hand, uses it and lets it go again.
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <atomic>
#include <string>
#include <thread>

#include "support/dynamic_library.h"

namespace {

using test::CountHandles;
using test::CountThreads;
using test::DynamicLibrary;

// One life of the library: load, Start, a few hundred tasks and a job, Stop, unload.
void LiveOnce(const std::size_t threadsBefore) {
  std::atomic<int> runs{0};
  const DynamicLibrary library(TEMVAR_LIBRARY_FILE);
  EXPECT_EQ(CountThreads(), threadsBefore) << "loading starts no thread";

  RkTaskPool& pool = *library.Get<decltype(TmvTaskPool)>("TmvTaskPool")();
  RkTaskSchedular& schedular = *library.Get<decltype(TmvTaskSchedular)>("TmvTaskSchedular")();
  RkTaskEvent* const event = library.Get<decltype(CreateRkTaskEvent)>("CreateRkTaskEvent")();
  RkTaskPackage* const package =
      library.Get<decltype(CreateRkTaskPackage)>("CreateRkTaskPackage")();
  const auto destroy = library.Get<decltype(DestroyRkTask)>("DestroyRkTask");

  RkTaskFunc* const func = library.Get<decltype(CreateRkTaskFunc)>("CreateRkTaskFunc")();
  func->Bind(
      &runs,
      [](RkTask* task, RkTaskData* data) {
        // The runs are counted before the report: it is what lets the next one start.
        ++*static_cast<std::atomic<int>*>(data->GetPayload());
        task->ReportState(task, kTaskStateSucceeded);
      },
      nullptr);
  for (const char* name : {"first", "second", "third"}) {
    RkTask* const task = library.Get<decltype(CreateRkTask)>("CreateRkTask")();
    task->SetName(name);
    task->SetFunc(func);
    package->AddTask(task);
    destroy(task);
  }
  event->SetName("job");
  event->SetFunc(func);
  event->AddPackage(package);

  // Enough small tasks for workers, dispatcher and host to wait for each other's locks: the system
  // may make an object for a lock only then.
  constexpr int kQueued = 500, kInJob = 4;
  pool.Start(2);
  EXPECT_EQ(CountThreads(), threadsBefore + 3) << "two workers and the dispatcher";
  for (int i = 0; i < kQueued; ++i) pool.AddFunc(func);
  schedular.AddEvent(event);
  while (runs < kQueued + kInJob) std::this_thread::yield();
  pool.Stop();
  EXPECT_EQ(schedular.GetEventCount(), 0u);

  destroy(package);
  destroy(event);
  library.Get<decltype(DestroyRkTaskFunc)>("DestroyRkTaskFunc")(func);
}

TEST(Load, AHundredLivesInOneProcessLeaveNoThreadAndNoHandle) {
  // ThreadSanitizer starts a thread of its own together with the first one of the process.
  std::thread([] {}).join();
  const std::size_t threads = CountThreads();
  for (int i = 0; i < 5; ++i) LiveOnce(threads);
  const std::size_t handles = CountHandles();
  for (int i = 0; i < 100 && !HasFailure(); ++i) {
    LiveOnce(threads);
    EXPECT_FALSE(test::IsLoaded(TEMVAR_LIBRARY_FILE)) << "round " << i;
    EXPECT_EQ(CountThreads(), threads) << "round " << i;
  }
  // The system itself makes an object for a lock of its own when two threads first meet there, at
  // no moment that could be foreseen; what a life of the library leaves would count a hundred
  // times.
  EXPECT_LT(CountHandles(), handles + 10);
}

std::string released;
RkTask* queued = nullptr;  // Stays, for a search of leaks to find it.

// The registry lets go of its events; what is queued runs no releaser any more.
TEST(Load, UnloadReleasesEventsInTheOrderOfTheirNamesAndNothingQueued) {
  {
    const DynamicLibrary library(TEMVAR_LIBRARY_FILE);
    const auto make = [&library](RkTask* task, const char* name) {
      RkTaskData* const data = library.Get<decltype(CreateRkTaskData)>("CreateRkTaskData")();
      data->SetPayload(const_cast<char*>(name));
      data->SetReleaser([](void* payload) { released += static_cast<const char*>(payload); });
      task->SetName(name);
      task->SetData(data);
      library.Get<decltype(DestroyRkTaskData)>("DestroyRkTaskData")(data);
      return task;
    };
    for (const char* name : {"c", "a", "b"}) {
      RkTask* const event =
          make(library.Get<decltype(CreateRkTaskEvent)>("CreateRkTaskEvent")(), name);
      library.Get<decltype(TmvTaskSchedular)>("TmvTaskSchedular")()->RegisterEvent(event);
      library.Get<decltype(DestroyRkTask)>("DestroyRkTask")(event);
    }
    queued = make(library.Get<decltype(CreateRkTask)>("CreateRkTask")(), "queued");
    library.Get<decltype(TmvTaskPool)>("TmvTaskPool")()->AddTask(queued);
    library.Get<decltype(DestroyRkTask)>("DestroyRkTask")(queued);
  }
  EXPECT_FALSE(test::IsLoaded(TEMVAR_LIBRARY_FILE));
  EXPECT_EQ(released, "abc");
}

TEST(Load, ReturnsTheSameObjectsEachTime) {
  const DynamicLibrary once(TEMVAR_LIBRARY_FILE);
  const DynamicLibrary again(TEMVAR_LIBRARY_FILE);
  const auto first = once.Get<decltype(TmvTaskPool)>("TmvTaskPool");
  const auto second = again.Get<decltype(TmvTaskPool)>("TmvTaskPool");
  EXPECT_EQ(first, second);
  EXPECT_EQ(first(), second());
  EXPECT_TRUE(test::IsLoaded(TEMVAR_LIBRARY_FILE));
}

}  // namespace
