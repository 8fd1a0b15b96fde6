// The pool and the scheduler side by side with other pools, 2 workers each, in one process:
//   bench_tasks [--benchmark_...]
// The rounds of all benchmarks are interleaved at random, so that what else happens on the machine
// meets all of them; a table at the end compares the medians. With
//   --benchmark_out=results.json --benchmark_out_format=json
// the results are kept, and bench/cost_chart makes a chart of them.
#include <benchmark/benchmark.h>
#include <temvar/temvar.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/comparison.h"
#include "bench/jobs.h"
#include "bench/pools.h"

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

std::vector<NamedPool>& Pools() {
  static std::vector<NamedPool> pools;
  return pools;
}

void SetSeconds(benchmark::State& state, Clock::duration elapsed) {
  state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
}

template <typename Run>
void Measure(benchmark::State& state, Run run) {
  const auto start = Clock::now();
  run();
  SetSeconds(state, Clock::now() - start);
}

void SetTasks(benchmark::State& state, size_t count) {
  state.counters["tasks"] = static_cast<double>(count);
}

// A null pool means the library.
void RunTasks(benchmark::State& state, size_t count, Body body, Pool* pool) {
  Tasks tasks(count, body);
  for (auto _ : state) {
    Measure(state, [&] { pool == nullptr ? tasks.RunInLibrary() : tasks.RunIn(*pool); });
  }
}

void RunFuncs(benchmark::State& state, size_t count) {
  Tasks tasks(count, Nothing);
  for (auto _ : state) Measure(state, [&] { tasks.RunFuncsInLibrary(); });
}

void RunChains(benchmark::State& state, size_t chains, size_t length, Body body, Pool* pool) {
  Chains job(chains, length, body);
  SetTasks(state, chains * length);
  if (pool != nullptr) job.MakeLinks();
  for (auto _ : state) {
    if (pool == nullptr) job.MakeEvent();
    Measure(state, [&] { pool == nullptr ? job.RunInLibrary() : job.RunIn(*pool); });
  }
}

// The making of the job is part of the time, its end isn't.
void BuildAndRun(benchmark::State& state, size_t count, Pool* pool) {
  constexpr size_t kChains = 8;
  SetTasks(state, count);
  for (auto _ : state) {
    Chains job(kChains, count / kChains, Nothing);
    Measure(state, [&] {
      pool == nullptr ? job.MakeEvent() : job.MakeLinks();
      pool == nullptr ? job.RunInLibrary() : job.RunIn(*pool);
    });
  }
}

#ifdef BENCH_HAS_TBB
void RunGraph(benchmark::State& state, size_t chains, size_t length, Body body) {
  SetTasks(state, chains * length);
  FlowGraph graph(chains, length, body);
  for (auto _ : state) Measure(state, [&] { graph.Run(); });
}

void BuildAndRunGraph(benchmark::State& state, size_t count) {
  constexpr size_t kChains = 8;
  SetTasks(state, count);
  for (auto _ : state) {
    std::unique_ptr<FlowGraph> graph;
    Measure(state, [&] {
      graph = std::make_unique<FlowGraph>(kChains, count / kChains, Nothing);
      graph->Run();
    });
  }
}
#endif

// From just before the task is added to the first line of its function. In between, the pool gets
// the time to become idle: its worker sleeps.
class StartLatency {
 public:
  explicit StartLatency(Pool* pool) : pool_(pool), func_(tmv::Func::Adopt(CreateRkTaskFunc())) {
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
    if (pool_ == nullptr) {
      TmvTaskPool()->AddTask(task_);
    } else {
      pool_->Add(&work_);
    }
    done_.Wait();
    return started_ - added;
  }

 private:
  void Note() {
    started_ = Clock::now();
    done_.CountDown();
  }

  Pool* pool_;
  Clock::time_point started_;
  Latch done_;
  tmv::Task task_ = tmv::MakeTask("task");
  tmv::Func func_;
  Work work_;
};

