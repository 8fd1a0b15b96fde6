/* The waits of the scheduler, for the model checker spin: every order of every step.
 *
 * Two workers run one task each. The tasks belong to one event (ONE_EVENT) or to an event each. A
 * task passes pause points, may pause an event itself, and reports success until it is heard. Hosts
 * pause, resume, remove or cancel, by the macros that tests/model/CMakeLists.txt sets. The steps are
 * those of src/scheduler and src/execution: a step here is what happens under one hold of a lock.
 *
 * Properties, each a check that spin makes in every reachable state:
 *   1. No wake-up is lost and every pause ends: no order leads to a state in which a PauseEvent, a
 *      cancel or a report waits for ever. A task may stay at a pause point only when nobody is there
 *      to resume its event, which the label "end" marks as the one valid place to stop.
 *   2. Stop ends: with a host that resumes what is paused, all workers leave.
 *   3. Each event ends once: its function is called once, by its last report or by its cancel.
 *   4. A resumed task is not paused any more, and a task that has ended is never paused or resumed.
 *
 * Mistakes that the checker must find, one a macro: MISTAKE_LOOK_FIRST (a waiter looks before it
 * prepares its wait), MISTAKE_BARE_RESUME (a resume moves the states without the pause mutex),
 * MISTAKE_WAITS_FOR_PAUSER (a task inside PauseEvent doesn't count as standing at a pause point).
 */

#ifdef ONE_EVENT
#define EVENT_OF(t) 0
#define EVENTS 1
#else
#define EVENT_OF(t) (t)
#define EVENTS 2
#endif
#define TASKS 2
#define HOST TASKS /* The caller of PauseEvent is no task. */
#define WAITERS 5  /* Two tasks, two hosts, the cancel. */

mtype = { isActive, isPaused, isCancelled, isSucceeded };

mtype state[TASKS] = isActive;
bool running[TASKS] = true;      /* In the pool's list of running tasks. */
bool left[TASKS];                /* The worker has ended. */
byte parked[TASKS];              /* Threads that stand at a pause point with this task. */
bool waitedFor[TASKS];           /* In pausedTasks of its event. */
bool registered[EVENTS] = true;
byte generation[EVENTS];         /* Of the event's pauses; bounded by what the hosts do. */
byte reports[EVENTS];
byte ends[EVENTS];               /* Calls of the event's function. */

bool pauseMutex, registryMutex;

bool drained[WAITERS];           /* The drain condition has moved on since this waiter prepared. */
bool resumed[TASKS];             /* The resume condition was broadcast since this task parked. */

#define LOCK(mutex) atomic { !mutex -> mutex = true }
#define UNLOCK(mutex) mutex = false

inline NotifyDrain() {
  atomic { drained[0] = true; drained[1] = true; drained[2] = true; drained[3] = true; drained[4] = true }
}

inline Broadcast() { atomic { resumed[0] = true; resumed[1] = true } }

inline ForgetWaited(t) { waitedFor[t] = false }

/* PausePoint of task t: one park, ended by any resume. */
#define Park(t, endParked) \
  waitedFor[t] = false; \
  NotifyDrain(); \
  if \
  :: state[t] != isPaused -> skip \
  :: else -> \
     parked[t]++; \
     resumed[t] = false; \
     UNLOCK(pauseMutex); \
endParked: \
     atomic { resumed[t] && !pauseMutex -> pauseMutex = true }; \
     parked[t]-- \
  fi

/* ReportState(task, 0): waits at the pause point for as long as the task is paused. */
#define PausePoints(t, endParked, endGone) \
  do \
  :: state[t] != isPaused -> break \
  :: else -> \
     LOCK(registryMutex); found = registered[EVENT_OF(t)]; UNLOCK(registryMutex); \
     if \
     :: found -> LOCK(pauseMutex); Park(t, endParked); UNLOCK(pauseMutex) \
     :: else -> \
endGone: \
        state[t] != isPaused \
     fi \
  od

