// Sweeps of events, the list of a package, and bound calls: steps that no host sees by itself.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tasks/task_event_impl.h"
#include "tasks/task_func_impl.h"
#include "tasks/task_package_impl.h"

namespace temvar {
namespace {

Ref<RkTaskImpl> MakeTask(const std::string& name, int32_t state = kTaskStateCreated) {
  auto task = Ref<RkTaskImpl>::Adopt(new RkTaskImpl);
  task->SetName(name.c_str());
  task->SetState(state);
  return task;
}

Ref<RkTaskPackageImpl> MakePackage(const std::vector<RkTaskImpl*>& children) {
  auto package = Ref<RkTaskPackageImpl>::Adopt(new RkTaskPackageImpl);
  for (RkTaskImpl* child : children) package->AddTask(child);
  return package;
}

Ref<RkTaskEventImpl> MakeEvent(const std::string& name,
                               const std::vector<RkTaskPackageImpl*>& packages) {
  auto event = Ref<RkTaskEventImpl>::Adopt(new RkTaskEventImpl);
  event->SetName(name.c_str());
  for (RkTaskPackageImpl* package : packages) event->AddPackage(package);
  return event;
}

std::string Names(const TaskRefs& tasks) {
  std::string names;
  for (const Ref<RkTaskImpl>& task : tasks) names += task->Name();
  return names;
}

std::string TakeName(RkTask* task) {
  const auto owned = Ref<RkTaskImpl>::Adopt(ToImpl(task));
  return owned ? owned->Name() : "";
}

class TaskTree : public testing::Test {
 protected:
  Ref<RkTaskImpl> a = MakeTask("a", kTaskStateActive);
  Ref<RkTaskImpl> b = MakeTask("b", kTaskStateCreated);
  Ref<RkTaskImpl> c = MakeTask("c", kTaskStateActive);
  Ref<RkTaskImpl> d = MakeTask("d", kTaskStateSucceeded);
  Ref<RkTaskImpl> sameName = MakeTask("b", kTaskStateActive);
  Ref<RkTaskPackageImpl> nested = MakePackage({b.get(), c.get()});
  Ref<RkTaskPackageImpl> first = MakePackage({a.get(), nested.get(), d.get()});
  Ref<RkTaskPackageImpl> second = MakePackage({sameName.get()});
  Ref<RkTaskEventImpl> event = MakeEvent("e", {first.get(), second.get()});
};

TEST_F(TaskTree, SweepMovesTheLeavesOfOneStateDepthFirst) {
  nested->SetName("nested");
  nested->SetState(kTaskStateActive);
  TaskRefs swept;
  RkTaskEventImpl::SweepTasks(first.get(), kTaskStateActive, kTaskStatePaused, swept);
  EXPECT_EQ(Names(swept), "ac");
  EXPECT_EQ(a->State(), kTaskStatePaused);
  EXPECT_EQ(b->State(), kTaskStateCreated);
  EXPECT_EQ(c->State(), kTaskStatePaused);
  EXPECT_EQ(d->State(), kTaskStateSucceeded);
  EXPECT_EQ(nested->State(), kTaskStateActive);
  EXPECT_EQ(sameName->State(), kTaskStateActive);
}

TEST_F(TaskTree, NullEntriesAreHarmless) {
  first->AddTask(nullptr);
  event->AddPackage(nullptr);
  TaskRefs swept;
  for (const auto& package : event->Packages()) {
    RkTaskEventImpl::SweepTasks(package.get(), kTaskStateActive, kTaskStatePaused, swept);
  }
  EXPECT_EQ(Names(swept), "acb");
  EXPECT_EQ(RkTaskEventImpl::FindInPackage(first.get(), TaskName("x")), nullptr);
}

TEST_F(TaskTree, PackageKeepsItsOrderAndPosition) {
  first->SetCurrentIndex(1);
  EXPECT_EQ(TakeName(first->GetPrevious()), "a");
  EXPECT_EQ(TakeName(first->GetNext()), "d");
  first->SetCurrentIndex(2);
  EXPECT_EQ(first->GetNext(), nullptr);

  first->InsertTask(MakeTask("x").get(), 0);
  EXPECT_EQ(TakeName(first->GetFirst()), "x");
  EXPECT_EQ(first->GetCurrentIndex(), 2u);
}

TEST_F(TaskTree, PositionBeyondTheListThrowsAndLeavesTheLockFree) {
  second->SetCurrentIndex(5);
  try {
    second->GetPrevious();
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
  }
  EXPECT_EQ(second->GetNext(), nullptr);
  EXPECT_EQ(second->GetCount(), 1u);
}

TEST(BoundCall, HoldsTaskAndDataAliveAndRefusesAnEmptyCall) {
  auto func = MakeBoundFunc([](RkTask* task) {
    DestroyRkTask(task);  // The test's own reference; the call holds another.
    EXPECT_STREQ(task->GetName(), "last");
  });
  RkTask* task = MakeTask("last").Detach();
  RunBoundCall(task, func->GetData());

  const auto empty = MakeBoundFunc(nullptr);
  const auto other = MakeTask("other");
  EXPECT_THROW(RunBoundCall(other.get(), empty->GetData()), std::bad_function_call);
  EXPECT_THROW(RunBoundCall(other.get(), nullptr), std::bad_function_call);
  DeleteBoundCall(nullptr);
}

}  // namespace
}  // namespace temvar
