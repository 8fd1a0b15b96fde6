#ifndef EXAMPLES_BACKUP_WINDOW_RUN_H_
#define EXAMPLES_BACKUP_WINDOW_RUN_H_

#include <temvar/job.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "folder.h"
#include "steps.h"

namespace backup_window {

// One backup in two jobs, so that the window waits for neither: the first lists the folders, the
// second backs them up. For the thread of the window; no operation blocks.
class Run {
 public:
  // `ended` is called at the end of each job, on a worker.
  explicit Run(std::function<void()> ended) : ended_(std::move(ended)) {}

  void List(const std::filesystem::path& source, const std::filesystem::path& destination,
            const std::string& exclusions);

  // After the end of the list, which the caller may complete with the state of each folder.
  void BackUp();

  void Pause() { job_->Pause(); }
  void Resume() { job_->Resume(); }
  void Cancel() { job_->Cancel(); }

  // Without a job as one that is new.
  tmv::JobState State() const { return job_ ? job_->GetState() : tmv::JobState::kNew; }
  double Fraction() const;
  std::vector<tmv::JobFailure> Failures() const;

  // Empty before the second job.
  const std::vector<tmv::JobLane>& Lanes() const { return lanes_; }
  // The owner reads and writes them between the jobs and after the second.
  std::vector<backup::Folder>& Folders() { return folders_; }
  const backup::Progress& Progress() const { return progress_; }

 private:
  void StartJob();

  std::function<void()> ended_;
  std::vector<backup::Folder> folders_;
  backup::Progress progress_;
  std::vector<tmv::JobLane> lanes_;
  std::optional<tmv::Job> job_;  // Last: its end waits for what uses the rest.
};

}  // namespace backup_window

#endif  // EXAMPLES_BACKUP_WINDOW_RUN_H_
