#ifndef BENCH_JOBS_H_
#define BENCH_JOBS_H_

#include <temvar/temvar.h>

#include <cstddef>
#include <string>
#include <vector>

#include <temvar/handles.h>
#include "bench/latch.h"
#include "bench/plain_pool.h"

// The same work for the library and for the plain pool, made before the clock runs.
namespace bench {

using Body = void (*)();

// Independent tasks, queued at once. Each counts the latch down behind its body.
class Tasks {
 public:
  Tasks(size_t count, Body body);
  void RunInLibrary();
  void RunIn(PlainPool& pool);

 private:
  struct Shared {
    Latch latch;
    Body body;
  };

  static void Run(void* shared);

  Shared shared_;
  std::vector<tmv::Task> tasks_;
  std::vector<PlainPool::Work> works_;
};

// Chains: the next task starts when the one before has reported. In the library they are the
// packages of one event; in the plain pool each task adds the next one.
class Chains {
 public:
  // The name of the event decides where a look-up meets it.
  Chains(size_t chains, size_t length, Body body, const std::string& name = "bench");
  void RunInLibrary();
  void RunIn(PlainPool& pool);

  // An event runs once: makes a new one for the next round in the library.
  void Renew() { MakeEvent(); }

 private:
  struct Shared {
    Latch latch;
    Body body;
    PlainPool* pool = nullptr;
  };
  struct Link {
    Shared* shared = nullptr;
    const PlainPool::Work* next = nullptr;
  };

  void MakeEvent();
  static void RunTask(RkTask* task, RkTaskData* data);
  static void RunEvent(RkTask* event, RkTaskData* data);
  static void RunLink(void* data);

  Shared shared_;
  size_t chains_;
  size_t length_;
  std::string name_;
  tmv::Event event_;
  std::vector<std::vector<Link>> links_;
  std::vector<std::vector<PlainPool::Work>> works_;
};

// Tasks that only stand in the registry, which every look-up by name walks.
class Registered {
 public:
  Registered(size_t count, const std::string& name);
  ~Registered();

 private:
  std::string name_;
  tmv::Event event_;
};

}  // namespace bench

#endif  // BENCH_JOBS_H_
