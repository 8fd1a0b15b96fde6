// Processor time of a pool that has nothing to do, and of one whose workers are all busy while work
// waits:
//   bench_idle [SECONDS]
// The functions of the busy pool sleep, so that only the pool's own work is measured.
#include <temvar/temvar.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <thread>

#include <temvar/handles.h>

namespace {

std::chrono::seconds length{10};

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

template <typename Work>
void Measure(const char* what, Work work) {
  const double before = ProcessorSeconds();
  work();
  std::cout << what << ": " << (ProcessorSeconds() - before) * 1000 << " ms of processor time in "
            << length.count() << " s" << std::endl;
}

void Sleep(RkTask*, RkTaskData*) { std::this_thread::sleep_for(length); }

// Two functions that run, and eight more that wait and are dropped by Stop.
void KeepBusy() {
  const tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  func->SetCallback(Sleep, nullptr);
  for (int i = 0; i < 10; ++i) TmvTaskPool()->AddFunc(func);
  std::this_thread::sleep_for(length - std::chrono::milliseconds(100));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) length = std::chrono::seconds(std::atoi(argv[1]));
  const tmv::RunningPool pool(2);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  Measure("idle pool", [] { std::this_thread::sleep_for(length); });
  Measure("busy pool", KeepBusy);
  return 0;
}
