// A host that loads the library at run time and is not linked with it: it uses it through the C++
// layer, over exports that were found by name, and lets it go again.
#include <temvar/job.h>

#include <gtest/gtest.h>

#include "support/dynamic_library.h"

namespace {

using test::CountHandles;
using test::CountThreads;

// The library with its exports, for the life of the object.
class LoadedLibrary {
 public:
  LoadedLibrary() {
    tmv::Load([this](const char* name) { return test::Find(library_, name); });
  }

  ~LoadedLibrary() { EXPECT_TRUE(test::Unload(library_)); }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

 private:
  void* const library_ = test::Load(TEMVAR_LIBRARY_FILE);
};

// Must be the first use of the process, which it is under CTest.
TEST(Load, FindsEveryExportBeforeAnythingIsUsed) {
  EXPECT_THROW(tmv::MakeTask("early"), std::logic_error);
  EXPECT_THROW(tmv::Load([](const char*) -> void* { return nullptr; }), std::runtime_error);
  for (int life = 0; life < 2; ++life) {
    std::atomic<int> runs{0};
    {
      const LoadedLibrary library;
      tmv::RunningPool pool(2);
      tmv::Job job;
      job.AddLane().Then([&runs] { ++runs; }).Then([&runs] { ++runs; });
      job.Start();
      EXPECT_EQ(job.Wait(), tmv::JobState::kSucceeded);
    }
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(test::IsLoaded(TEMVAR_LIBRARY_FILE));
  }
}

// One life of the library: load, Start, a few hundred tasks and a job, Stop, unload.
void LiveOnce(size_t threadsBefore) {
  std::atomic<int> runs{0};
  const LoadedLibrary library;
  EXPECT_EQ(CountThreads(), threadsBefore) << "loading starts no thread";
  const tmv::Func func = tmv::MakeFunc([&runs] { ++runs; });
  const tmv::Event event = tmv::MakeEvent("job", [&runs] { ++runs; });
  const tmv::Package package = tmv::MakePackage();
  for (const char* name : {"first", "second", "third"}) {
    package->AddTask(tmv::MakeTask(name, [&runs] { ++runs; }));
  }
  event->AddPackage(package);

  // Enough small tasks for workers, dispatcher and host to wait for each other's locks: the system
  // may make an object for a lock only then.
  constexpr int kQueued = 500, kInJob = 4;
  TmvTaskPool()->Start(2);
  EXPECT_EQ(CountThreads(), threadsBefore + 3) << "two workers and the dispatcher";
  for (int i = 0; i < kQueued; ++i) TmvTaskPool()->AddFunc(func);
  TmvTaskSchedular()->AddEvent(event);
  while (runs < kQueued + kInJob) std::this_thread::yield();
  TmvTaskPool()->Stop();
  EXPECT_EQ(TmvTaskSchedular()->GetEventCount(), 0u);
}

TEST(Load, AHundredLivesInOneProcessLeaveNoThreadAndNoHandle) {
  // ThreadSanitizer starts a thread of its own together with the first one of the process.
  std::thread([] {}).join();
  const size_t threads = CountThreads();
  for (int i = 0; i < 5; ++i) LiveOnce(threads);
  const size_t handles = CountHandles();
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
RkTask* queued = nullptr;  // These two stay, for a search of leaks to find them.
RkTaskFunc* queuedFunc = nullptr;

// The registry lets go of its events; what is queued runs no releaser any more.
TEST(Load, UnloadReleasesEventsInTheOrderOfTheirNamesAndNothingQueued) {
  {
    const LoadedLibrary library;
    const auto make = [](const tmv::Task& task, const char* name) {
      const tmv::Data data = tmv::Data::Adopt(CreateRkTaskData());
      data->SetPayload(const_cast<char*>(name));
      data->SetReleaser([](void* payload) { released += static_cast<const char*>(payload); });
      task->SetName(name);
      task->SetData(data);
      return task;
    };
    for (const char* name : {"c", "a", "b"}) {
      TmvTaskSchedular()->RegisterEvent(make(tmv::Event::Adopt(CreateRkTaskEvent()), name));
    }
    const tmv::Task task = make(tmv::Task::Adopt(CreateRkTask()), "queued");
    const tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
    func->SetCallback([](RkTask*, RkTaskData*) {}, task->GetData());
    task->SetFunc(func);
    queued = task;
    queuedFunc = func;
    TmvTaskPool()->AddTask(task);
    task->ClearFunc();
    task->ClearData();
  }
  EXPECT_FALSE(test::IsLoaded(TEMVAR_LIBRARY_FILE));
  EXPECT_EQ(released, "abc");
}

}  // namespace
