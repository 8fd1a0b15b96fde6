#ifndef TEMVAR_TASKS_POINTER_SET_H_
#define TEMVAR_TASKS_POINTER_SET_H_

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace temvar {

// A set of pointers that rarely holds more than one: the first needs no allocation, and so can't
// fail to be added.
template <typename T>
class PointerSet {
 public:
  bool Empty() const { return first_ == nullptr; }
  // The member if there is exactly one, else null.
  T* Only() const { return more_ == nullptr ? first_ : nullptr; }
  bool Contains(const T* pointer) const {
    return AnyOf([pointer](T& member) { return &member == pointer; });
  }

  // No effect on a pointer that is in the set. Throws std::bad_alloc, and nothing has changed then.
  void Add(T* pointer) {
    if (first_ == nullptr) {
      first_ = pointer;
    } else if (!Contains(pointer)) {
      auto more = more_ == nullptr ? std::make_unique<std::vector<T*>>() : std::move(more_);
      try {
        more->push_back(pointer);
      } catch (...) {
        if (!more->empty()) more_ = std::move(more);
        throw;
      }
      more_ = std::move(more);
    }
  }

  // No effect on a pointer that isn't in the set.
  void Remove(const T* pointer) {
    if (first_ == pointer) {
      first_ = more_ == nullptr ? nullptr : more_->back();
      if (more_ != nullptr) more_->pop_back();
    } else if (more_ != nullptr) {
      std::erase(*more_, pointer);
    }
    if (more_ != nullptr && more_->empty()) more_ = nullptr;
  }

  // Whether `test` is true for a member; members after the first such one are not tested.
  template <typename Test>
  bool AnyOf(Test test) const {
    if (first_ == nullptr) return false;
    if (test(*first_)) return true;
    return more_ != nullptr &&
           std::any_of(more_->begin(), more_->end(), [&test](T* member) { return test(*member); });
  }

 private:
  // Invariant: more_ is null or not empty, and only beside a first_.
  T* first_ = nullptr;
  std::unique_ptr<std::vector<T*>> more_;
};

}  // namespace temvar

#endif  // TEMVAR_TASKS_POINTER_SET_H_
