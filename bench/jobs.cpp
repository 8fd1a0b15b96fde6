#include "bench/jobs.h"

#ifdef BENCH_HAS_TBB
#include <oneapi/tbb/flow_graph.h>

#include <deque>
#endif

namespace bench {
namespace {

constexpr size_t kTasksInPackage = 1000;

tmv::Func MakeFunc(void* payload, RkTaskCallback callback) {
  tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  func->Bind(payload, callback, nullptr);
  return func;
}

tmv::Task MakeTask(RkTaskFunc* func, const std::string& name) {
  tmv::Task task = tmv::Task::Adopt(CreateRkTask());
  task->SetName(name.c_str());
  task->SetFunc(func);
  return task;
}

}  // namespace

// Each task has a function holder of its own, as hosts bind them.
Tasks::Tasks(size_t count, Body body) : works_(count) {
  shared_.body = body;
  for (Work& work : works_) {
    const tmv::Func& func = funcs_.emplace_back(
        MakeFunc(&shared_, [](RkTask*, RkTaskData* data) { Run(data->GetPayload()); }));
    tasks_.push_back(MakeTask(func, "task"));
    work = {Run, &shared_};
  }
}

void Tasks::Run(void* shared) {
  static_cast<Shared*>(shared)->body();
  static_cast<Shared*>(shared)->latch.CountDown();
}

void Tasks::RunInLibrary() {
  shared_.latch.Reset(static_cast<int>(tasks_.size()));
  for (const tmv::Task& task : tasks_) TmvTaskPool()->AddTask(task);
  shared_.latch.Wait();
}

void Tasks::RunFuncsInLibrary() {
  shared_.latch.Reset(static_cast<int>(funcs_.size()));
  for (const tmv::Func& func : funcs_) TmvTaskPool()->AddFunc(func);
  shared_.latch.Wait();
}

void Tasks::RunIn(Pool& pool) {
  shared_.latch.Reset(static_cast<int>(works_.size()));
  for (const Work& work : works_) pool.Add(&work);
  shared_.latch.Wait();
}

Chains::Chains(size_t chains, size_t length, Body body, const std::string& name)
    : chains_(chains), length_(length), name_(name) {
  shared_.body = body;
}

void Chains::MakeEvent() {
  event_ = tmv::Event::Adopt(CreateRkTaskEvent());
  event_->SetName(name_.c_str());
  event_->SetFunc(MakeFunc(&shared_, RunEvent));
  firsts_.clear();
  for (size_t chain = 0; chain < chains_; ++chain) {
    const tmv::Package package = tmv::Package::Adopt(CreateRkTaskPackage());
    for (size_t i = 0; i < length_; ++i) {
      const std::string task = name_ + " " + std::to_string(chain) + "." + std::to_string(i);
      package->AddTask(MakeTask(MakeFunc(&shared_, RunTask), task));
    }
    event_->AddPackage(package);
    firsts_.push_back(tmv::Task::Adopt(package->GetFirst()));
  }
}

void Chains::RunInLibrary() {
  shared_.latch.Reset(1);
  TmvTaskSchedular()->AddEvent(event_);
  shared_.latch.Wait();
}

void Chains::MakeLinks() {
  links_.clear();
  for (size_t chain = 0; chain < chains_; ++chain) {
    std::vector<std::unique_ptr<Link>>& links = links_.emplace_back();
    for (size_t i = 0; i < length_; ++i) {
      Link& link = *links.emplace_back(std::make_unique<Link>());
      link.shared = &shared_;
      link.work = {RunLink, &link};
      if (i > 0) links[i - 1]->next = &link;
    }
  }
}

void Chains::RunIn(Pool& pool) {
  shared_.pool = &pool;
  shared_.latch.Reset(static_cast<int>(chains_));
  for (const auto& chain : links_) pool.Add(&chain.front()->work);
  shared_.latch.Wait();
}

void Chains::RunTask(RkTask* task, RkTaskData* data) {
  static_cast<Shared*>(data->GetPayload())->body();
  task->ReportState(task, kTaskStateSucceeded);
}

void Chains::RunEvent(RkTask* event, RkTaskData* data) {
  event->ReportState(event, kTaskStateSucceeded);
  static_cast<Shared*>(data->GetPayload())->latch.CountDown();
}

void Chains::RunLink(void* data) {
  auto* const link = static_cast<Link*>(data);
  link->shared->body();
  if (link->next != nullptr) {
    link->shared->pool->Add(&link->next->work);
  } else {
    link->shared->latch.CountDown();
  }
}

Registered::Registered(size_t count, const std::string& name)
    : name_(name), event_(tmv::Event::Adopt(CreateRkTaskEvent())) {
  event_->SetName(name.c_str());
  tmv::Package package;
  for (size_t i = 0; i < count; ++i) {
    if (i % kTasksInPackage == 0) {
      package = tmv::Package::Adopt(CreateRkTaskPackage());
      event_->AddPackage(package);
    }
    package->AddTask(MakeTask(nullptr, name + " " + std::to_string(i)));
  }
  TmvTaskSchedular()->RegisterEvent(event_);
}

Registered::~Registered() { TmvTaskSchedular()->RemoveEvent(name_.c_str()); }

#ifdef BENCH_HAS_TBB
struct FlowGraph::State {
  using Node = tbb::flow::continue_node<tbb::flow::continue_msg>;

  tbb::flow::graph graph;
  std::deque<Node> nodes;
  std::vector<Node*> first;
  Latch latch;
};

FlowGraph::FlowGraph(size_t chains, size_t length, Body body) : state_(new State) {
  using Message = tbb::flow::continue_msg;
  for (size_t chain = 0; chain < chains; ++chain) {
    for (size_t i = 0; i < length; ++i) {
      Latch* const latch = i + 1 == length ? &state_->latch : nullptr;
      state_->nodes.emplace_back(state_->graph, [body, latch](const Message&) {
        body();
        if (latch != nullptr) latch->CountDown();
      });
      State::Node& node = state_->nodes.back();
      if (i == 0) {
        state_->first.push_back(&node);
      } else {
        tbb::flow::make_edge(*std::prev(state_->nodes.end(), 2), node);
      }
    }
  }
}

FlowGraph::~FlowGraph() { state_->graph.wait_for_all(); }

void FlowGraph::Run() {
  state_->latch.Reset(static_cast<int>(state_->first.size()));
  for (State::Node* node : state_->first) node->try_put({});
  state_->latch.Wait();
}
#endif

}  // namespace bench
