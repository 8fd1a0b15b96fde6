// Another program that works backup_window by messages, as a person would by hand:
//   press STEP...
// click:N presses the control N; grey:N and live:N wait until it is; shows:N:TEXT waits until its
// text has TEXT in it; rows:N:COUNT until the list has as many; close closes the window. Prints
// each step, and what it waits for in vain; ends with 1 then.
#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>

#include <cstdio>
#include <string>

#include "backup_window/ids.h"

namespace {

constexpr int kTries = 600;  // Of a tenth of a second.

bool Holds(HWND window, const std::wstring& step, int id, const std::wstring& wanted) {
  const HWND control = GetDlgItem(window, id);
  if (step == L"grey") return !IsWindowEnabled(control);
  if (step == L"live") return IsWindowEnabled(control) != FALSE;
  if (step == L"rows") {
    return SendMessageW(control, LVM_GETITEMCOUNT, 0, 0) == std::stoi(wanted);
  }
  wchar_t text[512] = {};
  SendMessageTimeoutW(control, WM_GETTEXT, 512, reinterpret_cast<LPARAM>(text), 0, 1000, nullptr);
  return std::wstring(text).find(wanted) != std::wstring::npos;
}

bool Take(HWND window, const std::wstring& argument) {
  const size_t colon = argument.find(L':');
  const size_t second = argument.find(L':', colon + 1);
  const std::wstring step = argument.substr(0, colon);
  if (step == L"close") return PostMessageW(window, WM_CLOSE, 0, 0) != FALSE;
  const int id = std::stoi(argument.substr(colon + 1));
  if (step == L"click") return PostMessageW(GetDlgItem(window, id), BM_CLICK, 0, 0) != FALSE;
  const std::wstring wanted = second == std::wstring::npos ? L"" : argument.substr(second + 1);
  for (int i = 0; i < kTries; ++i, Sleep(100)) {
    if (Holds(window, step, id, wanted)) return true;
  }
  return false;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  HWND window = nullptr;
  for (int i = 0; i < kTries && window == nullptr; ++i, Sleep(100)) {
    window = FindWindowW(backup_window::kWindowClass, nullptr);
  }
  for (int i = 1; i < count; ++i) {
    const bool done = window != nullptr && Take(window, arguments[i]);
    std::printf("%s: %ls\n", done ? "ok" : "in vain", arguments[i]);
    if (!done) return 1;
  }
  return 0;
}
