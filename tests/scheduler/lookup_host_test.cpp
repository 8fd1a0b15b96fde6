// Look-ups in the registry and edits of packages; then look-ups and reports by name against the
// documented walk, over random edits:
//   TEMVAR_LOOKUP_EDITS=5000000 bin/lookup_host_test
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <random>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

// Two events: "b" with the tasks b1 | b2, and "a" with a1 | (a2, a3).
class Queries : public testing::Test {
 protected:
  void SetUp() override {
    for (const EventPtr* event : {&b_, &a_}) Schedular().RegisterEvent(event->get());
  }

  void TearDown() override {
    for (const char* name : {"a", "b"}) Schedular().RemoveEvent(name);
    EXPECT_EQ(Schedular().GetEventCount(), 0u);
  }

  TaskPtr a1_ = MakeTask("a1");
  PackagePtr b1_ = MakePackage({MakeTask("b1").get()});
  PackagePtr b2_ = MakePackage({MakeTask("b2").get()});
  PackagePtr first_ = MakePackage({a1_.get()});
  PackagePtr second_ = MakePackage({MakeTask("a2").get(), MakeTask("a3").get()});
  EventPtr a_ = MakeEvent("a", {first_.get(), second_.get()});
  EventPtr b_ = MakeEvent("b", {b1_.get(), b2_.get()});
};

TEST_F(Queries, NullsFindNothingNotEvenWhatIsNamedByTheEmptyText) {
  const Job nameless("", {{""}});
  Schedular().RegisterEvent(nameless.event.get());
  EXPECT_EQ(Schedular().FindTask(nullptr), nullptr);
  EXPECT_EQ(Schedular().FindEvent(nullptr), nullptr);
  EXPECT_EQ(Schedular().FindEventOfTask(nullptr), nullptr);
  for (RkTask* none : {static_cast<RkTask*>(nullptr), a1_.get()}) {
    EXPECT_EQ(Schedular().FindEventOfPackage(none), nullptr);
  }
  EXPECT_EQ(Schedular().FindPackageOfTask(nullptr), nullptr);
  Schedular().RemoveEventLocked(nullptr);
  EXPECT_FALSE(Schedular().IsTaskCancelled(nullptr));
  EXPECT_FALSE(Schedular().CancelEventOfTask(nullptr));
  EXPECT_FALSE(Schedular().InsertTaskAfterName(a1_.get(), nullptr));
  EXPECT_FALSE(Schedular().InsertTaskAfter(a1_.get(), nullptr));
  Schedular().FreeTaskList(nullptr);
  Schedular().PauseEvent(nullptr);
  Schedular().ResumeEvent(nullptr);
  Schedular().CancelEvent(nullptr);
  Schedular().RemoveEvent(nullptr);
  uint32_t count = 0;
  EXPECT_EQ(Pool().ListRunning(nullptr, count), nullptr);
  EXPECT_EQ(Schedular().GetEventCount(), 3u);
}

