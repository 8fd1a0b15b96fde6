// Keyed locks, notifications, and waits whose test throws.
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "frame/lock_impl.h"
#include "frame/mutex.h"
#include "frame/subject.h"

namespace {

using namespace temvar;

size_t TableSize() {
  MutexLock lock(lockTableGuard);
  return lockTable.size();
}

TEST(KeyedLocks, OfTwoKeysAreIndependentAndLeaveNothing) {
  int object = 0;
  TmvLock()->Lock(&object);
  TmvLock()->Lock(nullptr);
  EXPECT_EQ(TableSize(), 2u);
  TmvLock()->Unlock(&object);
  TmvLock()->Unlock(nullptr);
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

struct Recorder : TMVObserver {
  void Update(void* data, const char* key) override {
    log += key;
    if (data != nullptr) throw std::runtime_error("refused");
  }
  std::string log;
};

TEST(Subject, CallsItsObserversInOrderUntilOneThrows) {
  TMVObserver deaf;  // The base class ignores everything.
  Recorder first;
  Recorder second;
  {
    TMVSubject subject;
    subject.Notify(nullptr, "nobody");
    for (TMVObserver* observer :
         std::initializer_list<TMVObserver*>{&deaf, &first, &first, &second})
      subject.AddObserver(observer);
    subject.Notify(nullptr, "x");
    EXPECT_THROW(subject.Notify(&deaf, "y"), std::runtime_error);
  }
  EXPECT_EQ(first.log, "xxy");
  EXPECT_EQ(second.log, "x");
}

bool Throw() { throw std::runtime_error("no memory for the test"); }

TEST(Waits, ATestThatThrowsLeavesNoWaiterAndTheMutexToItsGuard) {
  EventCount count;
  EXPECT_THROW(count.Await(Throw), std::runtime_error);
  EXPECT_FALSE(count.HasWaiters());

  Mutex mutex;
  Condition condition;
  const auto wait = [&] {
    MutexLock lock(mutex);
    condition.Wait(mutex, Throw);
  };
  EXPECT_THROW(wait(), std::runtime_error);
  MutexLock free(mutex);
}

}  // namespace
