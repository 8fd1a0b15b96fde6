/* A host in C, with nothing but the header: runs jobs by the plain functions. The result is 0, or
 * the line that went wrong. It needs no C library, so it is also built for the ABI of Visual C++ and
 * linked without one. */
#include <temvar/jobs.h>

#if defined(_MSC_VER)
int _fltused = 0; /* What the compiler wants of the C library where doubles are used. */
#define ENTRY Entry
#else
#define ENTRY main
#endif

#define CHECK(condition) \
  if (!(condition)) return __LINE__
#define OK(call) CHECK((call) == TMV_JOBS_OK)

static int ends, releases, steps;
static int32_t endState;
static TmvJob* current;

static void CountRelease(void* user) { *(int*)user += 1; }
static void NoteEnd(int32_t state, void* user) { endState = state, *(int*)user += 1; }
static void FreeAtEnd(int32_t state, void* user) {
  NoteEnd(state, user);
  if (TmvJobFree(current) != TMV_JOBS_OK) endState = -1;
}

static int32_t Step(TmvJobContext* context, void* user) {
  (void)user;
  ++steps;
  return TmvJobWait(current, -1, 0) == TMV_JOBS_DEADLOCK ? TmvJobSetProgress(context, 0.5) : 1;
}

static int32_t Fail(TmvJobContext* context, void* user) {
  if (user) TmvJobSetError(context, (const char*)user);
  return 7;
}

static int32_t Endless(TmvJobContext* context, void* user) {
  (void)user;
  TmvJobSetProgress(context, 0.5);
  while (TmvJobKeepGoing(context)) continue;
  return TmvJobIsCancelled(context) ? 0 : 1;
}

static int IsText(const char* text, const char* expected) {
  while (*text && *text == *expected) ++text, ++expected;
  return *text == *expected;
}

static int AwaitState(int32_t wanted) {
  int32_t state = TMV_JOB_NEW;
  while (state != wanted && state < TMV_JOB_SUCCEEDED) TmvJobWait(current, 1, &state);
  return state == wanted;
}

static int RunToTheEnd(void) {
  uint32_t lane = 9, stops = 9, size = 0, count = 0;
  int32_t state = 9;
  char text[64];
  TmvJobProgress progress;
  OK(TmvJobCreate("c", &current));
  OK(TmvJobAddLane(current, "l\xC3\xA4ne", &lane));
  OK(TmvJobAddLane(current, 0, &stops));
  CHECK(lane == 0 && stops == 1);
  OK(TmvJobStopAtFailure(current, stops));
  OK(TmvJobAddTask(current, lane, "one", Step, &releases, CountRelease));
  OK(TmvJobAddTask(current, lane, "two", Fail, "no such \xC3\xB6", 0));
  OK(TmvJobAddTask(current, lane, "three", Step, &releases, CountRelease));
  OK(TmvJobAddTask(current, stops, 0, Fail, 0, 0));
  OK(TmvJobAddTask(current, stops, "never", Step, &releases, CountRelease));
  CHECK(TmvJobAddTask(current, 2, "", Step, &releases, CountRelease) == TMV_JOBS_INVALID_ARGUMENT);
  OK(TmvJobOnEnd(current, NoteEnd, &ends));
  CHECK(TmvJobWait(current, -1, &state) == TMV_JOBS_OK && state == TMV_JOB_NEW);
  OK(TmvJobStart(current));
  OK(TmvJobWait(current, -1, &state));
  CHECK(state == TMV_JOB_FAILED && endState == state && ends == 1 && steps == 2 && releases == 3);
  OK(TmvJobGetProgress(current, TMV_JOB_ALL_LANES, &progress));
  CHECK(progress.total == 5 && progress.done == 2 && progress.failed == 2 && !progress.running);
  OK(TmvJobGetProgress(current, lane, &progress));
  CHECK(progress.total == 3 && progress.fraction == 1);
  OK(TmvJobGetFailureCount(current, &count));
  CHECK(count == 2 && TmvJobGetFailure(current, 2, 0, 0, 0) == TMV_JOBS_INVALID_ARGUMENT);
  OK(TmvJobGetFailure(current, 0, text, sizeof(text), &size));
  if (text[0] == '/') OK(TmvJobGetFailure(current, 1, text, sizeof(text), &size));
  CHECK(IsText(text, "l\xC3\xA4ne/two: no such \xC3\xB6") && size == 22);
  OK(TmvJobGetFailure(current, 0, text, 3, 0));
  CHECK(IsText(text, "l") || IsText(text, "/t")); /* No half of a character. */
  CHECK(TmvJobStart(current) == TMV_JOBS_WRONG_STATE);
  CHECK(TmvJobAddLane(current, "", &lane) == TMV_JOBS_WRONG_STATE);
  CHECK(TmvJobAddTask(current, 0, "", Step, &releases, CountRelease) == TMV_JOBS_WRONG_STATE);
  CHECK(releases == 3);
  OK(TmvJobFree(current));
  return 0;
}

