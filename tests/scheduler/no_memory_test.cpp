// Memory that runs out in the middle of an operation: what it leaves is whole.
#include <cstdlib>
#include <new>
#include <string>

#include "support/host_job.h"

namespace {

thread_local int allocationsLeft = -1;  // Of this thread; negative for no limit.

}  // namespace

void* operator new(std::size_t size) {
  void* const block = allocationsLeft == 0 ? nullptr : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

using namespace test;

// Whether the call has thrown std::bad_alloc, with room for so many allocations.
template <typename Call>
bool RunsOutOfMemory(int allocations, Call call) {
  allocationsLeft = allocations;
  try {
    call();
    allocationsLeft = -1;
    return false;
  } catch (const std::bad_alloc&) {
    allocationsLeft = -1;
    return true;
  }
}

TEST(NoMemory, ARemovalThatFailsLeavesTheQueueWhole) {
  constexpr uint32_t kEach = 150;
  std::vector<Step> steps;
  for (uint32_t i = 0; i < kEach; ++i) steps.push_back({"task " + std::to_string(i)});
  const Job job("kept", steps);
  Schedular().RegisterEvent(job.event.get());
  const TaskPtr stray = MakeTask("stray");
  const auto add = [&](uint32_t from, uint32_t to) {
    for (uint32_t i = from; i < to; ++i) {
      Pool().AddTask(job[i]);
      Pool().AddTask(stray.get());
    }
  };
  add(0, kEach / 2);
  Pool().RemoveQueued("nothing");  // The rest is in the part of the queue that is added to.
  add(kEach / 2, kEach);
  add(0, kEach / 2);
  uint32_t removed = 0;
  const auto remove = [&removed] { removed = Pool().RemoveQueued("other"); };
  const uint32_t queued = Pool().GetQueuedCount();
  int allocations = 0;
  while (RunsOutOfMemory(allocations, remove)) {
    ASSERT_EQ(Pool().GetQueuedCount(), queued) << allocations;
    ++allocations;
  }
  EXPECT_GT(allocations, 3);
  EXPECT_EQ(removed, kEach);
  EXPECT_EQ(Pool().RemoveQueued("kept"), queued - kEach);
}

TEST(NoMemory, AResumeNeedsNone) {
  const Job job("event", {{"first"}, {"second"}});
  Schedular().RegisterEvent(job.event.get());
  for (size_t i = 0; i < 2; ++i) job[i]->SetState(kTaskStatePaused);
  const Call parked([&job] { Schedular().PausePoint(job[0]); });
  BeQuiet();
  EXPECT_FALSE(parked.IsDone());
  EXPECT_FALSE(RunsOutOfMemory(0, [] { Schedular().ResumeEvent("event"); }));
  for (size_t i = 0; i < 2; ++i) EXPECT_EQ(job[i]->GetState(), kTaskStateActive);
  parked.WaitForReturn();
}

}  // namespace
