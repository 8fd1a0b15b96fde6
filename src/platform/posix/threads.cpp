#include "platform/threads.h"

#include <pthread.h>

namespace temvar {

void SetCurrentThreadName(const char* name) { pthread_setname_np(pthread_self(), name); }

namespace {

struct Call {
  void (*function)(void*);
  void* argument;
};

void* Run(void* call) {
  const Call& typed = *static_cast<Call*>(call);
  typed.function(typed.argument);
  return nullptr;
}

}  // namespace

bool RunOnLargeStack(size_t size, void (*function)(void*), void* argument) {
  Call call{function, argument};
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_t thread;
  const bool started = pthread_attr_setstacksize(&attributes, size) == 0 &&
                       pthread_create(&thread, &attributes, Run, &call) == 0;
  pthread_attr_destroy(&attributes);
  if (started) pthread_join(thread, nullptr);
  return started;
}

}  // namespace temvar
