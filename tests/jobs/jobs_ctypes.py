"""Runs jobs through TemvarJobs with ctypes alone: jobs_ctypes.py LIBRARY"""
import ctypes
import sys
import threading

jobs = ctypes.CDLL(sys.argv[1])
Task = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_void_p)
jobs.TmvJobsErrorText.restype = ctypes.c_char_p
jobs.TmvJobKeepGoing.argtypes = [ctypes.c_void_p]
jobs.TmvJobSetError.argtypes = [ctypes.c_void_p, ctypes.c_char_p]


class Progress(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint32) for name in ("total", "done", "failed", "running")]
    _fields_.append(("fraction", ctypes.c_double))


def ok(code):
    assert code == 0, jobs.TmvJobsErrorText(code)


def run(steps, steer):
    """The state at the end and the failures of a job of one lane; steer(job) comes in between."""
    job, lane, state, count = ctypes.c_void_p(), ctypes.c_uint32(), ctypes.c_int32(), ctypes.c_uint32()
    ok(jobs.TmvJobCreate("Größe".encode(), ctypes.byref(job)))
    ok(jobs.TmvJobAddLane(job, b"lane", ctypes.byref(lane)))
    tasks = [Task(step) for step in steps]
    for task in tasks:
        ok(jobs.TmvJobAddTask(job, lane, b"task", task, None, None))
    ok(jobs.TmvJobStart(job))
    steer(job)
    ok(jobs.TmvJobWait(job, -1, ctypes.byref(state)))
    ok(jobs.TmvJobGetFailureCount(job, ctypes.byref(count)))
    texts, buffer = [], ctypes.create_string_buffer(100)
    for index in range(count.value):
        ok(jobs.TmvJobGetFailure(job, index, buffer, 100, None))
        texts.append(buffer.value.decode())
    progress = Progress()
    ok(jobs.TmvJobGetProgress(job, ctypes.c_uint32(0xFFFFFFFF), ctypes.byref(progress)))
    ok(jobs.TmvJobFree(job))
    return state.value, texts, (progress.total, progress.done, progress.failed)


begun = threading.Event()


def endless(context, _):
    while jobs.TmvJobKeepGoing(context):
        begun.set()
    return 0


def pause_and_cancel(job):
    begun.wait()
    ok(jobs.TmvJobPauseAndWait(job))
    ok(jobs.TmvJobResume(job))
    ok(jobs.TmvJobPause(job))
    ok(jobs.TmvJobCancel(job))


ok(jobs.TmvJobsStartPool(2))
failing = [lambda c, _: 0, lambda c, _: jobs.TmvJobSetError(c, "fehlt: ä".encode()) or 1]
assert run(failing, lambda job: None) == (6, ["lane/task: fehlt: ä"], (2, 1, 1))
assert run([endless, lambda c, _: 0], pause_and_cancel) == (7, [], (2, 0, 0))
ok(jobs.TmvJobsStopPool())
