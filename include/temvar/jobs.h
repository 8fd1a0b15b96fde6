#ifndef TEMVAR_JOBS_H_
#define TEMVAR_JOBS_H_

/* Jobs for hosts of any compiler and language: plain C functions of a small library of its own,
 * TemvarJobs, which calls libTemvar. What a job is, and when what happens, is documented in
 * temvar/job.h; a function here does what the operation of that name does there.
 *
 *   TmvJob* job = NULL;
 *   uint32_t lane = 0;
 *   TmvJobsStartPool(4);
 *   TmvJobCreate("import", &job);
 *   TmvJobAddLane(job, "photos", &lane);
 *   TmvJobAddTask(job, lane, "first.jpg", Import, "first.jpg", NULL);
 *   TmvJobStart(job);
 *   TmvJobWait(job, -1, &state);
 *   TmvJobFree(job);
 *   TmvJobsStopPool();
 *
 * Results: every function that can fail returns one of the codes below, 0 for success. No exception
 * leaves a function, and none may leave a callback. What an `out` argument points to is written on
 * success alone; it must not be null unless that is documented.
 * Text: UTF-8, ended by a NUL. Null labels count as empty. Text that is handed in is copied.
 * Threads: every function may be called from any thread at any time, from a callback too. A job
 * must not be used by anybody once TmvJobFree has been called on it.
 * Calls: the C convention of the system (cdecl on 32-bit Windows), for callbacks too. */

#include <stdint.h>