TEST_F(Queries, TheListOfCurrentTasksHoldsOneForEachPackageAndNoneWithoutOne) {
  const EventPtr bare = MakeEvent("bare", {});
  Schedular().AddEvent(bare.get());
  EXPECT_EQ(Schedular().GetEventCount(), 3u);
  EXPECT_EQ(Pool().GetQueuedCount(), 0u);
  EXPECT_EQ(Schedular().ListCurrentTasks(bare.get()), nullptr);
  Schedular().RemoveEvent("bare");
  ListPtr list(Schedular().ListCurrentTasks(a_.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  list.reset(Schedular().ListCurrentTasks(b_.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("b1", "b2"));
  b2_->InsertTask(nullptr, 0);
  b_->AddPackage(nullptr);
  b_->AddPackage(MakePackage({}).get());
  list.reset(Schedular().ListCurrentTasks(b_.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("b1"));
  b_->AddPackage(a1_.get());  // A plain task can be listed like a package.
  EXPECT_EQ(TaskPtr(Schedular().FindEventOfPackage(a1_.get())).get(), b_.get());
  EXPECT_EQ(TaskPtr(Schedular().FindEventOfTask("a1")).get(), a_.get());
}

// A task that is inserted after the one in progress runs next; after the last one it runs too.
TEST(Insertion, TakesEffectWhileThePackageRuns) {
  RunningPool pool(2);
  Log log;
  const Body note = log.Note();
  Gate gate;
  const Job job("event", {{"first", gate.Then(note)}, {"last", note}}, note);
  job.Add();
  gate.WaitForArrivals(1);
  EXPECT_TRUE(Schedular().InsertTaskAfter(MakeTask("next", note).get(), job[0]));
  EXPECT_TRUE(Schedular().InsertTaskAfterName(MakeTask("after", note).get(), "last"));
  ListPtr list(Schedular().ListCurrentTasks(job.event.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("first"));
  gate.Open();
  log.WaitFor("event");
  EXPECT_THAT(log.Entries(), ElementsAre("first", "next", "last", "after", "event"));
  list.reset(Schedular().ListCurrentTasks(job.event.get()));
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("after"));
  EXPECT_STREQ(TaskPtr(job.package->GetPrevious())->GetName(), "last");
}

// What the test knows of a task, a package or an event.
struct Node {
  TaskPtr task;
  std::string name = "0";
  bool isWalked = false;          // Its kind is that of packages.
  std::vector<Node*> children{};  // Null where a package has a null.
  uint32_t position = 0;
};

struct Found {
  Node* event = nullptr;
  Node* package = nullptr;
  Node* task = nullptr;
};

RkTask* TaskOf(const Node* node) { return node == nullptr ? nullptr : node->task.get(); }
RkTaskPackage* PackageOf(const Node& node) { return dynamic_cast<RkTaskPackage*>(node.task.get()); }

class Forest {
 public:
  explicit Forest(unsigned seed) : random_(seed) {
    for (Node& task : tasks_) task.task.reset(CreateRkTask());
    for (Node& package : packages_) package = {TaskPtr(CreateRkTaskPackage()), "0", true};
    for (Node& event : events_) event.task.reset(CreateRkTaskEvent());
  }

  ~Forest() {
    while (!registry_.empty()) Remove(registry_.begin()->first);
    Pool().RemoveQueued("");
  }

  void Edit() {
    Node& task = AnyOf(tasks_);
    Node& package = AnyOf(packages_);
    Node& event = AnyOf(events_);
    const size_t kind = Any(60);
    if (kind < 15) Rename(kind < 8 ? task : kind < 10 ? package : event);
    if (kind >= 15 && kind < 20) Register(event);
    if (kind >= 20 && kind < 25) Remove(AnyName());
    if (kind >= 25 && kind < 30) Report(task);
    if (kind >= 30 && kind < 35) InsertAfter(task, AnyOf(tasks_));
    if (kind >= 35 && kind < 41) AddPackage(event, package);
    if (kind >= 41 && kind < 59 && package.children.size() < 12) Insert(package);
    if (kind == 59) SetKind(Any(2) == 0 ? task : package);
  }

  void Check() {
    const std::string name = AnyName();
    const Found found = Walk(name);
    const PackagePtr package(Schedular().FindPackageOfTask(name.c_str()));
    ASSERT_EQ(package.get(), found.package ? PackageOf(*found.package) : nullptr) << name;
    ASSERT_EQ(TaskPtr(Schedular().FindTask(name.c_str())).get(), TaskOf(found.task)) << name;
    const TaskPtr event(Schedular().FindEventOfTask(name.c_str()));
    ASSERT_EQ(event.get(), TaskOf(found.event)) << name;

    const Node& listed = AnyOf(packages_);
    ASSERT_EQ(PackageOf(listed)->GetCurrentIndex(), listed.position);
    const auto entry = std::find_if(registry_.begin(), registry_.end(), [&](const auto& known) {
      const std::vector<Node*>& children = known.second->children;
      return std::find(children.begin(), children.end(), &listed) != children.end();
    });
    const TaskPtr listing(Schedular().FindEventOfPackage(listed.task.get()));
    ASSERT_EQ(listing.get(), entry == registry_.end() ? nullptr : TaskOf(entry->second));
  }

 private:
  size_t Any(size_t count) { return random_() % count; }
  template <size_t count>
  Node& AnyOf(std::array<Node, count>& nodes) {
    return nodes[Any(count)];
  }
  // Names with few and with many holders, and such as are nobody's.
  std::string AnyName() {
    return (Any(8) == 0 ? "\xC3" : "") + std::to_string(Any(2) == 0 ? Any(4) : Any(80));
  }

  void Rename(Node& node) { node.task->SetName((node.name = AnyName()).c_str()); }

  void SetKind(Node& node) {
    node.isWalked = !node.isWalked;
    node.task->SetType(node.isWalked ? kTaskTypePackage : kTaskTypePlain);
  }

  void AddPackage(Node& event, Node& package) {
    event.children.push_back(&package);
    dynamic_cast<RkTaskEvent*>(event.task.get())->AddPackage(package.task.get());
  }

  // A null, a task, or a package before this one, so that none is within itself.
  void Insert(Node& package) {
    const auto before = static_cast<size_t>(&package - packages_.data());
    Node* child = Any(8) == 0 ? nullptr : &AnyOf(tasks_);
    if (Any(8) == 0 && before > 0) child = &packages_[Any(before)];
    const size_t index = Any(package.children.size() + 1);
    PackageOf(package)->InsertTask(TaskOf(child), static_cast<uint32_t>(index));
    package.children.insert(package.children.begin() + static_cast<std::ptrdiff_t>(index), child);
  }

  // After the first child that is this one, or that its name finds, in the package that its name
  // finds.
  void InsertAfter(Node& child, Node& existing) {
    const bool byName = Any(2) == 0;
    const Found found = Walk(existing.name);
    std::vector<Node*> none;
    std::vector<Node*>& children = found.package == nullptr ? none : found.package->children;
    const auto hit = std::find(children.begin(), children.end(), byName ? found.task : &existing);
    RkTask* const task = child.task.get();
    EXPECT_EQ(byName ? Schedular().InsertTaskAfterName(task, existing.name.c_str())
                     : Schedular().InsertTaskAfter(task, existing.task.get()),
              hit != children.end());
    if (hit != children.end()) children.insert(hit + 1, &child);
  }

  // The package that the name finds moves on by one, to its last child at most.
  void Report(Node& task) {
    if (task.isWalked) return;
    Node* const package = Walk(task.name).package;
    task.task->SetState(kTaskStateActive);
    Succeed(task.task.get());
    if (package != nullptr && package->position + 1 < package->children.size()) ++package->position;
  }

  // The reference on what is overwritten stays taken.
  void Register(Node& event) {
    Node* const old = std::exchange(registry_[event.name], &event);
    Schedular().RegisterEvent(event.task.get());
    DestroyRkTask(TaskOf(old));
  }

  void Remove(std::string name) {
    Schedular().RemoveEvent(name.c_str());
    registry_.erase(name);
  }

  Found Walk(const std::string& name) const {
    for (const auto& [key, event] : registry_) {
      for (Node* package : event->children) {
        if (Node* const hit = WalkPackage(*package, name)) return {event, package, hit};
      }
    }
    return {};
  }

  static Node* WalkPackage(const Node& package, const std::string& name) {
    for (Node* child : package.children) {
      if (child == nullptr) continue;
      if (!child->isWalked && child->name == name) return child;
      Node* const hit = child->isWalked ? WalkPackage(*child, name) : nullptr;
      if (hit != nullptr) return hit;
    }
    return nullptr;
  }

  std::mt19937 random_;
  std::array<Node, 40> tasks_;
  std::array<Node, 12> packages_;
  std::array<Node, 4> events_;
  std::map<std::string, Node*> registry_;
};

TEST(LookUp, FindsTheFirstMatchOfTheDocumentedWalk) {
  constexpr unsigned kEditsOfAForest = 200;
  const char* const wanted = std::getenv("TEMVAR_LOOKUP_EDITS");
  const unsigned long edits = wanted == nullptr ? 20'000 : std::strtoul(wanted, nullptr, 10);
  for (unsigned seed = 0; seed * kEditsOfAForest < edits && !HasFailure(); ++seed) {
    SCOPED_TRACE("forest " + std::to_string(seed));
    Forest forest(seed);
    for (unsigned i = 0; i < kEditsOfAForest && !HasFailure(); ++i) {
      forest.Edit();
      forest.Check();
    }
  }
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
}

// Edits through the package's own interface and renames on two threads, look-ups on another, while
// the event runs: none is lost, and a sanitizer would see them meet.
TEST(LookUp, MeetsEditsWhileTheEventRuns) {
  constexpr size_t kRounds = 300;
  RunningPool pool(2);
  Log log;
  Gate gate;
  std::vector<Step> steps;
  for (size_t i = 0; i < kRounds; ++i) steps.push_back({"step" + std::to_string(i), Succeed});
  steps.push_back({"last", gate.Then(Succeed)});
  const Job job("event", steps, log.Note());
  job.Add();
  const Call edits([&] {
    for (size_t i = 0; i < kRounds; ++i) {
      const TaskPtr task = MakeTask("early", log.Note());
      job.package->AddTask(task.get());
      task->SetName(("added" + std::to_string(i)).c_str());
    }
  });
  const Call inserts([&] {
    for (size_t i = 0; i < kRounds; ++i) {
      const uint32_t before = job.package->GetCount();
      job.package->InsertTask(MakeTask("inserted", log.Note()).get(), before);
      EXPECT_GT(job.package->GetCount(), before);
    }
  });
  for (size_t i = 0; i < kRounds; ++i) {
    const TaskPtr event(Schedular().FindEventOfTask(("added" + std::to_string(i)).c_str()));
    EXPECT_TRUE(event == nullptr || event.get() == job.event.get());
  }
  edits.WaitForReturn();
  inserts.WaitForReturn();
  gate.Open();
  log.WaitFor("event");
  EXPECT_EQ(log.Entries().size(), 2 * kRounds + 1);
}

// A task in a package is renamed while another thread registers its event for the first time.
TEST(LookUp, KeepsUpWithRenamesWhileTheEventComes) {
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    const Job job("event", {{"first", Succeed}, {"second", Succeed}}, Succeed);
    const Call renames([&] {
      for (int64_t number = 0; number < 20; ++number) job[1]->SetNameNumber(number);
    });
    Schedular().RegisterEvent(job.event.get());
    renames.WaitForReturn();
    const TaskPtr renamed(Schedular().FindTask("19"));
    EXPECT_EQ(renamed.get(), job[1]);
    EXPECT_EQ(TaskPtr(Schedular().FindTask("second")), nullptr);
    Schedular().RemoveEvent("event");
  }
}

}  // namespace