/* The job stays paused. */
static int Pause(void) {
  uint32_t lane = 0;
  TmvJobProgress progress;
  OK(TmvJobCreate("pause", &current));
  OK(TmvJobAddLane(current, "", &lane));
  OK(TmvJobAddTask(current, lane, "endless", Endless, 0, 0));
  OK(TmvJobAddTask(current, lane, "never", Step, &releases, CountRelease));
  OK(TmvJobOnEnd(current, NoteEnd, &ends));
  OK(TmvJobStart(current));
  CHECK(TmvJobWait(current, 0, 0) == TMV_JOBS_TIMEOUT);
  do OK(TmvJobGetProgress(current, TMV_JOB_ALL_LANES, &progress));
  while (progress.fraction != 0.25);
  OK(TmvJobPause(current));
  CHECK(AwaitState(TMV_JOB_PAUSED));
  OK(TmvJobResume(current));
  OK(TmvJobPauseAndWait(current));
  return 0;
}

/* No task runs, so the cancel itself is the end. */
static int FreeInTheEnd(void) {
  uint32_t lane = 0;
  OK(TmvJobCreate("free", &current));
  OK(TmvJobAddLane(current, "", &lane));
  OK(TmvJobAddTask(current, lane, "never", Step, &releases, CountRelease));
  OK(TmvJobOnEnd(current, FreeAtEnd, &ends));
  OK(TmvJobPause(current));
  OK(TmvJobStart(current));
  OK(TmvJobCancel(current));
  CHECK(endState == TMV_JOB_CANCELLED && ends == 2 && releases == 4);
  return 0;
}

int ENTRY(void) {
  TmvJobProgress progress;
  int line = 0;
  CHECK(TmvJobsStopPool() == TMV_JOBS_WRONG_STATE);
  OK(TmvJobsStartPool(2));
  CHECK(TmvJobsStartPool(2) == TMV_JOBS_WRONG_STATE);
  CHECK(TmvJobCreate("", 0) == TMV_JOBS_INVALID_ARGUMENT && TmvJobFree(0) == TMV_JOBS_OK);
  CHECK(TmvJobStart(0) == TMV_JOBS_INVALID_ARGUMENT && TmvJobKeepGoing(0) == 0);
  CHECK(TmvJobGetProgress(0, 0, &progress) == TMV_JOBS_INVALID_ARGUMENT);
  CHECK(IsText(TmvJobsErrorText(TMV_JOBS_OK), "success"));
  CHECK(IsText(TmvJobsErrorText(-100), "unknown code"));
  CHECK(IsText(TmvJobsErrorText(TMV_JOBS_SYSTEM_ERROR), "the system refused a thread or a mutex"));
  if ((line = RunToTheEnd()) != 0 || (line = FreeInTheEnd()) != 0) return line;
  if ((line = Pause()) != 0) return line;
  OK(TmvJobsStopPool()); /* Ends the paused job. */
  CHECK(AwaitState(TMV_JOB_CANCELLED) && endState == TMV_JOB_CANCELLED);
  CHECK(TmvJobGetState(current, &endState) == TMV_JOBS_OK && endState == TMV_JOB_CANCELLED);
  CHECK(ends == 3 && releases == 5 && steps == 2);
  OK(TmvJobFree(current));
  return 0;
}
