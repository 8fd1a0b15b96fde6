#include "window.h"

#include <shlobj.h>

#include <algorithm>

#include "support/text.h"
#include "table.h"

namespace backup_window {

namespace {

constexpr UINT kJobEnded = WM_APP + 1;
constexpr UINT_PTR kTimer = 1;
constexpr UINT kRefreshMs = 100;
constexpr int kSteps = 1000;  // Of the bar for the whole.

std::string ToUtf8(const std::wstring& text) {
  return tmv::Text(TmvUtilityString()->WideToUtf8(text.c_str())).c_str();
}

std::wstring TextOf(HWND control) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(control)), L'\0');
  GetWindowTextW(control, text.data(), static_cast<int>(text.size()) + 1);
  return text;
}

const wchar_t* StateWord(tmv::JobState state) {
  switch (state) {
    case tmv::JobState::kPausing:
      return L"Pausing: each folder stops after the file at hand";
    case tmv::JobState::kPaused:
      return L"Paused";
    case tmv::JobState::kCancelling:
      return L"Cancelling: each folder stops after the file at hand";
    default:
      return L"Running";
  }
}

HFONT MessageFont() {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof(metrics);
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
  return CreateFontIndirectW(&metrics.lfMessageFont);
}

}  // namespace

Window::Window(backup::Settings& settings, HINSTANCE instance)
    : settings_(settings),
      instance_(instance),
      run_([this] { PostMessageW(window_, kJobEnded, 0, 0); }) {
  WNDCLASSEXW kind = {};
  kind.cbSize = sizeof(kind);
  kind.lpfnWndProc = Procedure;
  kind.hInstance = instance;
  kind.hCursor = LoadCursorW(nullptr, reinterpret_cast<const wchar_t*>(IDC_ARROW));
  kind.hIcon = LoadIconW(nullptr, reinterpret_cast<const wchar_t*>(IDI_APPLICATION));
  kind.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  kind.lpszClassName = kWindowClass;
  RegisterClassExW(&kind);
  font_ = MessageFont();
  CreateWindowExW(0, kWindowClass, L"Backup", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                  CW_USEDEFAULT, 720, 460, nullptr, nullptr, instance, this);
  SetTimer(window_, kTimer, kRefreshMs, nullptr);
}

Window::~Window() {
  if (window_ != nullptr) DestroyWindow(window_);
  DeleteObject(font_);
}

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wide, LPARAM narrow) {
  if (message == WM_NCCREATE) {
    auto* const self =
        static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(narrow)->lpCreateParams);
    self->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  }
  auto* const self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wide, narrow);
  return self->OnMessage(message, wide, narrow);
}

LRESULT Window::OnMessage(UINT message, WPARAM wide, LPARAM narrow) {
  switch (message) {
    case WM_CREATE:
      MakeControls();
      Refresh();
      return 0;
    case DM_GETDEFID:  // For Enter.
      return MAKELRESULT(kStart, DC_HASDEFID);
    case WM_SIZE:
      Layout();
      return 0;
    case WM_GETMINMAXINFO:
      reinterpret_cast<MINMAXINFO*>(narrow)->ptMinTrackSize = {480, 360};
      return 0;
    case WM_COMMAND:
      if (HIWORD(wide) == BN_CLICKED) OnCommand(LOWORD(wide));
      return 0;
    case WM_NOTIFY:
      return lanes_.OnNotify(reinterpret_cast<NMHDR*>(narrow));
    case WM_TIMER:
      Refresh();
      return 0;
    case kJobEnded:
      OnJobEnded();
      return 0;
    case WM_CLOSE:
      if (OnClose()) DestroyWindow(window_);
      return 0;
    case WM_DESTROY:
      KillTimer(window_, kTimer);
      PostQuitMessage(0);
      return 0;
    case WM_NCDESTROY:
      SetWindowLongPtrW(std::exchange(window_, nullptr), GWLP_USERDATA, 0);
      return 0;
    default:
      return DefWindowProcW(window_, message, wide, narrow);
  }
}

HWND Window::MakeControl(const wchar_t* kind, const wchar_t* text, DWORD style, int id) {
  const bool hasEdge = lstrcmpiW(kind, WC_EDITW) == 0 || lstrcmpiW(kind, WC_LISTBOXW) == 0;
  return CreateWindowExW(hasEdge ? WS_EX_CLIENTEDGE : 0, kind, text, WS_CHILD | WS_VISIBLE | style,
                         0, 0, 0, 0, window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                         instance_, nullptr);
}

