#include "frame/lock_impl.h"

#include <gtest/gtest.h>

#include <thread>

#include "support/host_job.h"

namespace temvar {
namespace {

size_t TableSize() {
  MutexLock lock(lockTableGuard);
  return lockTable.size();
}

TEST(KeyedLocks, LeaveNothingBehind) {
  int object = 0;
  for (void* key : {static_cast<void*>(&object), static_cast<void*>(nullptr)}) {
    TmvLock()->Lock(key);
    EXPECT_EQ(TableSize(), 1u);
    TmvLock()->Unlock(key);
    EXPECT_EQ(TableSize(), 0u);
  }
}

TEST(KeyedLocks, ExcludeEachOtherOnOneKeyOnly) {
  int first = 0;
  int second = 0;
  TmvLock()->Lock(&first);
  TmvLock()->Lock(&second);
  TmvLock()->Unlock(&second);
  test::Call waiter([&first] {
    TmvLock()->Lock(&first);
    TmvLock()->Unlock(&first);
  });
  test::BeQuiet();
  EXPECT_FALSE(waiter.IsDone());
  TmvLock()->Unlock(&first);
  waiter.WaitForReturn();
  EXPECT_EQ(TableSize(), 0u);
}

TEST(KeyedLocks, CountCorrectlyUnderContention) {
  int counter = 0;
  auto work = [&counter] {
    for (int i = 0; i < 20000; ++i) {
      const KeyedLock lock(&counter);
      ++counter;
    }
  };
  std::thread first(work);
  std::thread second(work);
  work();
  first.join();
  second.join();
  EXPECT_EQ(counter, 60000);
  EXPECT_EQ(TableSize(), 0u);
}

}  // namespace
}  // namespace temvar
