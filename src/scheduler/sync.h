// The scheduler's process-wide locks and conditions.
#ifndef TEMVAR_SCHEDULER_SYNC_H_
#define TEMVAR_SCHEDULER_SYNC_H_

#include <cstdint>

#include "frame/mutex.h"

namespace temvar {

// Parking and resuming: the events' lists of pausing tasks, and the wait at a pause point.
extern Mutex pause_mutex;

// The registry of events, and the trees below them: sweeps, walks and insertions exclude each
// other.
extern Mutex registry_mutex TMV_ACQUIRED_AFTER(pause_mutex);

// The states of tasks that the scheduler moves, the advance of packages, the cancelled names.
extern Mutex state_mutex TMV_ACQUIRED_AFTER(registry_mutex);

// Tells that a running task may have stopped: it parked, it left the pool, or its event is no
// longer paused. Signalled from inside the pool's locks, so it takes none of the mutexes above.
extern EventCount& drain_condition;

// Tells parked tasks that an event was resumed. Waited on under pause_mutex.
extern Condition& resume_condition;
// Number of resumes so far.
extern uint64_t resume_count TMV_GUARDED_BY(pause_mutex);

}  // namespace temvar

#endif  // TEMVAR_SCHEDULER_SYNC_H_