#if defined(__cplusplus)
extern "C" {
#endif

/* Codes. TmvJobsErrorText has a sentence for each. */
enum {
  TMV_JOBS_OK = 0,
  TMV_JOBS_INVALID_ARGUMENT = 1, /* A null pointer, or a lane or an index that is not there. */
  TMV_JOBS_WRONG_STATE = 2,      /* The job, or the pool, has been started or has not been. */
  TMV_JOBS_TIMEOUT = 3,          /* The job has not ended in that time. */
  TMV_JOBS_DEADLOCK = 4,         /* The caller would wait for itself. */
  TMV_JOBS_NO_MEMORY = 5,
  TMV_JOBS_SYSTEM_ERROR = 6 /* The system refused a thread or a mutex. */
};

/* What a job is doing, or how it ended. */
enum {
  TMV_JOB_NEW = 0,
  TMV_JOB_RUNNING = 1,
  TMV_JOB_PAUSING = 2,
  TMV_JOB_PAUSED = 3,
  TMV_JOB_CANCELLING = 4,
  TMV_JOB_SUCCEEDED = 5, /* From here on it has ended. */
  TMV_JOB_FAILED = 6,
  TMV_JOB_CANCELLED = 7
};

/* For TmvJobGetProgress: the job as a whole. */
#define TMV_JOB_ALL_LANES UINT32_MAX

/* A job, made by TmvJobCreate. */
typedef struct TmvJob TmvJob;

/* What a running task may ask and say. Belongs to the thread and the time of the callback. */
typedef struct TmvJobContext TmvJobContext;

/* How far a job or a lane is. */
typedef struct TmvJobProgress {
  uint32_t total;   /* Tasks in all. */
  uint32_t done;    /* Those that ended without a failure. */
  uint32_t failed;  /* Those that failed. */
  uint32_t running; /* Those that run, or wait at a pause point. */
  double fraction;  /* 0 to 1, with what the running tasks said by TmvJobSetProgress. */
} TmvJobProgress;

/* A task. 0 is success and anything else a failure, of which TmvJobSetError may say the reason. */
typedef int32_t (*TmvJobTask)(TmvJobContext* context, void* user);

/* Called with the user pointer of a task when it is not needed any more: after the task has run, or
 * when the job has ended or was freed without running it. Once, before TmvJobWait returns. */
typedef void (*TmvJobRelease)(void* user);

/* The end of a job, with its state: called once, before TmvJobWait returns. May free the job. */
typedef void (*TmvJobEnd)(int32_t state, void* user);

/* A sentence in English for a code; static text, never null. */
const char* TmvJobsErrorText(int32_t code);

/* Starts the pool with this number of workers, once in the life of libTemvar. WRONG_STATE if it has
 * been started. A host that started it by TmvTaskPool() of libTemvar leaves both functions alone.
 */
int32_t TmvJobsStartPool(uint32_t workers);

/* Cancels the jobs that have not ended, paused ones too, and stops the pool for good. Waits for the
 * tasks that run. Call it on a thread of the host, before libTemvar is unloaded and never from
 * DllMain. DEADLOCK in a task, where the jobs are cancelled all the same; WRONG_STATE without a
 * pool. */
int32_t TmvJobsStopPool(void);

/* A new job, freed with TmvJobFree. */
int32_t TmvJobCreate(const char* label, TmvJob** job);

/* Cancels the job and waits until its tasks and its end callback have returned, then frees it. The
 * callback that calls this is not waited for. Null does nothing. */
int32_t TmvJobFree(TmvJob* job);

/* A new lane: its tasks run one after the other, the lanes side by side. `lane` becomes its number,
 * counted from 0. WRONG_STATE once the job has been started; so with the next three. */
int32_t TmvJobAddLane(TmvJob* job, const char* label, uint32_t* lane);

/* The first failure ends the lane. */
int32_t TmvJobStopAtFailure(TmvJob* job, uint32_t lane);

/* Appends a task to a lane. `release` may be null. On failure `user` stays the caller's, and
 * `release` is not called. */
int32_t TmvJobAddTask(TmvJob* job, uint32_t lane, const char* label, TmvJobTask task, void* user,
                      TmvJobRelease release);

/* Sets what is called at the end; null takes it back. Not called for a job that never started. */
int32_t TmvJobOnEnd(TmvJob* job, TmvJobEnd end, void* user);

/* Starts the job, once. Before the pool is started it waits for that. */
int32_t TmvJobStart(TmvJob* job);

/* Holds the job and returns at once: running tasks stop at their next TmvJobKeepGoing. */
int32_t TmvJobPause(TmvJob* job);

/* The same, and waits until no task works; the caller's own is not waited for. WRONG_STATE if the
 * job was resumed or cancelled, or ended, meanwhile. */
int32_t TmvJobPauseAndWait(TmvJob* job);

/* Lets a paused job go on. */
int32_t TmvJobResume(TmvJob* job);

/* Cancels the job, paused or not, and returns at once. */
int32_t TmvJobCancel(TmvJob* job);

/* Waits for the end, at most this long; below 0 without a limit, 0 looks only. `state` becomes the
 * state of the job; it may be null, and is written on TIMEOUT too. A job that was not started is
 * not waited for. DEADLOCK in a task of this job. */
int32_t TmvJobWait(TmvJob* job, int32_t milliseconds, int32_t* state);

/* What the job is doing, or how it ended. */
int32_t TmvJobGetState(TmvJob* job, int32_t* state);

/* How far a lane is, or the job: TMV_JOB_ALL_LANES. */
int32_t TmvJobGetProgress(TmvJob* job, uint32_t lane, TmvJobProgress* progress);

/* Number of failures so far. */
int32_t TmvJobGetFailureCount(TmvJob* job, uint32_t* count);

/* A failure as text, "lane/label: reason". Copies as much of it as fits into `buffer`, always with
 * a NUL and never half a character. `needed`, which may be null, becomes the size of the whole with
 * its NUL; a null `buffer` of size 0 only asks for it. INVALID_ARGUMENT beyond the last failure. */
int32_t TmvJobGetFailure(TmvJob* job, uint32_t index, char* buffer, uint32_t size,
                         uint32_t* needed);

/* In a task: a pause point, which blocks while the job is paused. 0 if the job has been cancelled
 * and the task should return; its result does not matter then. Else 1. */
int32_t TmvJobKeepGoing(TmvJobContext* context);

/* In a task: whether the job has been cancelled, 1 or 0. Never blocks. */
int32_t TmvJobIsCancelled(TmvJobContext* context);

/* In a task: how far it is, 0 to 1. */
int32_t TmvJobSetProgress(TmvJobContext* context, double fraction);

/* In a task: the reason of the failure that it is about to return. */
int32_t TmvJobSetError(TmvJobContext* context, const char* reason);

#if defined(__cplusplus)
}
#endif

#endif /* TEMVAR_JOBS_H_ */
