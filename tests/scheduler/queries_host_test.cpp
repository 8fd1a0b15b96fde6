// Look-ups in the registry and edits of packages. Nothing runs unless a test starts the pool.
#include <gmock/gmock.h>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

// Two events: "b" with the tasks b1 | b2, and "a" with a1 | (a2, (deep), a3).
class Queries : public testing::Test {
 protected:
  void SetUp() override {
    for (const EventPtr* event : {&b_, &a_}) Schedular().RegisterEvent(event->get());
  }

  void TearDown() override {
    for (const char* name : {"a", "b"}) Schedular().RemoveEvent(name);
    EXPECT_EQ(Schedular().GetEventCount(), 0u);
  }

  TaskPtr a1_ = MakeTask("a1");
  PackagePtr inner_ = MakePackage({MakeTask("deep").get()});
  PackagePtr b1_ = MakePackage({MakeTask("b1").get()});
  PackagePtr b2_ = MakePackage({MakeTask("b2").get()});
  PackagePtr first_ = MakePackage({a1_.get()});
  PackagePtr second_ = MakePackage({MakeTask("a2").get(), inner_.get(), MakeTask("a3").get()});
  EventPtr a_ = MakeEvent("a", {first_.get(), second_.get()});
  EventPtr b_ = MakeEvent("b", {b1_.get(), b2_.get()});
};

TEST_F(Queries, NullsFindNothingNotEvenWhatIsNamedByTheEmptyText) {
  const Job nameless("", {{""}});
  Schedular().RegisterEvent(nameless.event.get());
  EXPECT_EQ(Schedular().FindTask(nullptr), nullptr);
  EXPECT_EQ(Schedular().FindEvent(nullptr), nullptr);
  EXPECT_EQ(Schedular().FindEventOfTask(nullptr), nullptr);
  for (RkTask* none : {static_cast<RkTask*>(nullptr), a1_.get()}) {
    EXPECT_EQ(Schedular().FindEventOfPackage(none), nullptr);
  }
  EXPECT_EQ(Schedular().FindPackageOfTask(nullptr), nullptr);
  Schedular().RemoveEventLocked(nullptr);
  EXPECT_FALSE(Schedular().IsTaskCancelled(nullptr));
  EXPECT_FALSE(Schedular().CancelEventOfTask(nullptr));
  EXPECT_FALSE(Schedular().InsertTaskAfterName(a1_.get(), nullptr));
  EXPECT_FALSE(Schedular().InsertTaskAfter(a1_.get(), nullptr));
  Schedular().FreeTaskList(nullptr);
  Schedular().PauseEvent(nullptr);
  Schedular().ResumeEvent(nullptr);
  Schedular().CancelEvent(nullptr);
  Schedular().RemoveEvent(nullptr);
  uint32_t count = 0;
  EXPECT_EQ(Pool().ListRunning(nullptr, count), nullptr);
  EXPECT_EQ(Schedular().GetEventCount(), 3u);
}

TEST_F(Queries, TheListOfCurrentTasksHoldsOneForEachPackage) {
  const EventPtr bare = MakeEvent("bare", {});
  EXPECT_EQ(Schedular().ListCurrentTasks(bare.get()), nullptr);
  ListPtr list(Schedular().ListCurrentTasks(a_.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  list.reset(Schedular().ListCurrentTasks(b_.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("b1", "b2"));
  b2_->InsertTask(nullptr, 0);
  list.reset(Schedular().ListCurrentTasks(b_.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("b1"));
}

TEST_F(Queries, APlainTaskCanBeListedLikeAPackage) {
  b_->AddPackage(a1_.get());
  EXPECT_EQ(TaskPtr(Schedular().FindEventOfPackage(a1_.get())).get(), b_.get());
  EXPECT_EQ(TaskPtr(Schedular().FindEventOfTask("a1")).get(), a_.get());
}

TEST_F(Queries, InsertionTakesPlaceAfterADirectChildAlone) {
  const TaskPtr fresh = MakeTask("fresh");
  EXPECT_TRUE(Schedular().InsertTaskAfter(fresh.get(), a1_.get()));
  EXPECT_EQ(first_->GetCount(), 2u);
  EXPECT_EQ(TaskPtr(first_->GetLast()).get(), fresh.get());
  EXPECT_TRUE(Schedular().InsertTaskAfterName(MakeTask("third").get(), "fresh"));
  EXPECT_STREQ(TaskPtr(first_->GetLast())->GetName(), "third");
  EXPECT_TRUE(Schedular().InsertTaskAfterName(MakeTask("second").get(), "a1"));
  EXPECT_STREQ(TaskPtr(first_->GetNext())->GetName(), "second");

  EXPECT_FALSE(Schedular().InsertTaskAfterName(fresh.get(), "deep")) << "in a nested package";
  EXPECT_FALSE(Schedular().InsertTaskAfterName(fresh.get(), "stray")) << "in no event";
  EXPECT_EQ(first_->GetCount(), 4u);
}

// A task that is inserted after the one in progress runs next; after the last one it runs too.
TEST(Insertion, TakesEffectWhileThePackageRuns) {
  RunningPool pool(2);
  Log log;
  const Body note = log.Note();
  Gate gate;
  const Job job("event", {{"first", gate.Then(note)}, {"last", note}}, note);
  job.Add();
  gate.WaitForArrivals(1);
  EXPECT_TRUE(Schedular().InsertTaskAfter(MakeTask("next", note).get(), job[0]));
  EXPECT_TRUE(Schedular().InsertTaskAfterName(MakeTask("after", note).get(), "last"));
  ListPtr list(Schedular().ListCurrentTasks(job.event.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("first"));
  gate.Open();
  log.WaitFor("event");
  EXPECT_THAT(log.Entries(), ElementsAre("first", "next", "last", "after", "event"));
  list.reset(Schedular().ListCurrentTasks(job.event.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("after"));
  EXPECT_STREQ(TaskPtr(job.package->GetPrevious())->GetName(), "last");
}

}  // namespace
