// A host that crashes on request: crash_child WAY DIRECTORY LOG [OPTION...]
//
// It loads the library, installs the report for DIRECTORY and crashes in the given way (faults.h).
// What it does and what its callbacks are given goes line by line into LOG, without the heap, which
// may be out of use. Options, and those of faults_posix.cpp:
//   destroyed     destroys the handle before the crash
//   unloaded      unloads the library before the crash
//   exiting       sets the host's exit flag before the crash
//   bystander     starts a thread that does nothing
//   on-thread     crashes on a thread of the host; with "signals-blocked" one that blocks them
//   no-collect, no-notify    installs without that callback
//   second        calls Install again, with another directory and the same callbacks
//   leave-files   the collect callback writes files and leaves a block
//   crash-in-collect, throw-in-collect, fork-in-collect    what the collect callback does too;
//                 the fork is another thread's
//   caught        the host takes care of the fault itself, and the process runs on
//   probe         the host takes care of a fault while its exit flag is set, and crashes then
#include <temvar/temvar.h>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

#include "crash/faults.h"
#include "support/child_process.h"
#include "support/dynamic_library.h"
#include "support/work_folder.h"

namespace {

// Loaded by hand, as a plug-in does: nothing of it is there before main, its thread-locals are not
// in the program's own block, and it may be unloaded.
void* library = nullptr;

std::filebuf logFile;
std::atomic_flag logInUse;
std::vector<std::string> options;
bool exitFlag = false;
std::atomic<int> collects{0};
std::atomic<bool> forkWanted{false};
std::chrono::steady_clock::time_point faultTime;

bool Has(const char* option) {
  return std::find(options.begin(), options.end(), option) != options.end();
}

void Log(const char* line) {
  char text[2048];
  const int length = std::snprintf(text, sizeof(text), "%s\n", line);
  while (logInUse.test_and_set()) {
  }
  logFile.sputn(text, length);
  logFile.pubsync();
  logInUse.clear();
}

// The text as UTF-8; what is plain is converted by hand.
struct Narrow {
  explicit Narrow(const TmvWideChar* wide) {
    for (; wide[length] != 0 && plain; ++length) {
      text[length] = static_cast<char>(wide[length]);
      plain = wide[length] < 0x80;
    }
    if (plain) return;
    char* const converted = TmvUtilityString()->WideToUtf8(wide);
    std::strcpy(text, converted);
    TmvUtilityString()->FreeString(converted);
  }
  char text[1024] = {};
  size_t length = 0;
  bool plain = true;
};

void OnReport(const TmvWideChar* archive) {
  const auto elapsed = std::chrono::steady_clock::now() - faultTime;
  char line[2048];
  std::snprintf(
      line, sizeof(line), "elapsed %ld",
      static_cast<long>(std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()));
  Log(line);
  // By now the archive is complete.
  const Narrow path(archive);
  const bool isThere =
      path.plain ? access(path.text, 0) == 0 : std::filesystem::exists(test::FromUtf8(path.text));
  std::snprintf(line, sizeof(line), "report %s%s", path.text, isThere ? " there" : " missing");
  Log(line);
}

void LeaveFiles(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder / "logs");
  std::ofstream(folder / "logs" / "host.log") << "what the host knows";
  std::ofstream(folder / "old.zip") << "an archive of before";
}

void OnCollect(const TmvWideChar* directory, void** result) {
  char line[2048];
  std::snprintf(line, sizeof(line), "collect %s%s", Narrow(directory).text,
                *result == nullptr ? " null" : " set");
  Log(line);
  ++collects;
  if (Has("crash-in-collect")) CrashBy("null-write");
  if (Has("throw-in-collect")) throw std::runtime_error("out of a callback");
  if (Has("fork-in-collect") && !forkWanted.exchange(true)) {
    while (forkWanted.load()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (!Has("leave-files")) return;
  LeaveFiles(test::FromUtf8(Narrow(directory).text));
  *result = std::malloc(64);
}

void Install(const std::string& directory) {
  TMVDbgReport* const report = CreateTmvDbgReport();
  TmvWideChar* const wide = TmvUtilityString()->Utf8ToWide(directory.c_str());
  const ReportCallback notify = Has("no-notify") ? nullptr : OnReport;
  const CollectCallback collect = Has("no-collect") ? nullptr : OnCollect;
  report->Install(wide, notify, collect);
  for (const std::string& option : options) SetUp(option, true, Log);
  if (Has("second")) report->Install(TMV_WIDE("elsewhere/"), notify, collect);
  TmvUtilityString()->FreeString(wide);
  if (Has("destroyed")) DestroyTmvDbgReport(report);
  for (int i = 0; i < 5 && Has("unloaded"); ++i) test::Unload(library);
}

void Crash(const std::string& way) {
  if (Has("caught")) {
    RunCaught(way);
  } else if (Has("on-thread")) {
    std::thread(CrashBy, way).join();
  } else {
    CrashBy(way);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = test::Utf8Arguments(argc, argv);
  if (arguments.size() < 3) return 2;
  const std::string& way = arguments[0];
  logFile.pubsetbuf(nullptr, 0);
  logFile.open(test::FromUtf8(arguments[2]), std::ios::out | std::ios::app | std::ios::binary);
  options.assign(arguments.begin() + 3, arguments.end());
  if (Has("caught") || Has("probe")) InstallCatcher();
  for (const std::string& option : options) SetUp(option, false, Log);
  library = test::Load((test::ProgramFolder() / TEMVAR_LIBRARY_NAME).string().c_str());
  tmv::Load([](const char* name) { return test::Find(library, name); });
  SetExitProgram(&exitFlag);
  Install(arguments[1]);
  Log(("fault " + std::to_string(reinterpret_cast<uintptr_t>(FaultFunction(way)))).c_str());

  if (Has("bystander") || Has("fork-in-collect")) {
    std::thread([] {
      while (!forkWanted.load()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      ForkAndCrash();
      forkWanted.store(false);
      std::this_thread::sleep_for(std::chrono::minutes(1));
    }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  if (Has("probe")) {
    exitFlag = true;
    RunCaught("null-write");
    exitFlag = false;
  }
  if (Has("exiting")) exitFlag = true;
  faultTime = std::chrono::steady_clock::now();
  Crash(way);
  Log(exitFlag ? "ran on, exiting" : "ran on");
  std::_Exit(0);
}
