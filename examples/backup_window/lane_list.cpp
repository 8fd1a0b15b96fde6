#include "lane_list.h"

namespace backup_window {

namespace {

enum Column : int { kLabel, kBar, kState };

constexpr COLORREF kFull = RGB(38, 127, 71);
constexpr COLORREF kFailed = RGB(190, 50, 40);
constexpr COLORREF kEmpty = RGB(232, 235, 232);

void AddColumn(HWND list, int index, const wchar_t* title) {
  LVCOLUMNW column = {};
  column.mask = LVCF_TEXT | LVCF_SUBITEM | LVCF_WIDTH;
  column.pszText = const_cast<wchar_t*>(title);
  column.iSubItem = index;
  column.cx = 100;
  SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index),
               reinterpret_cast<LPARAM>(&column));
}

const wchar_t* StateWord(const tmv::JobProgress& progress) {
  if (progress.failed > 0) return L"failed";
  if (progress.done == progress.total) return L"done";
  if (progress.running > 0) {
    return progress.done == 0 ? L"reading" : progress.done == 1 ? L"packing" : L"checking";
  }
  return progress.done > 0 ? L"next step waits" : L"waits";
}

bool Differ(const tmv::JobProgress& a, const tmv::JobProgress& b) {
  return a.done != b.done || a.failed != b.failed || a.running != b.running ||
         a.fraction != b.fraction;
}

void Fill(HDC context, const RECT& area, COLORREF color) {
  const HBRUSH brush = CreateSolidBrush(color);
  FillRect(context, &area, brush);
  DeleteObject(brush);
}

}  // namespace

std::wstring ToWide(const std::string& text) {
  return std::wstring(tmv::WideText(TmvUtilityString()->Utf8ToWide(text.c_str())).View());
}

void LaneList::Create(HWND parent, int id) {
  list_ = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"",
                          WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA |
                              LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER,
                          0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                          nullptr, nullptr);
  SendMessageW(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_DOUBLEBUFFER | LVS_EX_FULLROWSELECT);
  AddColumn(list_, kLabel, L"Folder");
  AddColumn(list_, kBar, L"Progress");
  AddColumn(list_, kState, L"State");
}

void LaneList::SetLanes(const std::vector<tmv::JobLane>& lanes) {
  rows_.clear();
  for (const tmv::JobLane& lane : lanes) {
    rows_.push_back({lane, ToWide(lane.Label()), lane.GetProgress()});
  }
  SendMessageW(list_, LVM_SETITEMCOUNT, rows_.size(), 0);
}

void LaneList::Refresh() {
  for (size_t i = 0; i < rows_.size(); ++i) {
    const tmv::JobProgress now = rows_[i].lane.GetProgress();
    if (!Differ(now, rows_[i].progress)) continue;
    rows_[i].progress = now;
    SendMessageW(list_, LVM_REDRAWITEMS, i, static_cast<LPARAM>(i));
  }
}

void LaneList::Fit(int lineHeight) {
  // A row is as high as its picture: an invisible one makes room for the bars.
  const HIMAGELIST spacer = ImageList_Create(1, lineHeight * 3 / 2, ILC_COLOR, 1, 1);
  const LRESULT before =
      SendMessageW(list_, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(spacer));
  if (before != 0) ImageList_Destroy(reinterpret_cast<HIMAGELIST>(before));
  RECT area = {};
  GetClientRect(list_, &area);
  const int state = 110 * area.right / (area.right < 500 ? 500 : area.right);
  const int bar = (area.right - state) * 2 / 5;
  const int widths[] = {area.right - state - bar, bar, state};
  for (int i = kLabel; i <= kState; ++i) {
    SendMessageW(list_, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(i), widths[i]);
  }
}

LRESULT LaneList::OnNotify(NMHDR* header) {
  if (header->hwndFrom != list_) return 0;
  if (header->code == LVN_GETDISPINFOW) {
    FillItem(reinterpret_cast<NMLVDISPINFOW*>(header)->item);
  } else if (header->code == NM_CUSTOMDRAW) {
    return Draw(*reinterpret_cast<NMLVCUSTOMDRAW*>(header));
  }
  return 0;
}

void LaneList::FillItem(LVITEMW& item) const {
  const auto index = static_cast<size_t>(item.iItem);
  if ((item.mask & LVIF_TEXT) == 0 || index >= rows_.size()) return;
  const Row& row = rows_[index];
  const std::wstring percent =
      std::to_wstring(static_cast<int>(row.progress.fraction * 100)) + L" %";
  const std::wstring text = item.iSubItem == kLabel ? row.label
                            : item.iSubItem == kBar ? percent
                                                    : StateWord(row.progress);
  lstrcpynW(item.pszText, text.c_str(), item.cchTextMax);
}

LRESULT LaneList::Draw(NMLVCUSTOMDRAW& draw) const {
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
      return CDRF_NOTIFYITEMDRAW;
    case CDDS_ITEMPREPAINT:
      return CDRF_NOTIFYSUBITEMDRAW;
    case CDDS_ITEMPREPAINT | CDDS_SUBITEM:
      break;
    default:
      return CDRF_DODEFAULT;
  }
  const size_t index = draw.nmcd.dwItemSpec;
  if (draw.iSubItem != kBar || index >= rows_.size()) return CDRF_DODEFAULT;
  RECT cell = {LVIR_BOUNDS, kBar, 0, 0};
  SendMessageW(list_, LVM_GETSUBITEMRECT, index, reinterpret_cast<LPARAM>(&cell));
  DrawBar(draw.nmcd.hdc, cell, rows_[index]);
  return CDRF_SKIPDEFAULT;
}

void LaneList::DrawBar(HDC context, RECT cell, const Row& row) const {
  Fill(context, cell, GetSysColor(COLOR_WINDOW));
  InflateRect(&cell, -4, -4);
  Fill(context, cell, kEmpty);
  RECT full = cell;
  full.right = full.left + static_cast<LONG>((cell.right - cell.left) * row.progress.fraction);
  Fill(context, full, row.progress.failed > 0 ? kFailed : kFull);
}

}  // namespace backup_window
