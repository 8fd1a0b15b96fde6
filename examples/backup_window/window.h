#ifndef EXAMPLES_BACKUP_WINDOW_WINDOW_H_
#define EXAMPLES_BACKUP_WINDOW_WINDOW_H_

#include <windows.h>

#include <filesystem>
#include <string>

#include "ids.h"
#include "lane_list.h"
#include "run.h"
#include "settings.h"

namespace backup_window {

// The window: two folders, four buttons, a bar for the whole, a list of lanes and one of failures.
// It asks the job how far it is ten times a second, and never waits for it: not in a pause, not in
// a cancel, and not when it is closed, which cancels first.
class Window {
 public:
  // Both must outlive the window.
  Window(backup::Settings& settings, HINSTANCE instance);
  ~Window();
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  void Show(int how) const { ShowWindow(window_, how); }
  HWND Handle() const { return window_; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wide, LPARAM narrow);
  LRESULT OnMessage(UINT message, WPARAM wide, LPARAM narrow);

  void MakeControls();
  HWND MakeControl(const wchar_t* kind, const wchar_t* text, DWORD style, int id);
  void Layout();
  void OnCommand(int id);
  void Browse(int id);
  bool OnClose();

  void Start();
  void OnJobEnded();
  void FinishBackUp();
  void Refresh();
  void ShowFailures();
  int WidthOf(const std::wstring& text) const;
  void SetStatus(const std::wstring& text);
  void Enable(int id, bool enabled);
  std::string PathIn(int id) const;

  backup::Settings& settings_;
  HINSTANCE instance_;
  HWND window_ = nullptr;
  HFONT font_ = nullptr;
  int lineHeight_ = 16;
  LaneList lanes_;
  std::filesystem::path source_;
  std::wstring result_ = L"Choose a folder, and where its archives go.";
  std::wstring status_;
  size_t failuresShown_ = 0;
  int widestFailure_ = 0;
  bool isBackingUp_ = false;  // The second of the two jobs.
  bool isClosing_ = false;
  Run run_;  // Last: its end waits for the job.
};

}  // namespace backup_window

#endif  // EXAMPLES_BACKUP_WINDOW_WINDOW_H_