void Window::MakeControls() {
  MakeControl(WC_STATICW, L"&Folder", SS_CENTERIMAGE, -1);
  MakeControl(WC_EDITW, ToWide(settings_.source()).c_str(), WS_TABSTOP | ES_AUTOHSCROLL, kSource);
  MakeControl(WC_BUTTONW, L"...", WS_TABSTOP, kBrowseSource);
  MakeControl(WC_STATICW, L"&Archives", SS_CENTERIMAGE, -1);
  MakeControl(WC_EDITW, ToWide(settings_.destination()).c_str(), WS_TABSTOP | ES_AUTOHSCROLL,
              kDestination);
  MakeControl(WC_BUTTONW, L"...", WS_TABSTOP, kBrowseDestination);
  MakeControl(WC_BUTTONW, L"&Start", WS_TABSTOP | BS_DEFPUSHBUTTON, kStart);
  MakeControl(WC_BUTTONW, L"&Pause", WS_TABSTOP, kPause);
  MakeControl(WC_BUTTONW, L"&Resume", WS_TABSTOP, kResume);
  MakeControl(WC_BUTTONW, L"&Cancel", WS_TABSTOP, kCancel);
  const HWND total = MakeControl(PROGRESS_CLASSW, L"", 0, kTotal);
  SendMessageW(total, PBM_SETRANGE32, 0, kSteps);
  MakeControl(WC_STATICW, L"", SS_CENTERIMAGE | SS_ENDELLIPSIS | SS_NOPREFIX, kStatus);
  lanes_.Create(window_, kLanes);
  MakeControl(WC_LISTBOXW, L"",
              WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOINTEGRALHEIGHT | LBS_NOSEL, kFailures);

  const HDC context = GetDC(window_);
  const HGDIOBJ before = SelectObject(context, font_);
  TEXTMETRICW metrics = {};
  GetTextMetricsW(context, &metrics);
  lineHeight_ = metrics.tmHeight;
  SelectObject(context, before);
  ReleaseDC(window_, context);
  for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT)) {
    SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
  }
}

// Every measure comes from the height of the font, so that it fits any screen.
void Window::Layout() {
  RECT area = {};
  GetClientRect(window_, &area);
  const int gap = lineHeight_ / 2;
  const int row = lineHeight_ * 7 / 4;
  const int label = lineHeight_ * 5;
  const int button = lineHeight_ * 6;
  const int width = static_cast<int>(area.right) - 2 * gap;
  int y = gap;
  HWND child = GetWindow(window_, GW_CHILD);
  const auto place = [&](int x, int w, int h) {
    MoveWindow(child, x, y, w, h, TRUE);
    child = GetWindow(child, GW_HWNDNEXT);
  };
  for (int line = 0; line < 2; ++line) {
    place(gap, label, row);
    place(gap + label, width - label - 2 * row - gap, row);
    place(gap + width - 2 * row, 2 * row, row);
    y += row + gap;
  }
  for (int i = 0; i < 4; ++i) place(gap + i * (button + gap), button, row);
  const int left = gap + 4 * (button + gap);
  y += row / 4;
  place(left, gap + width - left, row / 2);
  y += row - row / 4 + gap;
  place(gap, width, lineHeight_ + gap);
  y += lineHeight_ + 2 * gap;
  const int rest = static_cast<int>(area.bottom) - y - gap;
  const int failures = std::max(lineHeight_ * 4, rest / 4);
  place(gap, width, rest - failures - gap);
  y += rest - failures;
  place(gap, width, failures);
  lanes_.Fit(lineHeight_);
}

void Window::OnCommand(int id) {
  // A button can be pressed by a message although it is grey.
  if (!IsWindowEnabled(GetDlgItem(window_, id))) return;
  switch (id) {
    case kBrowseSource:
    case kBrowseDestination:
      Browse(id);
      break;
    case kStart:
      Start();
      break;
    case kPause:
      run_.Pause();
      break;
    case kResume:
      run_.Resume();
      break;
    case kCancel:
      run_.Cancel();
      break;
    default:
      return;
  }
  if (IsWindow(window_)) Refresh();
}

void Window::Browse(int id) {
  BROWSEINFOW info = {};
  info.hwndOwner = window_;
  info.lpszTitle = id == kBrowseSource ? L"The folder to back up" : L"Where the archives go";
  info.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
  PIDLIST_ABSOLUTE chosen = SHBrowseForFolderW(&info);
  if (chosen == nullptr) return;
  wchar_t path[MAX_PATH] = {};
  if (SHGetPathFromIDListW(chosen, path)) {
    SetDlgItemTextW(window_, id == kBrowseSource ? kSource : kDestination, path);
  }
  CoTaskMemFree(chosen);
}

// True if the window may go now. Else it goes when the job has ended.
bool Window::OnClose() {
  const tmv::JobState state = run_.State();
  if (state == tmv::JobState::kNew || HasEnded(state)) return true;
  isClosing_ = true;
  run_.Cancel();
  return false;
}

