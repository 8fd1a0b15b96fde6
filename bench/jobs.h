#ifndef BENCH_JOBS_H_
#define BENCH_JOBS_H_

#include <temvar/temvar.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <temvar/handles.h>
#include "bench/latch.h"
#include "bench/pools.h"

// The same work for the library and for the other pools.
namespace bench {

using Body = void (*)();

// Independent tasks, made beforehand and queued at once. Each counts the latch down after its body.
class Tasks {
 public:
  Tasks(size_t count, Body body);
  void RunInLibrary();
  // With a task made by AddFunc for each run.
  void RunFuncsInLibrary();
  void RunIn(Pool& pool);

 private:
  struct Shared {
    Latch latch;
    Body body;
  };

  static void Run(void* shared);

  Shared shared_;
  std::vector<tmv::Func> funcs_;
  std::vector<tmv::Task> tasks_;
  std::vector<Work> works_;
};

// Chains: the next task starts when the one before has reported. In the library they are the
// packages of one event; in the other pools each task adds the next one.
class Chains {
 public:
  // The name of the event is its place in the order of the registry.
  Chains(size_t chains, size_t length, Body body, const std::string& name = "bench");

  // Before each run in the library, since an event runs once.
  void MakeEvent();
  void RunInLibrary();

  // The first task of each chain.
  std::vector<tmv::Task> Firsts() const { return firsts_; }

  // Before the first run in another pool.
  void MakeLinks();
  void RunIn(Pool& pool);

  Latch& latch() { return shared_.latch; }
  const tmv::Event& event() const { return event_; }

 private:
  struct Shared {
    Latch latch;
    Body body;
    Pool* pool = nullptr;
  };
  struct Link {
    Shared* shared = nullptr;
    Link* next = nullptr;
    Work work;
  };

  static void RunTask(RkTask* task, RkTaskData* data);
  static void RunEvent(RkTask* event, RkTaskData* data);
  static void RunLink(void* data);

  Shared shared_;
  size_t chains_;
  size_t length_;
  std::string name_;
  tmv::Event event_;
  std::vector<tmv::Task> firsts_;
  std::vector<std::vector<std::unique_ptr<Link>>> links_;
};

// An event of `count` tasks in packages of a thousand that is registered and runs nothing.
class Registered {
 public:
  Registered(size_t count, const std::string& name);
  ~Registered();

 private:
  std::string name_;
  tmv::Event event_;
};

#ifdef BENCH_HAS_TBB
// The chains as a flow graph of oneTBB: the order is known beforehand.
class FlowGraph {
 public:
  FlowGraph(size_t chains, size_t length, Body body);
  ~FlowGraph();
  FlowGraph(const FlowGraph&) = delete;
  FlowGraph& operator=(const FlowGraph&) = delete;
  void Run();

 private:
  struct State;
  std::unique_ptr<State> state_;
};
#endif

}  // namespace bench

#endif  // BENCH_JOBS_H_