inline SweepTo(e, from, to) {
  atomic {
    if :: EVENT_OF(0) == e && state[0] == from -> state[0] = to :: else fi;
    if :: EVENT_OF(1) == e && state[1] == from -> state[1] = to :: else fi
  }
}

/* PauseEvent(e), called by task `self`, or by a host. */
inline Pause(e, self, waiter) {
  LOCK(registryMutex); found = registered[e]; UNLOCK(registryMutex);
  if
  :: !found -> skip
  :: else ->
     LOCK(pauseMutex); LOCK(registryMutex);
     if :: registered[e] -> SweepTo(e, isActive, isPaused) :: else fi;
     UNLOCK(registryMutex);
     seen = generation[e];
#ifndef MISTAKE_WAITS_FOR_PAUSER
     if
     :: self != HOST -> parked[self]++; waitedFor[self] = false; NotifyDrain()
     :: else
     fi;
#endif
     UNLOCK(pauseMutex);
     /* The list of running tasks is taken without the pause mutex, and used under it. */
     atomic {
       lists[0] = EVENT_OF(0) == e && running[0] && registered[e];
       lists[1] = EVENT_OF(1) == e && running[1] && registered[e]
     };
     LOCK(pauseMutex);
     atomic {
       if :: EVENT_OF(0) == e -> waitedFor[0] = lists[0] && parked[0] == 0 && self != 0 :: else fi;
       if :: EVENT_OF(1) == e -> waitedFor[1] = lists[1] && parked[1] == 0 && self != 1 :: else fi;
       lists[0] = false; lists[1] = false
     };
     UNLOCK(pauseMutex);
     do
     ::
#ifndef MISTAKE_LOOK_FIRST
        drained[waiter] = false;
#endif
        LOCK(registryMutex); found = registered[e]; UNLOCK(registryMutex);
        LOCK(pauseMutex);
        if
        :: !found || generation[e] != seen -> over = true
        :: else ->
           atomic {
             if :: EVENT_OF(0) == e && !running[0] -> waitedFor[0] = false :: else fi;
             if :: EVENT_OF(1) == e && !running[1] -> waitedFor[1] = false :: else fi;
             over = !(EVENT_OF(0) == e && waitedFor[0]) && !(EVENT_OF(1) == e && waitedFor[1])
           }
        fi;
        UNLOCK(pauseMutex);
        if
        :: over -> over = false; break
        :: else
        fi;
#ifdef MISTAKE_LOOK_FIRST
        drained[waiter] = false;
#endif
        drained[waiter]
     od;
#ifndef MISTAKE_WAITS_FOR_PAUSER
     if
     :: self != HOST -> LOCK(pauseMutex); parked[self]--; UNLOCK(pauseMutex)
     :: else
     fi;
#endif
     seen = 0
  fi;
  found = false
}

inline Resume(e) {
#ifdef MISTAKE_BARE_RESUME
  LOCK(registryMutex);
  if :: registered[e] -> SweepTo(e, isPaused, isActive); Broadcast() :: else fi;
  UNLOCK(registryMutex);
#else
  LOCK(pauseMutex); LOCK(registryMutex);
  if
  :: registered[e] ->
     SweepTo(e, isPaused, isActive);
     generation[e]++;
     Broadcast()
  :: else
  fi;
  UNLOCK(registryMutex); UNLOCK(pauseMutex);
#endif
  NotifyDrain()
}

/* The report of success; `heard` unless a pause has consumed it. */
inline Report(t) {
  if
  :: state[t] == isPaused -> PausePoints(t, end_report_parked, end_report_gone); heard = false
  :: state[t] == isCancelled -> heard = true
  :: else ->
     do
     :: LOCK(registryMutex);
        if
        :: state[t] != isPaused -> break
        :: else -> /* A pause came after the look: it parks without the mutex and reports again. */
           UNLOCK(registryMutex);
           PausePoints(t, end_late_parked, end_late_gone)
        fi
     od;
     heard = true;
     if
     :: state[t] != isCancelled && registered[EVENT_OF(t)] ->
        assert(state[t] == isActive);
        state[t] = isSucceeded;
        reports[EVENT_OF(t)]++;
        if
        :: reports[EVENT_OF(t)] == TASKS / EVENTS ->
           registered[EVENT_OF(t)] = false;
           ends[EVENT_OF(t)]++;
           NotifyDrain()
        :: else
        fi
     :: else
     fi;
     found = false;
     UNLOCK(registryMutex)
  fi
}

