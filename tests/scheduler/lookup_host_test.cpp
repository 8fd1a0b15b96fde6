// Look-ups by name against the documented walk, over random edits:
//   TEMVAR_LOOKUP_EDITS=5000000 bin/lookup_host_test
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/host_job.h"

namespace {

using namespace test;

// What the test knows of a task or a package.
struct Node {
  TaskPtr task;
  RkTaskPackage* package = nullptr;  // The same object, if it is one.
  std::string name = "0";
  bool isWalked = false;          // Its kind is that of packages.
  std::vector<Node*> children{};  // Null where the package has a null.
  uint32_t position = 0;
};

struct Event {
  EventPtr event;
  std::string name;
  std::vector<Node*> packages{};
};

struct Found {
  Event* event = nullptr;
  Node* package = nullptr;
  Node* task = nullptr;
};

class Forest {
 public:
  explicit Forest(uint64_t seed) : random_(seed) {
    for (size_t i = 0; i < kTasks; ++i) nodes_.push_back({MakeTask("0")});
    for (size_t i = 0; i < kPackages; ++i) {
      RkTaskPackage* const package = CreateRkTaskPackage();
      nodes_.push_back({TaskPtr(package), package, "0", true});
    }
    for (Event& event : events_) event = {EventPtr(CreateRkTaskEvent()), "0"};
  }

  ~Forest() {
    while (!registry_.empty()) Remove(registry_.begin()->first);
    Pool().RemoveQueued("");
  }

  void Edit() {
    Node& node = nodes_[Any(nodes_.size())];
    Event& event = events_[Any(events_.size())];
    const size_t kind = Any(60);
    if (kind < 10) return node.task->SetName((node.name = AnyName()).c_str());
    if (kind < 15) return event.event->SetName((event.name = AnyName()).c_str());
    if (kind < 20) return Register(event);
    if (kind < 25) return Remove(AnyName());
    if (kind < 30) return Report(node);
    if (kind < 35) return InsertAfter(node, nodes_[Any(kTasks)]);
    if (kind < 59) return Insert(AnyPackage());
    node.isWalked = !node.isWalked;
    node.task->SetType(node.isWalked ? kTaskTypePackage : kTaskTypePlain);
  }

  void Check() {
    const std::string name = AnyName();
    const Found found = Walk(name);
    const auto taskOf = [](const auto* owner) { return owner ? owner->task.get() : nullptr; };
    const TaskPtr task(Schedular().FindTask(name.c_str()));
    const TaskPtr event(Schedular().FindEventOfTask(name.c_str()));
    const PackagePtr package(Schedular().FindPackageOfTask(name.c_str()));
    ASSERT_EQ(task.get(), taskOf(found.task)) << name;
    ASSERT_EQ(package.get(), found.package ? found.package->package : nullptr) << name;
    ASSERT_EQ(event.get(), found.event ? found.event->event.get() : nullptr) << name;
    Node& listed = AnyPackage();
    ASSERT_EQ(listed.package->GetCurrentIndex(), listed.position);
    const Event* const listing = Listing(listed);
    ASSERT_EQ(TaskPtr(Schedular().FindEventOfPackage(listed.task.get())).get(),
              listing ? listing->event.get() : nullptr);
  }

 private:
  static constexpr size_t kTasks = 40;
  static constexpr size_t kPackages = 12;

  size_t Any(size_t count) { return static_cast<size_t>(random_() % count); }
  // Names with few and with many holders, and such as are nobody's.
  std::string AnyName() { return std::to_string(Any(2) == 0 ? Any(4) : Any(80)); }
  Node& AnyPackage() { return nodes_[kTasks + Any(kPackages)]; }

  // A null, a task, or a package that is below this one in an order that keeps them free of cycles.
  Node* AnyChildFor(const Node& package) {
    if (Any(8) == 0) return nullptr;
    const auto below = static_cast<size_t>(&package - &nodes_[kTasks]);
    return &nodes_[Any(8) == 0 && below > 0 ? kTasks + Any(below) : Any(kTasks)];
  }

