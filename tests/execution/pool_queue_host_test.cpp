// The searches of the pool for the tasks of an event. Without Start, what is queued stays queued.
#include <gmock/gmock.h>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

TEST(PoolQueue, RemoveQueuedTakesOutAnEventsEntriesAndThoseOfNone) {
  EXPECT_EQ(Pool().RemoveQueued("x"), 0u);
  Log log;
  const Body note = [&log](RkTask* task) { log.Add(task->GetName()); };
  const TaskPtr x1 = MakeTask("x1", note);
  const TaskPtr x2 = MakeTask("x2", note);
  const TaskPtr y1 = MakeTask("y1", note);
  const TaskPtr y2 = MakeTask("y2", note);
  const TaskPtr stray = MakeTask("stray", note);
  const PackagePtr px = MakePackage({x1.get(), x2.get()});
  const PackagePtr py = MakePackage({y1.get(), y2.get()});
  py->SetName("py");
  py->SetFunc(MakeFunc(note).get());
  const EventPtr x = MakeEvent("x", {px.get()});
  const EventPtr y = MakeEvent("y", {py.get()}, note);
  Schedular().RegisterEvent(x.get());
  Schedular().RegisterEvent(y.get());
  RkTask* const queue[] = {y2.get(), x1.get(), stray.get(), py.get(),    px.get(),
                           y.get(),  x.get(),  x2.get(),    stray.get(), y1.get()};
  for (RkTask* task : queue) Pool().AddTask(task);

  EXPECT_EQ(Pool().RemoveQueued("x"), 6u);
  EXPECT_EQ(Pool().GetQueuedCount(), 4u);
  EXPECT_EQ(x1->GetState(), kTaskStateCreated);
  RunningPool pool(1);
  log.WaitFor("y1");
  EXPECT_THAT(log.Entries(), ElementsAre("y2", "py", "y", "y1"));
}

TEST(PoolQueue, RemoveQueuedDropsTheQueuesReferences) {
  {
    const TaskPtr task = MakeTask("stray", [](RkTask*) {});
    Pool().AddTask(task.get());
    Pool().AddTask(task.get());
  }
  EXPECT_EQ(LiveBodies(), 1);
  EXPECT_EQ(Pool().RemoveQueued("any"), 2u);
  EXPECT_EQ(LiveBodies(), 0);
}

TEST(PoolQueue, ListRunningReturnsThePlainTasksOfAnEventInTheOrderOfTheirStart) {
  Pool().FreeTaskList(nullptr);
  uint32_t count = 77;
  EXPECT_EQ(Pool().ListRunning("a", count), nullptr);
  EXPECT_EQ(count, 0u);

  RunningPool pool(5);
  Gate gates[5];
  const auto wait = [](Gate& gate) { return [&gate](RkTask*) { gate.Wait(); }; };
  TaskPtr a1 = MakeTask("a1", wait(gates[0]));
  const TaskPtr b1 = MakeTask("b1", wait(gates[1]));
  TaskPtr a2 = MakeTask("a2", wait(gates[2]));
  const TaskPtr stray = MakeTask("stray", wait(gates[3]));
  PackagePtr pa = MakePackage({a1.get(), a2.get()});
  const PackagePtr pb = MakePackage({b1.get()});
  EventPtr a = MakeEvent("a", {pa.get()}, wait(gates[4]));
  const EventPtr b = MakeEvent("b", {pb.get()});
  Schedular().RegisterEvent(a.get());
  Schedular().RegisterEvent(b.get());
  RkTask* const order[] = {a1.get(), b1.get(), a2.get(), stray.get(), a.get()};
  for (size_t i = 0; i < 5; ++i) {
    Pool().AddTask(order[i]);
    gates[i].WaitForArrivals(1);
  }

  ListPtr list(Pool().ListRunning("a", count));
  EXPECT_EQ(count, 2u);
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  EXPECT_EQ(Pool().ListRunning("none", count), nullptr);
  EXPECT_EQ(count, 0u);

  // The list keeps its tasks alive on its own.
  Schedular().RemoveEvent("a");
  for (Gate& gate : gates) gate.Open();
  Eventually([] { return IdleWorkers() == 5; });
  pool.Stop();
  a1.reset();
  a2.reset();
  pa.reset();
  a.reset();
  EXPECT_EQ(LiveBodies(), 4);
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  list.reset();
  EXPECT_EQ(LiveBodies(), 2);
}

}  // namespace