proctype Worker(byte t) {
  bool found, over, heard, lists[TASKS];
  byte seen;
  PausePoints(t, end_point_parked, end_point_gone);
#ifdef PAUSE_OWN
  Pause(EVENT_OF(t), t, t);
#endif
#ifdef PAUSE_OTHER
  Pause(EVENT_OF(1 - t), t, t);
#endif
  do
  :: heard -> break
  :: else -> Report(t)
  od;
  /* The pool drops it from the running list and reports to the scheduler. */
  atomic { running[t] = false; found = false; heard = false };
  NotifyDrain();
  left[t] = true
}

proctype PausingHost(byte e; byte waiter) {
  bool found, over, lists[TASKS];
  byte seen;
  Pause(e, HOST, waiter)
}

/* Resumes what is paused until all workers have left. */
proctype ResumingHost() {
end_resumer:
  do
  :: atomic { (left[0] && left[1]) -> break }
  :: atomic { (registered[0] && (state[0] == isPaused || state[1] == isPaused)) -> skip };
     Resume(0)
#ifndef ONE_EVENT
  :: atomic { (registered[1] && state[1] == isPaused) -> skip };
     Resume(1)
#endif
  od
}

/* CancelEvent: the entry goes first, then the cancel's task is queued, and waiting pauses end. */
proctype CancellingHost(byte e; bool remove) {
  bool took;
  LOCK(registryMutex);
  took = registered[e];
  if :: remove -> registered[e] = false :: else fi;
  UNLOCK(registryMutex);
  if
  :: took ->
     run Cancel(e);
     LOCK(pauseMutex); generation[e]++; UNLOCK(pauseMutex);
     NotifyDrain()
  :: else
  fi
}

/* The cancel's task: it needs a worker, sweeps, and waits until the running tasks have left. */
proctype Cancel(byte e) {
end_queued: /* Parked tasks keep their workers until they are resumed. */
  left[0] || left[1];
  LOCK(registryMutex); SweepTo(e, isActive, isCancelled); UNLOCK(registryMutex);
  LOCK(pauseMutex); generation[e]++; UNLOCK(pauseMutex);
  NotifyDrain();
  do
  :: drained[4] = false;
     if
     :: atomic { registered[e] && ((EVENT_OF(0) == e && running[0]) || (EVENT_OF(1) == e && running[1])) -> skip };
end_parked: drained[4]
     :: else -> break
     fi
  od;
  ends[e]++
}

proctype RemovingHost(byte e) {
  LOCK(registryMutex); registered[e] = false; UNLOCK(registryMutex);
  NotifyDrain()
}

/* Stop of the pool joins the workers. */
proctype StoppingHost() {
#if defined(CANCELS) || defined(REMOVES)
end_stop: /* A task that is parked when its event leaves the registry has to be resumed first. */
#endif
  left[0] && left[1];
  assert(!running[0] && !running[1])
}

init {
  atomic {
    run Worker(0);
    run Worker(1);
#ifdef PAUSES
    run PausingHost(0, 2);
#endif
#ifdef PAUSES_TWICE
    run PausingHost(EVENTS - 1, 3);
#endif
#ifdef RESUMES
    run ResumingHost();
    run StoppingHost();
#endif
#ifdef CANCELS
    run CancellingHost(0, CANCELS);
#endif
#ifdef REMOVES
    run RemovingHost(0);
#endif
  }
  /* When all is over. */
end_all:
  _nr_pr == 1;
#if defined(RESUMES) && !defined(REMOVES) && !(defined(CANCELS) && !CANCELS)
  assert(ends[0] == 1);
#ifndef ONE_EVENT
  assert(ends[1] == 1);
#endif
#endif
}