  void Insert(Node& package) {
    if (Any(4) == 0) {
      Event& event = events_[Any(events_.size())];
      event.packages.push_back(&package);
      return event.event->AddPackage(package.task.get());
    }
    if (package.children.size() > 12) return;
    Node* const child = AnyChildFor(package);
    const size_t index = Any(package.children.size() + 1);
    package.package->InsertTask(child == nullptr ? nullptr : child->task.get(),
                                static_cast<uint32_t>(index));
    package.children.insert(package.children.begin() + static_cast<std::ptrdiff_t>(index), child);
  }

  // After the first child that is this one, in the package that its name finds.
  void InsertAfter(Node& child, Node& existing) {
    if (child.package != nullptr) return;
    Node* const package = Walk(existing.name).package;
    const bool isDone = Schedular().InsertTaskAfter(child.task.get(), existing.task.get());
    std::vector<Node*> none;
    std::vector<Node*>& children = package == nullptr ? none : package->children;
    const auto hit = std::find(children.begin(), children.end(), &existing);
    EXPECT_EQ(isDone, hit != children.end());
    if (isDone) children.insert(hit + 1, &child);
  }

  // The package that the name finds moves on by one, to its last child at most.
  void Report(Node& node) {
    Node* const package = node.isWalked ? nullptr : Walk(node.name).package;
    node.task->SetState(kTaskStateActive);
    if (!node.isWalked) node.task->ReportState(node.task.get(), kTaskStateSucceeded);
    if (package != nullptr && package->position + 1 < package->children.size()) {
      ++package->position;
    }
  }

  void Register(Event& event) {
    Event*& entry = registry_[event.name];
    Event* const old = std::exchange(entry, &event);
    Schedular().RegisterEvent(event.event.get());
    // The reference on what is overwritten stays taken.
    if (old != nullptr) DestroyRkTask(old->event.get());
  }

  void Remove(std::string name) {
    Schedular().RemoveEvent(name.c_str());
    registry_.erase(name);
  }

  Found Walk(const std::string& name) const {
    for (const auto& [key, event] : registry_) {
      for (Node* package : event->packages) {
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

  const Event* Listing(const Node& package) const {
    for (const auto& [key, event] : registry_) {
      for (const Node* entry : event->packages) {
        if (entry == &package) return event;
      }
    }
    return nullptr;
  }

  std::mt19937_64 random_;
  std::vector<Node> nodes_;
  std::array<Event, 4> events_;
  std::map<std::string, Event*> registry_;
};

TEST(LookUp, GivesTheFirstMatchOfTheDocumentedWalk) {
  constexpr long kEditsOfAForest = 200;
  const char* const wanted = std::getenv("TEMVAR_LOOKUP_EDITS");
  const long edits = wanted == nullptr ? 20'000 : std::atol(wanted);
  for (long seed = 0; seed * kEditsOfAForest < edits && !HasFailure(); ++seed) {
    SCOPED_TRACE("forest " + std::to_string(seed));
    Forest forest(static_cast<uint64_t>(seed));
    for (long i = 0; i < kEditsOfAForest && !HasFatalFailure(); ++i) {
      forest.Edit();
      forest.Check();
    }
  }
}

// Edits through the package's own interface and renames on one thread, look-ups on another, while
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
      job.package->InsertTask(task.get(), job.package->GetCount());
      task->SetName(("added" + std::to_string(i)).c_str());
    }
  });
  for (size_t i = 0; i < kRounds; ++i) {
    const TaskPtr event(Schedular().FindEventOfTask(("added" + std::to_string(i)).c_str()));
    EXPECT_TRUE(event == nullptr || event.get() == job.event.get());
  }
  edits.WaitForReturn();
  gate.Open();
  log.WaitFor("event");
  EXPECT_EQ(log.Entries().size(), kRounds + 1);
}

}  // namespace
