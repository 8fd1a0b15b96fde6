// The pool and the scheduler side by side with a plain pool, 2 workers each, in one process:
//   bench_tasks [--benchmark_...]
// The rounds of all benchmarks are interleaved at random, so that what else happens on the machine
// meets all of them; a table at the end compares.
#include <benchmark/benchmark.h>
#include <temvar/temvar.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/comparison.h"
#include "bench/jobs.h"
#include "bench/plain_pool.h"

namespace {

using namespace bench;
using Clock = std::chrono::steady_clock;

constexpr size_t kWorkers = 2;

void Nothing() {}
void OneMillisecond() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }
void FiveMicroseconds() {
  const auto end = Clock::now() + std::chrono::microseconds(5);
  while (Clock::now() < end) {
  }
}

std::unique_ptr<PlainPool>& Plain() {
  static std::unique_ptr<PlainPool> pool;
  return pool;
}

void SetSeconds(benchmark::State& state, Clock::duration elapsed) {
  state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
}

template <typename Job>
void Measure(benchmark::State& state, Job& job, bool library) {
  const auto start = Clock::now();
  library ? job.RunInLibrary() : job.RunIn(*Plain());
  SetSeconds(state, Clock::now() - start);
}

void RunTasks(benchmark::State& state, size_t count, Body body, bool library) {
  Tasks tasks(count, body);
  for (auto _ : state) Measure(state, tasks, library);
}

void RunChains(benchmark::State& state, size_t chains, size_t length, Body body, bool library) {
  Chains job(chains, length, body);
  for (auto _ : state) {
    Measure(state, job, library);
    if (library) job.Renew();
  }
}

// From just before the task is added to the first line of its function. In between, the pool gets
// the time to become idle: its worker sleeps.
class StartLatency {
 public:
  explicit StartLatency(bool library)
      : library_(library), func_(tmv::Func::Adopt(CreateRkTaskFunc())) {
    func_->Bind(
        this,
        [](RkTask*, RkTaskData* data) { static_cast<StartLatency*>(data->GetPayload())->Note(); },
        nullptr);
    task_->SetFunc(func_);
    work_ = {[](void* data) { static_cast<StartLatency*>(data)->Note(); }, this};
  }

  Clock::duration Once() {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    done_.Reset(1);
    const auto added = Clock::now();
    if (library_) {
      TmvTaskPool()->AddTask(task_);
    } else {
      Plain()->Add(&work_);
    }
    done_.Wait();
    return started_ - added;
  }

 private:
  void Note() {
    started_ = Clock::now();
    done_.CountDown();
  }

  bool library_;
  Clock::time_point started_;
  Latch done_;
  tmv::Task task_ = tmv::MakeTask("task");
  tmv::Func func_;
  PlainPool::Work work_;
};

void RunLatency(benchmark::State& state, bool library) {
  StartLatency latency(library);
  std::vector<int64_t> samples;
  for (auto _ : state) {
    const Clock::duration elapsed = latency.Once();
    SetSeconds(state, elapsed);
    samples.push_back(std::chrono::nanoseconds(elapsed).count());
  }
  std::sort(samples.begin(), samples.end());
  state.counters["p50_ns"] = static_cast<double>(samples[samples.size() / 2]);
  state.counters["p99_ns"] = static_cast<double>(samples[samples.size() * 99 / 100]);
}

// A chain of 100 tasks beside `count` registered ones, which a look-up meets first or last.
void RunReports(benchmark::State& state, size_t count, bool walkedFirst) {
  const Registered registered(count, walkedFirst ? "a" : "z");
  Chains job(1, 100, Nothing);
  for (auto _ : state) {
    Measure(state, job, true);
    job.Renew();
  }
}

void WithInterval(benchmark::State& state, int32_t interval) {
  TmvTaskPool()->SetPollInterval(interval);
  Tasks tasks(10'000, Nothing);
  for (auto _ : state) Measure(state, tasks, true);
  TmvTaskPool()->SetPollInterval(500);
}

template <typename Function>
void Register(const std::string& name, int iterations, Function function) {
  benchmark::RegisterBenchmark(name.c_str(), function)
      ->UseManualTime()
      ->Iterations(iterations)
      ->ComputeStatistics("best", Comparison::Best)
      ->Unit(benchmark::kMicrosecond);
}

void RegisterBoth(const std::string& name, int iterations,
                  void (*function)(benchmark::State&, size_t, size_t, Body, bool), size_t a,
                  size_t b, Body body) {
  for (const bool library : {true, false}) {
    Register(name + (library ? "/library" : "/plain"), iterations,
             [=](benchmark::State& state) { function(state, a, b, body, library); });
  }
}

void RegisterAll() {
  for (const bool library : {true, false}) {
    Register(std::string("start_latency") + (library ? "/library" : "/plain"), 500,
             [library](benchmark::State& state) { RunLatency(state, library); });
  }
  const auto tasks = [](benchmark::State& state, size_t count, size_t, Body body, bool library) {
    RunTasks(state, count, body, library);
  };
  RegisterBoth("tasks_1000_of_1ms", 1, tasks, 1000, 0, OneMillisecond);
  RegisterBoth("tasks_100k_empty", 1, tasks, 100'000, 0, Nothing);
  for (const size_t chains : {1, 2, 8, 64}) {
    const std::string name = "chains_" + std::to_string(chains) + "x1000";
    RegisterBoth(name + "_empty", 1, RunChains, chains, 1000, Nothing);
    RegisterBoth(name + "_of_5us", 1, RunChains, chains, 1000, FiveMicroseconds);
  }
  for (const size_t count : {1'000, 10'000, 100'000}) {
    for (const bool first : {true, false}) {
      const std::string where = first ? "_before" : "_behind";
      Register("chain_of_100_with_" + std::to_string(count) + where + "/library", 3,
               [=](benchmark::State& state) { RunReports(state, count, first); });
    }
  }
  for (const int32_t interval : {0, 1, 10, 500, 60'000}) {
    Register("tasks_10k_empty_poll_" + std::to_string(interval) + "/library", 1,
             [=](benchmark::State& state) { WithInterval(state, interval); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=9";
  char aggregates[] = "--benchmark_report_aggregates_only=true";
  char interleaving[] = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, {repetitions, aggregates, interleaving});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  RegisterAll();

  TmvTaskPool()->Start(kWorkers);
  Plain() = std::make_unique<PlainPool>(kWorkers);
  Comparison comparison;
  benchmark::RunSpecifiedBenchmarks(&comparison);
  Plain().reset();
  TmvTaskPool()->Stop();
  return 0;
}
