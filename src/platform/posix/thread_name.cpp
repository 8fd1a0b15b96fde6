#include "platform/thread_name.h"

#include <pthread.h>

namespace temvar {

void SetCurrentThreadName(const char* name) { pthread_setname_np(pthread_self(), name); }

}  // namespace temvar
