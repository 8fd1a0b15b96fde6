// The owners of temvar/handles.h, used as a host uses them. What is counted is releases: each
// object must go exactly when its last handle goes.
#include <temvar/handles.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/host_job.h"

namespace {

using namespace std::chrono_literals;
using test::Eventually;

std::atomic<int> releases{0};

tmv::Data CountedData() {
  tmv::Data data = tmv::Data::Adopt(CreateRkTaskData());
  data->SetReleaser([](void*) { ++releases; });
  return data;
}

tmv::Task CountedTask(const char* name) {
  tmv::Task task = tmv::MakeTask(name);
  task->SetData(CountedData());
  return task;
}

// An event of one package; `end` gets the event's state when its function runs.
tmv::Event EventOf(const char* name, const std::vector<tmv::Task>& tasks,
                   std::atomic<int32_t>& end) {
  tmv::Event event = tmv::MakeEvent(name, [&end](RkTask* task) { end = task->GetState(); });
  tmv::Package package = tmv::MakePackage();
  for (const tmv::Task& task : tasks) package->AddTask(task);
  event->AddPackage(package);
  return event;
}

int32_t EndOf(const std::atomic<int32_t>& end) {
  Eventually([&end] { return end != kTaskStateCreated; });
  return end;
}

TEST(HandlesTest, ReferencesAreCountedByCopiesAndNotByMoves) {
  tmv::Data first = CountedData();
  tmv::Data copy = first;
  tmv::Data moved = std::move(first);
  EXPECT_EQ(first, nullptr);
  EXPECT_EQ(moved.Get(), copy.Get());
  tmv::Data& self = copy;
  copy = self;
  moved = nullptr;
  EXPECT_EQ(releases, 0);
  tmv::Data shared = tmv::Data::Share(copy);
  RkTaskData* raw = copy.Release();
  shared.Reset();
  EXPECT_EQ(releases, 0);
  DestroyRkTaskData(raw);
  EXPECT_EQ(releases, 1);

  copy = CountedData();
  copy = CountedData();
  EXPECT_EQ(releases, 2);
  EXPECT_EQ(tmv::Task::Share(nullptr), nullptr);
}

TEST(HandlesTest, EventsAndPackagesAreTasksAndKeepWhatTheyHold) {
  tmv::Task task = CountedTask("a");
  tmv::Package package = tmv::MakePackage();
  package->AddTask(task);
  task.Reset();
  tmv::Event event = tmv::MakeEvent("event");
  event->AddPackage(package);
  tmv::Task asTask = event;
  EXPECT_EQ(asTask->GetType(), kTaskTypeEvent);
  event.Reset();
  tmv::Task packageAsTask = std::move(package);
  EXPECT_EQ(packageAsTask->GetType(), kTaskTypePackage);
  asTask.Reset();
  EXPECT_EQ(releases, 0);
  packageAsTask.Reset();
  EXPECT_EQ(releases, 1);
}

TEST(HandlesTest, ACallableReportsSuccessOrFailureAndIsDestroyedOnce) {
  const std::weak_ptr<int> life = [] {
    auto token = std::make_shared<int>(0);
    std::atomic<int32_t> end{kTaskStateCreated};
    const tmv::Task returns = tmv::MakeTask("returns", [token] { ++*token; });
    const tmv::Task throws = tmv::MakeTask("throws", [token] { throw *token; });
    const tmv::Task named = tmv::MakeTask("named", [token](RkTask* task) {
      if (task->GetName() != std::string("named")) throw std::logic_error("another task");
    });
    tmv::RunningPool pool(2);
    std::atomic<bool> ran{false};
    TmvTaskSchedular()->ScheduleTask(tmv::MakeTask("alone", [&ran, token] { ran = true; }));
    Eventually([&ran] { return ran.load(); });
    tmv::Event event = EventOf("job", {returns, throws, named}, end);
    TmvTaskSchedular()->AddEvent(event);
    EXPECT_EQ(EndOf(end), kTaskStateSucceeded);
    EXPECT_EQ(returns->GetState(), kTaskStateSucceeded);
    EXPECT_EQ(throws->GetState(), kTaskStateFailed);
    EXPECT_EQ(named->GetState(), kTaskStateSucceeded);
    EXPECT_EQ(*token, 1);
    return std::weak_ptr<int>(token);
  }();
  EXPECT_TRUE(life.expired());
}

TEST(HandlesTest, AnEndThatAPauseSwallowedIsReportedAgain) {
  std::atomic<int32_t> end{kTaskStateCreated};
  std::atomic<int> runs{0};
  bool nextRan = false;
  tmv::RunningPool pool(2);
  const tmv::Task paused = tmv::MakeTask("paused", [&](RkTask* task) {
    ++runs;
    Eventually([task] { return task->GetState() == kTaskStatePaused; });
  });
  const tmv::Task next = tmv::MakeTask("next", [&] { nextRan = true; });
  TmvTaskSchedular()->AddEvent(EventOf("job", {paused, next}, end));
  Eventually([&runs] { return runs == 1; });
  TmvTaskSchedular()->PauseEvent("job");
  // The pause has swallowed the report: resuming alone would leave the package standing.
  EXPECT_EQ(paused->GetState(), kTaskStatePaused);
  TmvTaskSchedular()->ResumeEvent("job");
  EXPECT_EQ(EndOf(end), kTaskStateSucceeded);
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(nextRan);
}

TEST(HandlesTest, ACancelledCallableLeavesAtItsPausePoint) {
  std::atomic<int32_t> end{kTaskStateCreated};
  tmv::Task task;
  {
    std::atomic<bool> running{false};
    tmv::RunningPool pool(2);
    task = tmv::MakeTask("endless", [&](RkTask* self) {
      while (tmv::KeepGoing(self)) {
        running = true;
        std::this_thread::sleep_for(1ms);
      }
    });
    const tmv::Task never = tmv::MakeTask("never", [] { FAIL() << "behind a cancelled task"; });
    TmvTaskSchedular()->AddEvent(EventOf("job", {task, never}, end));
    Eventually([&running] { return running.load(); });
    TmvTaskSchedular()->CancelEvent("job");
    EXPECT_EQ(EndOf(end), kTaskStateCancelled);
  }
  EXPECT_EQ(task->GetState(), kTaskStateCancelled);
}

TEST(HandlesTest, AListReleasesItsTasks) {
  {
    std::atomic<int32_t> end{kTaskStateCreated};
    const tmv::Event event = EventOf("job", {CountedTask("a"), CountedTask("b")}, end);
    event->AddPackage(tmv::MakePackage());
    tmv::TaskList list(TmvTaskSchedular()->ListCurrentTasks(event));
    std::vector<std::string> names;
    for (RkTask* task : list) names.emplace_back(task->GetName());
    EXPECT_EQ(names, std::vector<std::string>{"a"});
    EXPECT_FALSE(list.Empty());
    EXPECT_TRUE(tmv::TaskList().Empty());
  }
  EXPECT_EQ(releases, 2);
}

TEST(HandlesTest, TextsBytesPathsAndSingleOwnersAreReleased) {
  const tmv::Text none(TmvUtilityFile()->MakeUniquePath(nullptr));
  EXPECT_FALSE(none);
  EXPECT_STREQ(none.c_str(), "");
  const tmv::Text version(TmvUtilityString()->DupString("1.0"));
  EXPECT_EQ(version.View(), "1.0");
  const tmv::WideText wide(TmvUtilityString()->Utf8ToWide("1.0"));
  EXPECT_EQ(wide.View().size(), 3u);

  const tmv::PathPieces pieces("logs/run.txt");
  EXPECT_STREQ(pieces.Directory(), "logs/");
  EXPECT_STREQ(pieces.Name(), "run");
  EXPECT_STREQ(pieces.Extension(), ".txt");
  EXPECT_STREQ(tmv::PathPieces(nullptr).Name(), "");

  EXPECT_NE(tmv::MakeManifest(), nullptr);
  EXPECT_NE(tmv::MakeDbgReport(), nullptr);
  EXPECT_NE(tmv::MakeThread(), nullptr);
  tmv::Bytes packed;
  EXPECT_TRUE(packed.View().empty());
  const std::string text(1000, 'x');
  const tmv::Zip zip = tmv::MakeZip();
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(zip->DeflateBuffer(packed.Out(), text.data(), 1000, 9));
  }
  tmv::Bytes moved = std::move(packed);
  EXPECT_EQ(packed.Size(), 0u);
  tmv::Bytes unpacked;
  ASSERT_TRUE(TmvUtilityUnzip()->InflateBuffer(unpacked.Out(), moved.Data(), moved.Size()));
  EXPECT_EQ(unpacked.View(), text);
}

}  // namespace
