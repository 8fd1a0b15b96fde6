// The passive records of a job: tasks, their holders, packages and events.
#include <limits>

#include "support/host_job.h"

namespace {

using namespace test;

void CountRelease(void* payload) { ++*static_cast<int*>(payload); }

DataPtr MakeData(int* released) {
  DataPtr data(CreateRkTaskData());
  data->SetPayload(released);
  data->SetReleaser(CountRelease);
  return data;
}

TEST(Task, IsNewWithItsDefaultsAndNullsDoNothing) {
  EXPECT_EQ(DuplicateRkTask(nullptr), nullptr);
  DestroyRkTask(nullptr);
  DuplicateRkTaskData(nullptr);
  DestroyRkTaskData(nullptr);
  DuplicateRkTaskFunc(nullptr);
  DestroyRkTaskFunc(nullptr);
  const TaskPtr tasks[] = {TaskPtr(CreateRkTask()), TaskPtr(CreateRkTaskPackage()),
                           TaskPtr(CreateRkTaskEvent())};
  for (int32_t type = kTaskTypePlain; type <= kTaskTypeEvent; ++type) {
    RkTask* const task = tasks[type].get();
    EXPECT_EQ(task->GetType(), type);
    EXPECT_EQ(task->GetState(), kTaskStateCreated);
    EXPECT_STREQ(task->GetName(), "0");
    EXPECT_EQ(task->GetFunc() == nullptr, type == kTaskTypePlain);
    EXPECT_EQ(task->GetData(), nullptr);
  }
}

TEST(Task, TakesNamesAsTextAndAsNumbers) {
  const TaskPtr task(CreateRkTask());
  const std::pair<int64_t, const char*> cases[] = {
      {0, "0"},
      {-12, "-12"},
      {std::numeric_limits<int64_t>::max(), "9223372036854775807"},
      {std::numeric_limits<int64_t>::min(), "-9223372036854775808"}};
  for (const auto& [number, name] : cases) {
    task->SetNameNumber(number);
    EXPECT_STREQ(task->GetName(), name);
  }
  task->SetName("a longer name than any that fits into the object itself");
  task->SetName(task->GetName());
  EXPECT_STREQ(task->GetName(), "a longer name than any that fits into the object itself");
  task->SetName("");
  EXPECT_STREQ(task->GetName(), "");
}

TEST(Task, HoldersLiveAsLongAsSomebodyHoldsThem) {
  int released = 0;
  {
    DataPtr data = MakeData(&released);
    TaskPtr task(CreateRkTask());
    task->SetData(data.get());
    EXPECT_EQ(task->GetData(), data.get());
    data.reset();
    EXPECT_EQ(released, 0);

    const DataPtr other(CreateRkTaskData());
    task->SetData(other.get());
    EXPECT_EQ(released, 1);
    task->SetData(nullptr);
    EXPECT_EQ(task->GetData(), nullptr);

    FuncPtr func(CreateRkTaskFunc());
    const RkTaskCallback nothing = [](RkTask*, RkTaskData*) {};
    func->Bind(&released, nothing, CountRelease);
    EXPECT_EQ(func->GetData()->GetPayload(), &released);
    task->SetFunc(func.get());
    func.reset();
    EXPECT_NE(task->GetFunc(), nullptr);
    // Two more references on the task itself, and the third drop frees it.
    RkTask* const raw = task.get();
    EXPECT_EQ(DuplicateRkTask(raw), raw);
    EXPECT_EQ(DuplicateRkTask(raw), raw);
    DestroyRkTask(raw);
    DestroyRkTask(raw);
    EXPECT_EQ(released, 1);
  }
  EXPECT_EQ(released, 2);
}

RkTask* neverFreed = nullptr;  // Stays, for a search of leaks to find it.

TEST(Task, OfAKindThatDoesNotExistIsNeverFreedAndBelongsToNoEvent) {
  int released = 0;
  const Job job("event", {{"odd"}});
  Schedular().RegisterEvent(job.event.get());
  neverFreed = MakeTask("odd").release();
  neverFreed->SetData(MakeData(&released).get());
  neverFreed->SetType(kTaskTypeEvent + 1);
  Pool().AddTask(neverFreed);
  EXPECT_EQ(Pool().RemoveQueued("other"), 1u);
  DestroyRkTask(neverFreed);
  EXPECT_EQ(released, 0);
}

TEST(Task, OneDataServesSeveralFunctions) {
  int released = 0;
  DataPtr data = MakeData(&released);
  FuncPtr funcs[2] = {FuncPtr(CreateRkTaskFunc()), FuncPtr(CreateRkTaskFunc())};
  EXPECT_EQ(funcs[0]->GetCallback(), nullptr);
  EXPECT_EQ(funcs[0]->GetData(), nullptr);
  for (FuncPtr& func : funcs) func->SetCallback([](RkTask*, RkTaskData*) {}, data.get());
  EXPECT_EQ(funcs[1]->GetData(), data.get());
  data.reset();
  funcs[0].reset();
  EXPECT_EQ(released, 0);
  funcs[1].reset();
  EXPECT_EQ(released, 1);
}

TEST(TaskPackage, ReturnsItsChildrenWithReferences) {
  const PackagePtr package(CreateRkTaskPackage());
  EXPECT_EQ(package->GetCount(), 0u);
  EXPECT_EQ(package->GetFirst(), nullptr);
  EXPECT_EQ(package->GetLast(), nullptr);
  EXPECT_EQ(package->GetPrevious(), nullptr);
  EXPECT_EQ(package->GetNext(), nullptr);
  EXPECT_EQ(package->GetCurrentIndex(), 0u);

  for (const char* name : {"b", "d"}) package->AddTask(MakeTask(name).get());
  package->InsertTask(MakeTask("a").get(), 0);
  package->InsertTask(MakeTask("c").get(), 2);
  package->InsertTask(MakeTask("e").get(), 4);
  EXPECT_EQ(package->GetCount(), 5u);
  EXPECT_STREQ(TaskPtr(package->GetFirst())->GetName(), "a");
  EXPECT_STREQ(TaskPtr(package->GetNext())->GetName(), "b");
  EXPECT_STREQ(TaskPtr(package->GetLast())->GetName(), "e");
  EXPECT_EQ(package->GetPrevious(), nullptr);
  EXPECT_EQ(package->GetCurrentIndex(), 0u);
}

// An event and a package are freed through the pointer to their task, with all below them but for
// what somebody else holds.
TEST(TaskEvent, ReleasesItsWholeTree) {
  TaskPtr kept;
  {
    PackagePtr inner = MakePackage({MakeTask("leaf", Succeed).get()});
    PackagePtr outer = MakePackage({MakeTask("kept", Succeed).get(), inner.get()});
    TaskPtr event(MakeEvent("e", {outer.get()}, Succeed).release());
    kept.reset(outer->GetFirst());
    inner.reset();
    outer.reset();
    EXPECT_EQ(LiveBodies(), 3);
  }
  EXPECT_EQ(LiveBodies(), 1);
  EXPECT_STREQ(kept->GetName(), "kept");
  kept.reset();
  EXPECT_EQ(LiveBodies(), 0);
}

}  // namespace
