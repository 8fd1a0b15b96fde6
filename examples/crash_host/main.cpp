// A host of the library: installs the crash report, crashes in the way that the user picks, and
// prints at its next start where the archive lies.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "report_folder.h"
#include "support/terminal.h"
#include "support/text.h"
#include "ways.h"

namespace {

using namespace crash_host;

// The host's exit flag: while it is true no report is made. It has to live as long as the process.
bool exiting = false;

void PrintUsage() {
  std::cout << "crash_host [--folder FOLDER] [WAY]\n\n"
               "Crashes in the given way, or asks for one, and leaves a report below FOLDER, by\n"
               "default the folder crash_host for temporary files. The next start says where it\n"
               "lies. Ways:\n";
  for (const Way& way : AllWays()) std::cout << "  " << way.name << "\t" << way.text << '\n';
}

const Way* AskForWay() {
  for (size_t i = 0; i < AllWays().size(); ++i) {
    std::cout << "  " << i + 1 << "  " << AllWays()[i].text << '\n';
  }
  std::cout << "How shall it crash (Enter: not at all)? " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  for (size_t i = 0; i < AllWays().size(); ++i) {
    if (answer == std::to_string(i + 1)) return &AllWays()[i];
  }
  return FindWay(answer);
}

int Run(const std::vector<std::string>& arguments) {
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "crash_host";
  const Way* way = nullptr;
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--folder" && i + 1 < arguments.size()) {
      folder = support::PathFromUtf8(arguments[++i]);
    } else if ((way = FindWay(arguments[i])) == nullptr) {
      PrintUsage();
      return arguments[i] == "--help" ? 0 : 2;
    }
  }

  std::string archive;
  try {
    archive = PrepareReports(folder);
  } catch (const std::filesystem::filesystem_error& error) {
    std::cerr << "crash_host: " << error.what() << '\n';
    return 1;
  }
  if (!archive.empty()) std::cout << "The last run crashed. Its report: " << archive << '\n';
  InstallReports(&exiting);

  if (way == nullptr) way = AskForWay();
  if (way != nullptr) {
    NoteWork(way->text);
    std::cout << "Crashing: " << way->text << std::endl;
    way->crash();
    std::cout << "Still alive\n";
  }
  // From here on a crash would be one of the way out, of which nobody wants to read.
  exiting = true;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // An exception that gets out of here is a crash, and reported as such: nothing catches it.
  return Run(support::Utf8Arguments(argc, argv));
}
