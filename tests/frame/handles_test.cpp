// The owners of temvar/handles.h, used as a host uses them. What is counted is releases: each
// object must go exactly when its last handle goes.
#include <temvar/describe.h>
#include <temvar/handles.h>

#include <gmock/gmock.h>

#include "support/host_job.h"

namespace {

using namespace std::chrono_literals;
using test::Eventually;
using testing::HasSubstr;

std::atomic<int> releases{0};
std::atomic<int32_t> end{kTaskStateCreated};  // The state of the event when its function runs.

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

// An event called "job", of one package.
tmv::Event EventOf(const std::vector<tmv::Task>& tasks) {
  tmv::Event event = tmv::MakeEvent("job", [](RkTask* task) { end = task->GetState(); });
  tmv::Package package = tmv::MakePackage();
  for (const tmv::Task& task : tasks) package->AddTask(task);
  event->AddPackage(package);
  return event;
}

int32_t AwaitEnd() {
  Eventually([] { return end != kTaskStateCreated; });
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
  tmv::Package package = tmv::MakePackage();
  package->AddTask(CountedTask("a"));
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
  const auto token = std::make_shared<int>(0);
  {
    const tmv::Task returns = tmv::MakeTask("returns", [token] { ++*token; });
    const tmv::Task throws = tmv::MakeTask("throws", [token] { throw *token; });
    const tmv::Task named = tmv::MakeTask("named", [token](RkTask* task) {
      if (task->GetName() != std::string("named")) throw std::logic_error("another task");
    });
    tmv::RunningPool pool(2);
    std::atomic<bool> ran{false};
    TmvTaskSchedular()->ScheduleTask(tmv::MakeTask("alone", [&ran, token] { ran = true; }));
    Eventually([&ran] { return ran.load(); });
    tmv::Event event = EventOf({returns, throws, named});
    TmvTaskSchedular()->AddEvent(event);
    EXPECT_EQ(AwaitEnd(), kTaskStateSucceeded);
    EXPECT_EQ(returns->GetState(), kTaskStateSucceeded);
    EXPECT_EQ(throws->GetState(), kTaskStateFailed);
    EXPECT_EQ(named->GetState(), kTaskStateSucceeded);
    EXPECT_EQ(*token, 1);
  }
  EXPECT_EQ(token.use_count(), 1);
}

TEST(HandlesTest, AnEndThatAPauseSwallowedIsReportedAgain) {
  std::atomic<int> runs{0};
  bool nextRan = false;
  tmv::RunningPool pool(2);
  const tmv::Task paused = tmv::MakeTask("paused", [&](RkTask* task) {
    ++runs;
    Eventually([task] { return task->GetState() == kTaskStatePaused; });
  });
  const tmv::Task next = tmv::MakeTask("next", [&] { nextRan = true; });
  TmvTaskSchedular()->AddEvent(EventOf({paused, next}));
  Eventually([&runs] { return runs == 1; });
  TmvTaskSchedular()->PauseEvent("job");
  // The pause has swallowed the report: resuming alone would leave the package standing.
  EXPECT_EQ(paused->GetState(), kTaskStatePaused);
  TmvTaskSchedular()->ResumeEvent("job");
  EXPECT_EQ(AwaitEnd(), kTaskStateSucceeded);
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(nextRan);
}

TEST(HandlesTest, APoolThatIsLeftWhileAnEventIsPausedResumesIt) {
  std::atomic<bool> running{false};
  const tmv::Task task = tmv::MakeTask("paused", [&](RkTask* self) {
    running = true;
    while (self->GetState() != kTaskStatePaused) std::this_thread::yield();
    tmv::KeepGoing(self);
  });
  {
    tmv::RunningPool pool(1);
    TmvTaskSchedular()->AddEvent(EventOf({task}));
    Eventually([&running] { return running.load(); });
    TmvTaskSchedular()->PauseEvent("job");
  }
  EXPECT_EQ(task->GetState(), kTaskStateSucceeded);
  TmvTaskSchedular()->RemoveEvent("job");
}

TEST(HandlesTest, ACancelledCallableLeavesAtItsPausePoint) {
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
    const tmv::Task never = tmv::MakeTask("never", [] { FAIL() << "after a cancelled task"; });
    TmvTaskSchedular()->AddEvent(EventOf({task, never}));
    Eventually([&running] { return running.load(); });
    TmvTaskSchedular()->CancelEvent("job");
    EXPECT_EQ(AwaitEnd(), kTaskStateCancelled);
  }
  EXPECT_EQ(task->GetState(), kTaskStateCancelled);
}