std::string Window::PathIn(int id) const { return ToUtf8(TextOf(GetDlgItem(window_, id))); }

void Window::Start() {
  backup::Options options;
  options.source = PathIn(kSource);
  options.destination = PathIn(kDestination);
  if (options.source->empty() || options.destination->empty()) return;
  settings_.Apply(options);
  source_ = support::PathFromUtf8(*options.source);
  isBackingUp_ = false;
  failuresShown_ = 0;
  widestFailure_ = 0;
  SendDlgItemMessageW(window_, kFailures, LB_RESETCONTENT, 0, 0);
  lanes_.SetLanes({});
  run_.List(source_, support::PathFromUtf8(*options.destination), settings_.exclusions());
}

void Window::OnJobEnded() {
  if (!isBackingUp_ && !isClosing_ && run_.State() == tmv::JobState::kSucceeded) {
    isBackingUp_ = true;
    settings_.Recall(source_, run_.Folders());
    run_.BackUp();
    lanes_.SetLanes(run_.Lanes());
  } else if (isBackingUp_) {
    FinishBackUp();
  } else {
    const bool cancelled = run_.State() == tmv::JobState::kCancelled;
    result_ = cancelled ? L"Cancelled" : L"The folder can't be backed up";
  }
  if (isClosing_) {
    DestroyWindow(window_);
  } else {
    Refresh();
  }
}

void Window::FinishBackUp() {
  backup::NoteFailures(run_.Failures(), run_.Folders());
  const std::string summary = backup::Summary(backup::Count(run_.Folders()));
  result_ = ToWide(summary);
  if (run_.State() == tmv::JobState::kCancelled) result_ = L"Cancelled: " + result_;
  if (!settings_.Remember(source_, run_.Folders(), summary)) {
    result_ += L"; the settings can't be saved";
  }
}

// Runs ten times a second: what has not changed is not drawn.
void Window::Refresh() {
  const tmv::JobState state = run_.State();
  const bool isOver = state == tmv::JobState::kNew || HasEnded(state);
  const bool isHeld = state == tmv::JobState::kPaused || state == tmv::JobState::kPausing;
  for (const int id : {kSource, kBrowseSource, kDestination, kBrowseDestination, kStart}) {
    Enable(id, isOver);
  }
  Enable(kPause, state == tmv::JobState::kRunning);
  Enable(kResume, isHeld);
  Enable(kCancel, isHeld || state == tmv::JobState::kRunning);

  const double fraction = run_.Fraction();
  SendDlgItemMessageW(window_, kTotal, PBM_SETPOS, static_cast<WPARAM>(fraction * kSteps), 0);
  if (isOver) {
    SetStatus(result_);
  } else {
    const std::string amount = ", " + std::to_string(static_cast<int>(fraction * 100)) + " % of " +
                               support::FormatBytes(run_.Progress().total / 3) + " in " +
                               std::to_string(run_.Lanes().size()) + " folders";
    SetStatus(StateWord(state) + (isBackingUp_ ? ToWide(amount) : L": looking for folders"));
  }
  lanes_.Refresh();
  ShowFailures();
}

void Window::ShowFailures() {
  std::vector<std::wstring> lines;
  for (const tmv::JobFailure& failure : run_.Failures()) {
    lines.push_back(ToWide(failure.lane + ": " + failure.Message()));
  }
  if (HasEnded(run_.State())) {
    for (const backup::Folder& folder : run_.Folders()) {
      for (const backup::PassedOver& item : folder.passedOver) {
        lines.push_back(ToWide("passed over: " + item.path + ": " + item.reason));
      }
    }
  }
  for (; failuresShown_ < lines.size(); ++failuresShown_) {
    const std::wstring& line = lines[failuresShown_];
    SendDlgItemMessageW(window_, kFailures, LB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(line.c_str()));
    widestFailure_ = std::max(widestFailure_, WidthOf(line));
    SendDlgItemMessageW(window_, kFailures, LB_SETHORIZONTALEXTENT,
                        static_cast<WPARAM>(widestFailure_), 0);
  }
}

int Window::WidthOf(const std::wstring& text) const {
  const HDC context = GetDC(window_);
  const HGDIOBJ before = SelectObject(context, font_);
  SIZE size = {};
  GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
  SelectObject(context, before);
  ReleaseDC(window_, context);
  return static_cast<int>(size.cx) + lineHeight_;
}

void Window::SetStatus(const std::wstring& text) {
  if (text == status_) return;
  status_ = text;
  SetDlgItemTextW(window_, kStatus, text.c_str());
}

void Window::Enable(int id, bool enabled) {
  const HWND control = GetDlgItem(window_, id);
  if ((IsWindowEnabled(control) != FALSE) != enabled) EnableWindow(control, enabled ? TRUE : FALSE);
}

}  // namespace backup_window
