#include "report_folder.h"

#include <temvar/handles.h>

#include <fstream>

#include "support/text.h"

namespace crash_host {
namespace {

// Ready before a crash: a callback had better do little.
std::filesystem::path dump_folder;
std::filesystem::path note_file;    // For the next run: where the archive lies.
std::filesystem::path host_report;  // What this host adds to a report.
std::string work = "starting";

// Before the archive is made. There is nothing to hand back: `result` stays null.
void AddHostReport(const TmvWideChar*, void**) {
  std::ofstream(host_report) << "The host was at work on: " << work << '\n';
}

// Runs last, in a process that is about to end.
void NoteArchive(const TmvWideChar* archive) {
  std::ofstream(note_file) << support::Utf8FromPath(std::filesystem::path(archive)) << '\n';
}

}  // namespace

std::string PrepareReports(const std::filesystem::path& folder) {
  // With a separator at its end, since the names of dumps are put right after it.
  dump_folder = std::filesystem::absolute(folder) / "dumps" / "";
  note_file = std::filesystem::absolute(folder) / "last-report.txt";
  host_report = dump_folder / "host.txt";
  std::filesystem::create_directories(dump_folder);
  // Dumps hold what was in memory: they are closed to everybody else. Changing nothing still throws
  // when the folder is somebody else's, who could put another one in the place of `dumps`.
  using std::filesystem::perms;
  std::filesystem::permissions(dump_folder, perms::owner_all);
  std::filesystem::permissions(folder, perms::none, std::filesystem::perm_options::add);

  std::string archive;
  std::getline(std::ifstream(note_file), archive);
  std::filesystem::remove(note_file);
  return archive;
}

void InstallReports(bool* exiting) {
  SetExitProgram(exiting);
  // UTF-16 on every system, as the library takes it. The handlers outlive the handle.
  const tmv::WideText folder(
      TmvUtilityString()->Utf8ToWide(support::Utf8FromPath(dump_folder).c_str()));
  tmv::MakeDbgReport()->Install(folder.c_str(), NoteArchive, AddHostReport);
}

void NoteWork(const std::string& text) { work = text; }

}  // namespace crash_host