void RunLatency(benchmark::State& state, Pool* pool) {
  StartLatency latency(pool);
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

// A chain of 100 tasks beside `count` registered ones, which come before it or after it in the
// order of the registry.
void RunReports(benchmark::State& state, size_t count, bool before) {
  constexpr size_t kLength = 100;
  const Registered registered(count, before ? "a" : "z");
  Chains job(1, kLength, Nothing);
  SetTasks(state, kLength);
  for (auto _ : state) {
    job.MakeEvent();
    Measure(state, [&] { job.RunInLibrary(); });
  }
}

// What a report itself costs its caller: the time of 100 reports from one task, each of which moves
// its package on. The registered ones come before it.
void RunOneReport(benchmark::State& state, size_t count) {
  constexpr size_t kReports = 100;
  const Registered registered(count, "a");
  SetTasks(state, kReports);
  for (auto _ : state) {
    Chains job(1, kReports + 1, Nothing);
    job.MakeEvent();
    TmvTaskSchedular()->RegisterEvent(job.event());
    const tmv::Task first = tmv::Task::Adopt(TmvTaskSchedular()->FindTask("bench 0.0"));
    Gate gate;
    gate.HoldWorkers(kWorkers);
    first->SetState(kTaskStateActive);
    Measure(state, [&] {
      for (size_t i = 0; i < kReports; ++i) first->ReportState(first, kTaskStateSucceeded);
    });
    // What the reports have queued must not run: it uses the job, which ends here.
    TmvTaskPool()->RemoveQueued("bench");
    TmvTaskSchedular()->RemoveEvent("bench");
    gate.Open();
    gate.AwaitEnd();
  }
}

// A cancel of an event whose `count` packages have one task each, all of them queued after it: from
// its start to the call of the event's function. One worker is held meanwhile, or it would begin
// the tasks.
void RunCancel(benchmark::State& state, size_t count) {
  for (auto _ : state) {
    Chains job(count, 1, Nothing);
    job.MakeEvent();
    const std::vector<tmv::Task> firsts = job.Firsts();
    Gate cancelling;
    cancelling.HoldWorkers(1);
    Gate other;
    other.HoldWorkers(kWorkers - 1);
    job.latch().Reset(1);
    TmvTaskSchedular()->RegisterEvent(job.event());
    TmvTaskSchedular()->CancelEventEx("bench", false);
    for (const tmv::Task& task : firsts) TmvTaskSchedular()->ScheduleTask(task);
    Measure(state, [&] {
      cancelling.Open();
      job.latch().Wait();
    });
    other.Open();
    cancelling.AwaitEnd();
    other.AwaitEnd();
    TmvTaskSchedular()->RemoveEvent("bench");
  }
}

void WithInterval(benchmark::State& state, int32_t interval) {
  TmvTaskPool()->SetPollInterval(interval);
  Tasks tasks(10'000, Nothing);
  for (auto _ : state) Measure(state, [&] { tasks.RunInLibrary(); });
  TmvTaskPool()->SetPollInterval(500);
}

void Register(const std::string& name, int iterations,
              std::function<void(benchmark::State&)> function) {
  benchmark::RegisterBenchmark(name.c_str(), std::move(function))
      ->UseManualTime()
      ->Iterations(iterations)
      ->Unit(benchmark::kMicrosecond);
}

using Function = std::function<void(benchmark::State&, Pool*)>;

void RegisterForAll(const std::string& name, int iterations, const Function& function) {
  Register(name + "/library", iterations,
           [function](benchmark::State& state) { function(state, nullptr); });
  for (const NamedPool& named : Pools()) {
    Register(
        name + "/" + named.name, iterations,
        [function, pool = named.pool.get()](benchmark::State& state) { function(state, pool); });
  }
}

void RegisterChains(size_t chains, const std::string& kind, Body body) {
  constexpr size_t kLength = 1000;
  const std::string name = "chains_" + std::to_string(chains) + "x1000_" + kind;
  RegisterForAll(name, 1, [=](benchmark::State& state, Pool* pool) {
    RunChains(state, chains, kLength, body, pool);
  });
#ifdef BENCH_HAS_TBB
  Register(name + "/tbb_graph", 1,
           [=](benchmark::State& state) { RunGraph(state, chains, kLength, body); });
#endif
}

void RegisterBuildAndRun(size_t count) {
  const std::string name = "build_and_run_8_chains/" + std::to_string(count);
  RegisterForAll(name, 1,
                 [=](benchmark::State& state, Pool* pool) { BuildAndRun(state, count, pool); });
#ifdef BENCH_HAS_TBB
  Register(name + "/tbb_graph", 1,
           [=](benchmark::State& state) { BuildAndRunGraph(state, count); });
#endif
}

void RegisterAll() {
  RegisterForAll("start_latency", 500, RunLatency);
  RegisterForAll("tasks_1000_of_1ms", 1, [](benchmark::State& state, Pool* pool) {
    RunTasks(state, 1000, OneMillisecond, pool);
  });
  RegisterForAll("tasks_100k_empty", 1, [](benchmark::State& state, Pool* pool) {
    RunTasks(state, 100'000, Nothing, pool);
  });
  Register("funcs_100k_empty/library", 1,
           [](benchmark::State& state) { RunFuncs(state, 100'000); });
  for (const size_t chains : {1, 2, 8, 64}) {
    RegisterChains(chains, "empty", Nothing);
    RegisterChains(chains, "of_5us", FiveMicroseconds);
  }
  for (const size_t count : {1'000, 10'000, 100'000}) {
    const std::string number = std::to_string(count);
    RegisterBuildAndRun(count);
    Register("one_report/" + number + "/library", 1,
             [count](benchmark::State& state) { RunOneReport(state, count); });
    for (const bool before : {true, false}) {
      Register("chain_of_100_" + std::string(before ? "after/" : "before/") + number + "/library",
               3, [=](benchmark::State& state) { RunReports(state, count, before); });
    }
  }
  Register("cancel_of_20k_queued/library", 1,
           [](benchmark::State& state) { RunCancel(state, 20'000); });
  for (const int32_t interval : {0, 1, 10, 500, 60'000}) {
    Register("tasks_10k_empty_poll_" + std::to_string(interval) + "/library", 1,
             [interval](benchmark::State& state) { WithInterval(state, interval); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=9";
  char interleaving[] = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, {repetitions, interleaving});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  TmvTaskPool()->Start(kWorkers);
  Pools() = MakePools(kWorkers);
  RegisterAll();

  Comparison comparison;
  benchmark::RunSpecifiedBenchmarks(&comparison);
  Pools().clear();
  TmvTaskPool()->Stop();
  return 0;
}
