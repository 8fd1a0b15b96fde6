#include "options.h"

#include <charconv>

namespace backup {

const char kUsage[] =
    "usage: backup [OPTION]... [FOLDER]\n"
    "Packs each folder in FOLDER into an archive of its own, and checks the archives. A folder "
    "whose\n"
    "files have not changed since its last backup is passed over.\n"
    "  --to FOLDER        where the archives go\n"
    "  --workers N        number of folders that are packed side by side\n"
    "  --exclude LIST     extensions and folders that are left out, as in \";.tmp;build;\"\n"
    "  --settings FILE    settings file (default: in the user's application data)\n"
    "  --history          list the last runs\n"
    "FOLDER and the first three options are kept in the settings for the next time.\n"
    "Keys while it runs: p pauses, r resumes, c or Ctrl-C cancels.\n"
    "Exit status: 0 all is backed up, 1 some folders are not, 2 wrong usage, 3 no backup could be\n"
    "made, 130 cancelled.\n";

namespace {

int32_t ParseWorkers(const std::string& text) {
  int32_t workers = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, workers);
  if (error != std::errc() || rest != end || workers < 1 || workers > kMostWorkers) {
    throw UsageError("--workers takes a number from 1 to " + std::to_string(kMostWorkers));
  }
  return workers;
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const auto value = [&]() -> const std::string& {
      if (++i == arguments.size()) throw UsageError(argument + " takes a value");
      return arguments[i];
    };
    if (argument == "--to") {
      options.destination = value();
    } else if (argument == "--workers") {
      options.workers = ParseWorkers(value());
    } else if (argument == "--exclude") {
      options.exclusions = value();
    } else if (argument == "--settings") {
      options.settingsFile = value();
    } else if (argument == "--history") {
      options.history = true;
    } else if (argument == "--help" || argument == "-h") {
      options.help = true;
    } else if (!argument.empty() && argument[0] == '-') {
      throw UsageError("unknown option \"" + argument + "\"");
    } else if (options.source) {
      throw UsageError("one folder at a time");
    } else {
      options.source = argument;
    }
  }
  return options;
}

}  // namespace backup
