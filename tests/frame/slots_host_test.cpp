// Pins the slot of each operation of the job interfaces: a host that was built against an earlier
// header calls by slot.
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include "support/slots.h"

namespace {

using test::CountSlots;
using test::SlotOf;

TEST(Slots, Lock) {
  EXPECT_EQ(SlotOf(&TMVLock::Lock), 0u);
  EXPECT_EQ(SlotOf(&TMVLock::Unlock), 1u);
  EXPECT_EQ(CountSlots<TMVLock>(), 2u);
}

TEST(Slots, Task) {
  EXPECT_EQ(SlotOf(&RkTask::ReportState), 0u);
  EXPECT_EQ(SlotOf(&RkTask::SetFunc), 1u);
  EXPECT_EQ(SlotOf(&RkTask::GetFunc), 2u);
  EXPECT_EQ(SlotOf(&RkTask::SetData), 3u);
  EXPECT_EQ(SlotOf(&RkTask::GetData), 4u);
  EXPECT_EQ(SlotOf(&RkTask::ClearData), 5u);
  EXPECT_EQ(SlotOf(&RkTask::ClearFunc), 6u);
  EXPECT_EQ(SlotOf(&RkTask::GetType), 7u);
  EXPECT_EQ(SlotOf(&RkTask::SetType), 8u);
  EXPECT_EQ(SlotOf(&RkTask::GetState), 9u);
  EXPECT_EQ(SlotOf(&RkTask::SetState), 10u);
  EXPECT_EQ(SlotOf(&RkTask::GetName), 11u);
  EXPECT_EQ(SlotOf(&RkTask::SetNameNumber), 12u);
  EXPECT_EQ(SlotOf(&RkTask::SetName), 13u);
  EXPECT_EQ(CountSlots<RkTask>(), 14u);
}

TEST(Slots, Holders) {
  EXPECT_EQ(SlotOf(&RkTaskData::SetPayload), 0u);
  EXPECT_EQ(SlotOf(&RkTaskData::GetPayload), 1u);
  EXPECT_EQ(SlotOf(&RkTaskData::SetReleaser), 2u);
  EXPECT_EQ(CountSlots<RkTaskData>(), 3u);

  EXPECT_EQ(SlotOf(&RkTaskFunc::Bind), 0u);
  EXPECT_EQ(SlotOf(&RkTaskFunc::SetCallback), 1u);
  EXPECT_EQ(SlotOf(&RkTaskFunc::GetCallback), 2u);
  EXPECT_EQ(SlotOf(&RkTaskFunc::GetData), 3u);
  EXPECT_EQ(CountSlots<RkTaskFunc>(), 4u);
}

// The table of the virtual base comes first in that of the class.
TEST(Slots, EventAndPackage) {
  const size_t kTaskSlots = CountSlots<RkTask>();
  EXPECT_EQ(SlotOf(&RkTaskEvent::AddPackage), kTaskSlots + 0u);
  EXPECT_EQ(CountSlots<RkTaskEvent>(), kTaskSlots + 1u);

  EXPECT_EQ(SlotOf(&RkTaskPackage::AddTask), kTaskSlots + 0u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::InsertTask), kTaskSlots + 1u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::SetContinueOnFailure), kTaskSlots + 2u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::GetCount), kTaskSlots + 3u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::GetFirst), kTaskSlots + 4u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::GetLast), kTaskSlots + 5u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::GetPrevious), kTaskSlots + 6u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::GetCurrentIndex), kTaskSlots + 7u);
  EXPECT_EQ(SlotOf(&RkTaskPackage::GetNext), kTaskSlots + 8u);
  EXPECT_EQ(CountSlots<RkTaskPackage>(), kTaskSlots + 9u);
}

TEST(Slots, Thread) {
  EXPECT_EQ(SlotOf(&RkTaskThread::ReportIdle), 0u);
  EXPECT_EQ(SlotOf(&RkTaskThread::SetPool), 1u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Wake), 2u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Lock), 3u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Unlock), 4u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Wait), 5u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Join), 6u);
  EXPECT_EQ(SlotOf(&RkTaskThread::ReservedValue), 7u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Stop), 8u);
  EXPECT_EQ(SlotOf(&RkTaskThread::Start), 9u);
  EXPECT_EQ(CountSlots<RkTaskThread>(), 10u);
}

TEST(Slots, Pool) {
  EXPECT_EQ(SlotOf(&RkTaskPool::AddTask), 0u);
  EXPECT_EQ(SlotOf(&RkTaskPool::AddFunc), 1u);
  EXPECT_EQ(SlotOf(&RkTaskPool::Start), 2u);
  EXPECT_EQ(SlotOf(&RkTaskPool::ReservedOperation), 3u);
  EXPECT_EQ(SlotOf(&RkTaskPool::Stop), 4u);
  EXPECT_EQ(SlotOf(&RkTaskPool::SetPollInterval), 5u);
  EXPECT_EQ(SlotOf(&RkTaskPool::GetPollInterval), 6u);
  EXPECT_EQ(SlotOf(&RkTaskPool::GetThreadCount), 7u);
  EXPECT_EQ(SlotOf(&RkTaskPool::DispatchOne), 8u);
  EXPECT_EQ(SlotOf(&RkTaskPool::MarkRunning), 9u);
  EXPECT_EQ(SlotOf(&RkTaskPool::ThreadIdle), 10u);
  EXPECT_EQ(SlotOf(&RkTaskPool::GetQueuedCount), 11u);
  EXPECT_EQ(SlotOf(&RkTaskPool::WaitForWork), 12u);
  EXPECT_EQ(SlotOf(&RkTaskPool::RemoveQueued), 13u);
  EXPECT_EQ(SlotOf(&RkTaskPool::ListRunning), 14u);
  EXPECT_EQ(SlotOf(&RkTaskPool::FreeTaskList), 15u);
  EXPECT_EQ(CountSlots<RkTaskPool>(), 16u);
}

TEST(Slots, Schedular) {
  EXPECT_EQ(SlotOf(&RkTaskSchedular::CancelEvent), 0u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::CancelEventOfTask), 1u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::PauseEvent), 2u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::ResumeEvent), 3u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::CheckPause), 4u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::RegisterEvent), 5u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::AddEvent), 6u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::ScheduleTask), 7u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::RemoveEvent), 8u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::RemoveEventLocked), 9u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::PausePoint), 10u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::PausePointLocked), 11u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::TaskFinished), 12u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::TaskFailed), 13u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::FindTask), 14u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::IsTaskCancelled), 15u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::FindEvent), 16u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::FindEventOfTask), 17u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::FindEventOfPackage), 18u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::ListCurrentTasks), 19u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::FreeTaskList), 20u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::FindPackageOfTask), 21u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::InsertTaskAfter), 22u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::InsertTaskAfterName), 23u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::GetEventCount), 24u);
  EXPECT_EQ(SlotOf(&RkTaskSchedular::CancelEventEx), 25u);
  EXPECT_EQ(CountSlots<RkTaskSchedular>(), 26u);
}

}  // namespace