TEST(HandlesTest, AListReleasesItsTasks) {
  {
    const tmv::Event event = EventOf({CountedTask("a"), CountedTask("b")});
    event->AddPackage(tmv::MakePackage());
    tmv::TaskList list(TmvTaskSchedular()->ListCurrentTasks(event));
    for (RkTask* task : list) EXPECT_STREQ(task->GetName(), "a");
    EXPECT_FALSE(list.Empty());
    EXPECT_TRUE(tmv::TaskList().Empty());
  }
  EXPECT_EQ(releases, 2);
}

TEST(HandlesTest, TextsBytesAndPathsAreReleased) {
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

// A cancel that meets the end calls the event's function a second time.
TEST(HandlesTest, TheFunctionOfAnEventIsCalledOnce) {
  int calls = 0;
  const tmv::Event event = tmv::MakeEvent(std::string("job"), [&calls] { ++calls; });
  RkTaskFunc* const func = event->GetFunc();
  for (int i = 0; i < 2; ++i) func->GetCallback()(event, func->GetData());
  EXPECT_EQ(calls, 1);
}

TEST(HandlesTest, NamesPathsAndPlacesAreFoundAgain) {
  const tmv::Task first = tmv::MakeTask([] {}), second = tmv::MakeTask([] {});
  EXPECT_STRNE(first->GetName(), second->GetName());
  const std::string text = tmv::Text(TmvUtilityString()->DupString("text"));
  EXPECT_EQ(text, "text");
  const std::string greek = "folder/\xCE\xBB.txt";
  EXPECT_EQ(tmv::Utf8(tmv::PathOf(greek)), greek);
  EXPECT_STREQ(tmv::PathPieces(tmv::PathOf(greek)).Name(), "\xCE\xBB");

  const tmv::Package package = tmv::MakePackage();
  tmv::Position position = tmv::PositionOf(package);
  EXPECT_EQ(position.current, nullptr);
  package->AddTask(first);
  package->AddTask(second);
  position = tmv::PositionOf(package);
  EXPECT_EQ(position.current, first);
  EXPECT_EQ(position.next, second);
  EXPECT_EQ(position.previous, nullptr);
  EXPECT_EQ(position.count, 2u);

  const tmv::Event event = tmv::MakeEvent("job");
  EXPECT_EQ(tmv::FindEvent("job"), nullptr);
  TmvTaskSchedular()->RegisterEvent(event);
  EXPECT_EQ(tmv::FindEvent("job"), event);
  TmvTaskSchedular()->RemoveEvent("job");
}

TEST(HandlesTest, ACheckNamesWhatWouldStandForEver) {
  const tmv::Event event = tmv::MakeEvent("job");
  EXPECT_THAT(tmv::Check(event), testing::ElementsAre("event job has no package"));
  const tmv::Package good = tmv::MakePackage(), bad = tmv::MakePackage();
  tmv::Add(event, good);
  tmv::Add(good, CountedTask("a"));
  EXPECT_THAT(tmv::Check(event), testing::IsEmpty());
  tmv::Add(event, tmv::MakePackage());
  tmv::Add(event, bad);
  tmv::Add(bad, tmv::MakeTask("a"));
  tmv::Add(bad, tmv::MakePackage());
  bad->AddTask(tmv::MakeTask("a"));
  EXPECT_THAT(tmv::Check(event),
              testing::ElementsAre(
                  "package 2 has no task", "package 3 holds tasks that were not added by tmv::Add",
                  "two tasks are named a", "package 3 holds a package, which never runs"));
  const tmv::Event rival = tmv::MakeEvent("job");
  tmv::Add(rival, good);
  TmvTaskSchedular()->RegisterEvent(rival);
  EXPECT_THAT(tmv::Check(event), testing::Contains("another event is named job"));
  TmvTaskSchedular()->RemoveEvent("job");
}

TEST(HandlesTest, ADescriptionShowsHowFarAnEventIs) {
  test::Gate gate;
  tmv::RunningPool pool(1);
  const tmv::Task silent = tmv::MakeTask("silent", [&gate] { gate.Wait(); });
  TmvTaskSchedular()->AddEvent(EventOf({silent, tmv::MakeTask("next", [] {})}));
  gate.WaitForArrivals(1);
  EXPECT_THAT(tmv::Describe(),
              HasSubstr("0 tasks queued, 1 events registered\n"
                        "event job: created\n  task 1 of 2 silent: active, running\n"));
  gate.Open();
  EXPECT_EQ(AwaitEnd(), kTaskStateSucceeded);
  EXPECT_THAT(tmv::Describe(), testing::Not(HasSubstr("event job")));
}

}  // namespace
