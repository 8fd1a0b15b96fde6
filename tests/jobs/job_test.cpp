// tmv::Job as a host uses it: what runs, what is counted, and who may go first.
#include <temvar/job.h>

#include <algorithm>
#include <cstdlib>
#include <future>
#include <stdexcept>

#include "support/host_job.h"

namespace {

using namespace std::chrono_literals;
using test::Eventually;
using test::Gate;
using tmv::Job;
using tmv::JobState;
using Context = Job::Context;

// A callable that runs until it is cancelled, and says that it has begun.
auto Endless(std::atomic<int>& begun) {
  return [&begun](Context& context) {
    ++begun;
    while (context.KeepGoing()) std::this_thread::sleep_for(1ms);
  };
}

TEST(Job, RunsLanesInOrderAndCountsWhatBecameOfEach) {
  tmv::RunningPool pool(3);
  tmv::Results<std::string> order;
  Job job("import");
  Job::Lane lane = job.AddLane("photos");
  lane.Then("a", [order] { order.Add("a"); })
      .Then("b",
            [order](Context& context) {
              order.Add(context.Label());
              throw std::runtime_error("no such file");
            })
      .Then([order, only = std::make_unique<int>(7)] { order.Add(std::to_string(*only)); });
  Job::Lane stopping = job.AddLane("stopping").StopAtFailure();
  stopping.Then([](Context&) { throw 5; }).Then([] { FAIL() << "after the first failure"; });
  std::promise<JobState> end;
  job.OnEnd([&end](JobState state) {
    end.set_value(state);
    throw std::logic_error("from the end");
  });
  EXPECT_EQ(job.GetState(), JobState::kNew);
  EXPECT_EQ(job.Wait(), JobState::kNew) << "nothing to wait for";
  job.Start();
  EXPECT_EQ(job.Wait(), JobState::kFailed);
  EXPECT_EQ(end.get_future().get(), JobState::kFailed);
  EXPECT_EQ(order.Take(), (std::vector<std::string>{"a", "b", "7"}));

  EXPECT_EQ(lane.GetProgress().failed, 1u);
  EXPECT_EQ(stopping.GetProgress().fraction, 0.5);
  EXPECT_EQ(job.GetProgress().fraction, 0.8);
  std::vector<std::string> failures;
  for (const Job::Failure& failure : job.Failures()) {
    failures.push_back(failure.lane + "/" + failure.label + ": " + failure.Message());
  }
  std::sort(failures.begin(), failures.end());
  EXPECT_EQ(failures, (std::vector<std::string>{"/OnEnd: from the end", "photos/b: no such file",
                                                "stopping/task 1: unknown error"}));
  EXPECT_THROW(lane.Then([] {}), std::logic_error);
}

TEST(Job, EndsWithoutCallablesAndWithoutAPool) {
  int ends = 0;
  for (const int lanes : {0, 1, 3}) {
    Job job;
    for (int i = 0; i < lanes; ++i) job.AddLane();
    job.OnEnd([&ends] { ++ends; });
    job.Start();
    EXPECT_EQ(job.Wait(), JobState::kSucceeded);
    EXPECT_EQ(job.GetProgress().fraction, 1);
  }
  EXPECT_EQ(ends, 3);

  // Cancelled before the start, without any pool, and never started at all.
  const auto life = std::make_shared<int>(0);
  Job early, waiting, never;
  for (Job* job : {&early, &waiting, &never}) {
    job->AddLane().Then([life] { FAIL() << "there is no pool"; });
    job->OnEnd([life, &ends] { ++ends; });
  }
  early.Cancel();
  early.Start();
  EXPECT_EQ(early.Wait(), JobState::kCancelled);
  waiting.Start();
  EXPECT_FALSE(waiting.WaitFor(10ms));
  waiting = Job();  // Its end: nobody runs, nobody is waited for.
  never = Job();
  EXPECT_EQ(ends, 5);
  EXPECT_EQ(TmvTaskSchedular()->GetEventCount(), 0u);
  {
    tmv::RunningPool pool(1);  // Lets go what the pool's queue still holds.
    EXPECT_EQ(life.use_count(), 1);
  }
  Job late;
  late.AddLane().Then([] { FAIL() << "the pool has ended"; });
  late.Start();
  EXPECT_EQ(late.Wait(), JobState::kCancelled);
}

TEST(Job, APauseHoldsCallablesBackAndLeavesTheWorkersToOthers) {
  tmv::RunningPool pool(1);
  std::atomic<int> runs{0};
  Gate gate;
  Job held, other;
  held.AddLane().Then([&] { gate.Wait(); }).Then([&] { ++runs; });
  held.AddLane().Then([&] { ++runs; });
  other.AddLane().Then([] {});
  held.Start();
  gate.WaitForArrivals(1);
  held.Pause();
  EXPECT_EQ(held.GetState(), JobState::kPausing);
  gate.Open();
  Eventually([&held] { return held.GetState() == JobState::kPaused; });
  other.Pause();  // Before its start.
  other.Start();
  EXPECT_TRUE(other.PauseAndWait());
  other.Resume();
  EXPECT_EQ(other.Wait(), JobState::kSucceeded) << "the only worker is free";
  EXPECT_EQ(runs, 0);
  held.Resume();
  EXPECT_EQ(held.Wait(), JobState::kSucceeded);
  EXPECT_EQ(runs, 2);
  held.Pause();
  EXPECT_FALSE(held.PauseAndWait()) << "there is nothing to pause";
  EXPECT_EQ(held.GetState(), JobState::kSucceeded);
}

TEST(Job, APauseThatWaitsReturnsWhenNoCallableWorks) {
  tmv::RunningPool pool(2);
  std::atomic<int> begun{0}, paused{0};
  Job job("both");
  for (int i = 0; i < 2; ++i) {
    job.AddLane().Then([&](Context& context) {
      ++begun;
      Eventually([&] { return begun == 2; });
      if (job.PauseAndWait()) ++paused;  // Each counts the other as standing.
      EXPECT_THROW(job.Wait(), std::system_error);
      context.SetProgress(2);
      while (context.KeepGoing()) std::this_thread::sleep_for(1ms);
      context.SetProgress(0.5);
      context.ThrowIfCancelled();
    });
  }
  job.Start();
  Eventually([&] { return paused == 2; });
  EXPECT_TRUE(job.PauseAndWait());
  EXPECT_EQ(job.GetState(), JobState::kPaused);
  EXPECT_EQ(job.GetProgress().fraction, 1);
  job.Resume();
  EXPECT_EQ(job.GetState(), JobState::kRunning);
  EXPECT_TRUE(job.PauseAndWait());
  job.Cancel();
  EXPECT_EQ(job.Wait(), JobState::kCancelled);
  EXPECT_EQ(job.GetProgress().done, 0u) << "who saw the cancel was not done";
  EXPECT_TRUE(job.Failures().empty());
}

// Each way to leave a paused job, with one callable at its pause point and one held.
TEST(Job, APausedJobNeverKeepsAnybody) {
  const auto life = std::make_shared<int>(0);
  std::vector<JobState> ends;
  std::atomic<int> begun{0};
  std::unique_ptr<Job> outlives;
  try {
    tmv::RunningPool pool(1);
    const auto paused = [&] {
      auto job = std::make_unique<Job>();
      const int before = begun;
      job->AddLane().Then(Endless(begun)).Then([life] { FAIL() << "after a cancel"; });
      job->OnEnd([&ends, life](JobState state) { ends.push_back(state); });
      job->Start();
      Eventually([&] { return begun > before; });
      EXPECT_TRUE(job->PauseAndWait());
      return job;
    };
    paused()->Cancel();
    paused().reset();
    std::unique_ptr<Job> byName = paused();
    byName->Resume();
    TmvTaskSchedular()->PauseEvent(byName->EventName().c_str());
    byName.reset();
    outlives = paused();
    throw std::runtime_error("the pool's scope is left");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(outlives->Wait(), JobState::kCancelled);
  EXPECT_EQ(ends, std::vector<JobState>(4, JobState::kCancelled));
  EXPECT_EQ(life.use_count(), 1);
}

TEST(Job, MayBeDestroyedByItsOwnCallablesAndByItsEnd) {
  tmv::RunningPool pool(2);
  const auto life = std::make_shared<int>(0);
  std::atomic<int> destroyed{0};
  auto byEnd = std::make_unique<Job>();
  byEnd->AddLane().Then([life] {});
  byEnd->OnEnd([&, life] {
    byEnd->Wait();  // Has ended.
    byEnd.reset();
    ++destroyed;
  });
  byEnd->Start();
  auto shared = std::make_shared<Job>();  // Held by nobody but its own callable.
  shared->AddLane().Then([shared, life] {});
  std::exchange(shared, nullptr)->Start();
  Eventually([&] { return destroyed == 1 && life.use_count() == 1; });

  auto byCallable = std::make_unique<Job>();
  std::atomic<int> begun{0};
  byCallable->OnEnd([life] { FAIL() << "the job was destroyed before its end"; });
  byCallable->AddLane().Then(Endless(begun));
  byCallable->AddLane()
      .Then([&, life] {
        Eventually([&] { return begun == 1; });
        byCallable.reset();
        ++destroyed;
        EXPECT_EQ(life.use_count(), 2) << "this callable, and the test";
      })
      .Then([life] { FAIL() << "after a cancel"; });

  byCallable->Start();
  Eventually([&] { return destroyed == 2 && life.use_count() == 1; });
  EXPECT_EQ(byEnd, nullptr);
  EXPECT_EQ(byCallable, nullptr);
}

// Cancels, pauses and ends that meet. Whatever comes first: one end, the counts agree with it, and
// nothing of the host is in use once Wait has returned.
TEST(Job, RacesOfCancelAndEndHaveOneWinner) {
  const char* const rounds = std::getenv("TEMVAR_RACES");
  tmv::RunningPool pool(3);
  std::atomic<int> cancelled{0};
  for (int round = 0; round < (rounds ? std::atoi(rounds) : 300); ++round) {
    std::atomic<int> ends{0}, inside{0};
    const auto life = std::make_shared<int>(0);
    Job job("race");
    for (int i = 0; i < 2; ++i) {
      Job::Lane lane = job.AddLane();
      for (int k = 0; k < 2; ++k) {
        lane.Then([&inside, life](Context& context) {
          ++inside;
          context.KeepGoing();
          --inside;
        });
      }
    }
    job.OnEnd([&ends, life] { ++ends; });
    std::thread rival([&] {
      for (int i = 0; i < round % 50; ++i) std::this_thread::yield();
      if (round % 3 == 0) job.Pause();
      if (round % 7 == 0) {
        TmvTaskSchedular()->CancelEventEx(job.EventName().c_str(), round % 2 == 0);
        job.Resume();
      } else {
        job.Cancel();
      }
    });
    job.Start();
    if (round % 5 == 0) job.PauseAndWait();
    if (round % 7 == 0) rival.join(), job.Resume(), job.Cancel();
    const JobState state = job.Wait();
    EXPECT_EQ(inside, 0);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(life.use_count(), 1);
    const Job::Progress progress = job.GetProgress();
    EXPECT_EQ(state, progress.done == 4 ? JobState::kSucceeded : JobState::kCancelled);
    cancelled += state == JobState::kCancelled ? 1 : 0;
    if (rival.joinable()) rival.join();
  }
  EXPECT_GT(cancelled, 0);
}

}  // namespace
