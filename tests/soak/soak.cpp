// A randomised run of the scheduler through its exports:
//   soak SEED SECONDS [WORKERS [DRIVERS]]
// Several threads make events and pause, resume, cancel, remove, edit and look up each other's. The
// events themselves check what is promised: the order inside a package, one end for each event,
// states, look-ups. At the end Stop must return and everything must have been released once. A
// watchdog fails with a message where something hangs.
#include <cstdlib>
#include <iostream>
#include <thread>
#include <vector>

#include "driver.h"
#include "model.h"
#include "watchdog.h"

namespace {

using namespace soak;

// Far above what a loaded machine with a sanitizer needs for one operation.
constexpr std::chrono::seconds kPatience{60};

uint64_t Argument(int argc, char** argv, int index, uint64_t other) {
  return argc > index ? std::strtoull(argv[index], nullptr, 10) : other;
}

void RunDrivers(Stage& stage) {
  std::vector<std::thread> threads;
  for (Driver& driver : stage.drivers) threads.emplace_back(&Driver::Run, &driver);
  for (std::thread& thread : threads) thread.join();
}

void CheckBalance() {
  const auto check = [](const char* what, int64_t count) {
    if (count != 0) Fail(std::to_string(count) + " " + what + " were not released");
  };
  check("payloads", Alive().payloads);
  check("events", Alive().events);
  check("host functions", Alive().hostFuncs);
  check("registered events", static_cast<int64_t>(TmvTaskSchedular()->GetEventCount()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: soak SEED SECONDS [WORKERS [DRIVERS]]\n";
    return 2;
  }
  const uint64_t seed = Argument(argc, argv, 1, 1);
  const uint64_t seconds = Argument(argc, argv, 2, 1);
  const auto workers = static_cast<uint32_t>(Argument(argc, argv, 3, 1 + seed % 4));
  const uint64_t drivers = Argument(argc, argv, 4, 4);

  Watchdog watchdog(kPatience);
  Stage stage;
  stage.end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  stage.cutOff = seed % 2 == 1;
  stage.bell = tmv::Event::Adopt(CreateRkTaskEvent());
  stage.bell->SetName("bell");
  TmvTaskSchedular()->RegisterEvent(stage.bell);
  for (size_t i = 0; i < drivers; ++i) {
    stage.drivers.emplace_back(stage, i, seed * 1000 + i,
                               watchdog.Watch("driver " + std::to_string(i)));
  }

  Activity& self = watchdog.Watch("main");
  TmvTaskPool()->Start(workers);
  self.Begin("waits for the drivers", true);
  RunDrivers(stage);
  {
    const Doing doing(self, "Stop", "");
    TmvTaskPool()->Stop();
  }
  for (Driver& driver : stage.drivers) driver.LetGo();
  TmvTaskSchedular()->RemoveEvent("bell");
  CheckBalance();
  std::cout << "seed " << seed << ", " << seconds << " s: " << Count().events << " events, "
            << Count().tasks << " tasks; all promises kept" << std::endl;
  return 0;
}
