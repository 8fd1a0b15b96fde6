#ifndef TESTS_FRAME_FOREIGN_HOST_FOREIGN_HOST_H_
#define TESTS_FRAME_FOREIGN_HOST_FOREIGN_HOST_H_

class RkTask;
class RkTaskFunc;
class RkTaskPool;
class RkTaskSchedular;
class TMVLock;

struct Library {
  TMVLock* lock;
  RkTaskPool* pool;
  RkTaskSchedular* schedular;
  RkTask* task;
  RkTaskFunc* func;
  void (*destroyTask)(RkTask*);
  void (*destroyFunc)(RkTaskFunc*);
};

// Uses the library as a host of another compiler family does: null, or what went wrong.
extern "C" const char* UseLibrary(const Library& library);

#endif  // TESTS_FRAME_FOREIGN_HOST_FOREIGN_HOST_H_
