// Steps of packages and of the library's own functions that no host reaches.
#include <gmock/gmock.h>

#include "tasks/task_func_impl.h"
#include "tasks/task_impl.h"
#include "tasks/task_package_impl.h"

namespace {

using namespace temvar;

Ref<RkTaskImpl> MakeTask(const char* name) {
  auto task = Ref<RkTaskImpl>::Adopt(new RkTaskImpl);
  task->SetName(name);
  return task;
}

// An index beyond the list comes of no road, but would be read by the getters.
TEST(TaskPackage, APositionBeyondTheListThrowsAndLeavesTheLockFree) {
  const auto package = Ref<RkTaskPackageImpl>::Adopt(new RkTaskPackageImpl);
  package->AddTask(MakeTask("only").get());
  package->SetCurrentIndex(5);
  EXPECT_THAT([&package] { package->GetPrevious(); },
              testing::ThrowsMessage<std::out_of_range>("invalid vector<T> subscript"));
  EXPECT_EQ(package->GetNext(), nullptr);
  EXPECT_EQ(package->GetCount(), 1u);
}

TEST(BoundCall, HoldsTaskAndDataAliveAndRefusesAnEmptyCall) {
  const auto func = MakeBoundFunc([](RkTask* task) {
    DestroyRkTask(task);  // The test's own reference; the call holds another.
    EXPECT_STREQ(task->GetName(), "last");
  });
  RunBoundCall(MakeTask("last").Detach(), func->GetData());

  const auto empty = MakeBoundFunc(nullptr);
  const auto other = MakeTask("other");
  EXPECT_THROW(RunBoundCall(other.get(), empty->GetData()), std::bad_function_call);
  EXPECT_THROW(RunBoundCall(other.get(), nullptr), std::bad_function_call);
  DeleteBoundCall(nullptr);
}

}  // namespace
