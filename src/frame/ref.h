// An owning pointer to a reference-counted object of the library.
#ifndef TEMVAR_FRAME_REF_H_
#define TEMVAR_FRAME_REF_H_

#include <utility>

namespace temvar {

// T has AddRef and Release. Ref(pointer) adds a reference; Ref::Adopt takes over an existing one.
template <typename T>
class Ref {
 public:
  Ref() = default;
  explicit Ref(T* object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  Ref(const Ref& other) : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_ != nullptr) object_->Release();
  }

  static Ref Adopt(T* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  // Passes the reference to the caller.
  T* Detach() { return std::exchange(object_, nullptr); }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

}  // namespace temvar

#endif  // TEMVAR_FRAME_REF_H_
