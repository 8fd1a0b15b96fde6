"""Runs jobs through TemvarJobs with ctypes alone: jobs_ctypes.py LIBRARY"""
import ctypes
import sys
import threading
from ctypes import byref, c_int32, c_uint32, c_void_p

jobs = ctypes.CDLL(sys.argv[1])
Task = ctypes.CFUNCTYPE(c_int32, c_void_p, c_void_p)
jobs.TmvJobKeepGoing.argtypes = [c_void_p]
jobs.TmvJobSetError.argtypes = [c_void_p, ctypes.c_char_p]
begun = threading.Event()


def call(name, *arguments):
    code = getattr(jobs, name)(*arguments)
    assert code == 0, (name, code)


def run(steps, steer):
    """A job of one lane: its state at the end and its failures; steer(job) comes in between."""
    job, lane, state, count = c_void_p(), c_uint32(), c_int32(), c_uint32()
    buffer = ctypes.create_string_buffer(100)
    call("TmvJobCreate", "Größe".encode(), byref(job))
    call("TmvJobAddLane", job, b"lane", byref(lane))
    tasks = [Task(step) for step in steps]
    for task in tasks:
        call("TmvJobAddTask", job, lane, b"task", task, None, None)
    call("TmvJobStart", job)
    steer(job)
    call("TmvJobWait", job, -1, byref(state))
    call("TmvJobGetFailureCount", job, byref(count))
    if count.value:
        call("TmvJobGetFailure", job, 0, buffer, 100, None)
    call("TmvJobFree", job)
    return state.value, count.value, buffer.value.decode()


def endless(context, _):
    while jobs.TmvJobKeepGoing(context):
        begun.set()
    return 0


def steer(job):
    begun.wait()
    for name in ("TmvJobPauseAndWait", "TmvJobResume", "TmvJobPause", "TmvJobCancel"):
        call(name, job)


call("TmvJobsStartPool", 2)
failing = [lambda c, _: 0, lambda c, _: jobs.TmvJobSetError(c, "fehlt: ä".encode()) or 1]
assert run(failing, lambda job: None) == (6, 1, "lane/task: fehlt: ä")
assert run([endless, lambda c, _: 0], steer) == (7, 0, "")
call("TmvJobsStopPool")
