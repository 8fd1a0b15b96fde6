// A host with a window: backs up each folder of a tree into an archive of its own, as a job with a
// lane for each folder that is paused, resumed and cancelled by buttons.
#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>
#include <objbase.h>

#include <cstdio>
#include <exception>

#include "crash_report.h"
#include "support/terminal.h"
#include "support/text.h"
#include "window.h"

namespace {

namespace fs = std::filesystem;

constexpr wchar_t kTitle[] = L"Backup";
constexpr wchar_t kUsage[] =
    L"backup_window [--settings FILE] [FOLDER]\n\n"
    L"Backs up each folder in FOLDER into an archive of its own. FOLDER and the place of the "
    L"archives are kept in the settings file, by default in your application data.";

struct Arguments {
  fs::path settings;
  std::string source;
  bool help = false;
};

Arguments ReadArguments() {
  const tmv::Text data(TmvUtilitySys()->GetAppDataPath());
  Arguments result;
  result.settings = support::PathFromFolder(data.c_str()) / "temvar-backup.json";
  const std::vector<std::string> arguments = support::Utf8Arguments(0, nullptr);
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--settings" && i + 1 < arguments.size()) {
      result.settings = fs::absolute(support::PathFromUtf8(arguments[++i]));
    } else if (arguments[i].starts_with("-")) {
      result.help = true;
    } else {
      result.source = support::Utf8FromPath(fs::absolute(support::PathFromUtf8(arguments[i])));
    }
  }
  return result;
}

void Tell(const std::string& text) {
  MessageBoxW(nullptr, backup_window::ToWide(text).c_str(), kTitle, MB_ICONWARNING);
}

void RunMessages(HWND window) {
  MSG message = {};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (IsWindow(window) && IsDialogMessageW(window, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

void Run(HINSTANCE instance, int show, const Arguments& arguments) {
  const fs::path folder = arguments.settings.parent_path();
  fs::create_directories(folder);
  backup::WatchForCrashes(arguments.settings, Tell);
  // The digest and archive operations of the library print what they do; nobody else does here.
  _wfreopen((folder / "temvar-backup.log").c_str(), L"w", stdout);

  std::string notice;
  backup::Settings settings(support::Utf8FromPath(arguments.settings), notice);
  if (!notice.empty()) Tell(notice);
  if (!arguments.source.empty()) {
    backup::Options options;
    options.source = arguments.source;
    settings.Apply(options);
  }
  tmv::RunningPool pool(settings.workers());
  backup_window::Window window(settings, instance);
  window.Show(show);
  RunMessages(window.Handle());
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
  try {
    const Arguments arguments = ReadArguments();
    if (arguments.help) {
      MessageBoxW(nullptr, kUsage, kTitle, MB_ICONINFORMATION);
      return 0;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const INITCOMMONCONTROLSEX controls = {sizeof(controls),
                                           ICC_LISTVIEW_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&controls);
    Run(instance, show, arguments);
    CoUninitialize();
    return 0;
  } catch (const std::exception& error) {
    MessageBoxW(nullptr, backup_window::ToWide(error.what()).c_str(), kTitle, MB_ICONERROR);
    return 1;
  }
}
