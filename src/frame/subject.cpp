#include "frame/subject.h"

namespace temvar {

void TMVObserver::Update(void* /*data*/, const char* /*key*/) {}

void TMVSubject::Notify(void* data, const char* key) {
  for (TMVObserver* observer : observers_) observer->Update(data, key);
}

}  // namespace temvar
