#include "options.h"

#include <charconv>

namespace backup {

const char kUsage[] =
    "usage: backup [OPTION]... FOLDER\n"
    "       backup [OPTION]... --again\n"
    "       backup --restore BACKUP --to FOLDER\n"
    "Packs each folder in FOLDER into an archive of its own, and checks the archives. A folder "
    "that\n"
    "has not changed since its last backup is left as it is. What can't be read is passed over, "
    "and\n"
    "listed at the end. Empty folders and links are not part of a backup.\n"
    "  --to FOLDER        where the archives go, or the restored files: a new or empty folder\n"
    "  --again            back up the folder of the last time\n"
    "  --restore BACKUP   unpack the archives of a backup, with the names that the files had\n"
    "  --workers N        number of folders that are packed side by side\n"
    "  --exclude LIST     extensions and folders that are left out, as in \";.tmp;build;\"\n"
    "  --settings FILE    settings file (default: in the user's application data)\n"
    "  --history          list the last runs\n"
    "  --help             this text\n"
    "FOLDER, --to, --workers and --exclude are kept in the settings for the next time.\n"
    "Keys while it runs: p pauses, r resumes, c or Ctrl-C cancels.\n"
    "Exit status: 0 all is done, 1 some folders or files are not, 2 wrong usage, 3 nothing could "
    "be\n"
    "done, 130 cancelled.\n";

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
    } else if (argument == "--again") {
      options.again = true;
    } else if (argument == "--restore") {
      options.restore = value();
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
  const int tasks = (options.source ? 1 : 0) + (options.again ? 1 : 0) + (options.restore ? 1 : 0);
  if (options.help || options.history) return options;
  if (tasks != 1) throw UsageError("name one folder to back up, or --again, or --restore");
  if (options.restore && !options.destination) throw UsageError("--restore needs --to");
  return options;
}

}  // namespace backup
