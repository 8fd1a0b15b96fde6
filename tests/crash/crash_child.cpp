// A host that crashes on request: crash_child WAY DIRECTORY LOG [OPTION...]
//
// It installs the report for DIRECTORY and crashes in the given way (faults.h). What it does and
// what its callbacks are told goes line by line into LOG. Options:
//   destroyed     destroys the handle before the crash
//   exiting       sets the host's exit flag before the crash
//   bystander     starts a thread that does nothing, named in the log
//   no-collect, no-notify    installs without that callback
//   second        calls Install again, with another directory and the same callbacks
//   leave-files   the collect callback writes files and leaves a block
//   crash-in-collect         the collect callback crashes too
//   foreign-later sets them after it, before "second"
//   foreign       sets a handler of its own for the signals before it installs the report
//   catch         the host takes care of the fault itself, and the process runs on
#include <temvar/temvar.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "crash/faults.h"
#include "support/child_process.h"

namespace {

std::filesystem::path log_path;
std::vector<std::string> options;
bool exit_flag = false;
std::chrono::steady_clock::time_point fault_time;

bool Has(const char* option) {
  return std::find(options.begin(), options.end(), option) != options.end();
}

void Log(const std::string& line) {
  std::ofstream(log_path, std::ios::app | std::ios::binary) << line << '\n';
}

std::filesystem::path Path(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string Utf8(const TmvWideChar* wide) {
  char* const text = TmvUtilityString()->WideToUtf8(wide);
  const std::string result(text);
  TmvUtilityString()->FreeString(text);
  return result;
}

void OnReport(const TmvWideChar* archive) {
  const auto elapsed = std::chrono::steady_clock::now() - fault_time;
  Log("elapsed " +
      std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()));
  // By now the archive is complete.
  const bool there = std::filesystem::exists(Path(Utf8(archive)));
  Log("report " + Utf8(archive) + (there ? " there" : " missing"));
}

void OnCollect(const TmvWideChar* directory, void** result) {
  Log("collect " + Utf8(directory) + (*result == nullptr ? " null" : " set"));
  if (Has("crash-in-collect")) CrashBy("null-write");
  if (!Has("leave-files")) return;
  const std::filesystem::path folder = Path(Utf8(directory));
  std::filesystem::create_directories(folder / "logs");
  std::ofstream(folder / "logs" / "host.log") << "what the host knows";
  std::ofstream(folder / "old.zip") << "an archive of before";
  *result = std::malloc(64);
}

void Install(const std::string& directory) {
  TMVDbgReport* const report = CreateTmvDbgReport();
  TmvWideChar* const wide = TmvUtilityString()->Utf8ToWide(directory.c_str());
  const ReportCallback notify = Has("no-notify") ? nullptr : OnReport;
  const CollectCallback collect = Has("no-collect") ? nullptr : OnCollect;
  report->Install(wide, notify, collect);
  if (Has("foreign-later")) InstallForeignHandler([](const char* line) { Log(line); });
  if (Has("second")) report->Install(TMV_WIDE("elsewhere/"), notify, collect);
  TmvUtilityString()->FreeString(wide);
  if (Has("destroyed")) DestroyTmvDbgReport(report);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = temvar_test::Utf8Arguments(argc, argv);
  if (arguments.size() < 3) return 2;
  const std::string way = arguments[0];
  log_path = Path(arguments[2]);
  options.assign(arguments.begin() + 3, arguments.end());
  if (Has("foreign")) InstallForeignHandler([](const char* line) { Log(line + std::string(" ")); });
  SetExitProgram(&exit_flag);
  Install(arguments[1]);
  Log("fault " + std::to_string(reinterpret_cast<uintptr_t>(FaultFunction(way))));

  std::thread bystander;
  if (Has("bystander")) {
    bystander = std::thread([] { std::this_thread::sleep_for(std::chrono::minutes(1)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  if (Has("catch")) CatchFaults();
  if (Has("exiting")) exit_flag = true;
  fault_time = std::chrono::steady_clock::now();
  CrashBy(way);
  Log(exit_flag ? "ran on, exiting" : "ran on");
  if (bystander.joinable()) bystander.detach();
  std::_Exit(0);
}
