#ifndef EXAMPLES_BACKUP_WINDOW_LANE_LIST_H_
#define EXAMPLES_BACKUP_WINDOW_LANE_LIST_H_

#include <windows.h>
// After windows.h, on which it depends.
#include <commctrl.h>
#include <temvar/job.h>

#include <string>
#include <vector>

namespace backup_window {

// A list with a row for each lane: its label, a bar, and a word for its state. It draws what it is
// asked for, so that ten thousand lanes cost no more than those in view.
class LaneList {
 public:
  void Create(HWND parent, int id);
  HWND Handle() const { return list_; }

  void SetLanes(const std::vector<tmv::JobLane>& lanes);

  // Takes the progress of each lane and draws what has changed.
  void Refresh();

  // What the list asks its parent for: the result of WM_NOTIFY.
  LRESULT OnNotify(NMHDR* header);

  // The height of a row, and the widths of the columns, for a font of that height.
  void Fit(int lineHeight);

 private:
  struct Row {
    tmv::JobLane lane;
    std::wstring label;
    tmv::JobProgress progress;
  };

  void FillItem(LVITEMW& item) const;
  LRESULT Draw(NMLVCUSTOMDRAW& draw) const;
  void DrawBar(HDC context, RECT cell, const Row& row) const;

  HWND list_ = nullptr;
  std::vector<Row> rows_;
};

// Text of the library and of the window.
std::wstring ToWide(const std::string& text);

}  // namespace backup_window

#endif  // EXAMPLES_BACKUP_WINDOW_LANE_LIST_H_
