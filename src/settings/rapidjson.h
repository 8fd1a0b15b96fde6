// RapidJSON as this folder uses it, and the only place that includes it.
//
// Version 1.1.0 checks the result of no allocation: here a failed one throws. Its own stack writes
// through a null pointer when memory is short and offsets a null pointer on its first push. Its
// template is therefore specialised for our allocator, with the same operations; parser, document,
// writer and string buffer all use it.
#ifndef TEMVAR_SETTINGS_RAPIDJSON_H_
#define TEMVAR_SETTINGS_RAPIDJSON_H_

#include <rapidjson/internal/stack.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace temvar {

// The heap, up to `kLimit` bytes a block.
template <size_t kLimit>
class BoundedAllocator {
 public:
  static const bool kNeedFree = true;

  void* Malloc(size_t size) { return Realloc(nullptr, 0, size); }

  void* Realloc(void* block, size_t /*oldSize*/, size_t size) {
    if (size == 0) {
      std::free(block);
      return nullptr;
    }
    void* result = size > kLimit ? nullptr : std::realloc(block, size);
    if (result == nullptr) throw std::bad_alloc();
    return result;
  }

  static void Free(void* block) { std::free(block); }
};

}  // namespace temvar

namespace rapidjson::internal {

template <size_t kLimit>
class Stack<temvar::BoundedAllocator<kLimit>> {
 public:
  using Allocator = temvar::BoundedAllocator<kLimit>;

  Stack(Allocator* /*stateless*/, size_t initialCapacity) : initialCapacity_(initialCapacity) {}
  Stack(const Stack&) = delete;
  Stack& operator=(const Stack&) = delete;
  ~Stack() { std::free(data_); }

  template <typename T>
  void Reserve(size_t count = 1) {
    if (count > (capacity_ - size_) / sizeof(T)) Grow(count, sizeof(T));
  }
  template <typename T>
  T* Push(size_t count = 1) {
    Reserve<T>(count);
    return PushUnsafe<T>(count);
  }
  template <typename T>
  T* PushUnsafe(size_t count = 1) {
    T* first = At<T>(size_);
    size_ += count * sizeof(T);
    return first;
  }
  template <typename T>
  T* Pop(size_t count) {
    size_ -= count * sizeof(T);
    return At<T>(size_);
  }
  template <typename T>
  T* Top() {
    return At<T>(size_ - sizeof(T));
  }
  template <typename T>
  T* Bottom() {
    return At<T>(0);
  }

  void Clear() { size_ = 0; }
  void ShrinkToFit() {
    data_ = static_cast<char*>(Allocator().Realloc(data_, capacity_, size_));
    capacity_ = size_;
  }

  bool Empty() const { return size_ == 0; }
  size_t GetSize() const { return size_; }
  size_t GetCapacity() const { return capacity_; }

  // The allocator has no state: each user makes its own.
  bool HasAllocator() const { return false; }
  Allocator& GetAllocator() { std::abort(); }

 private:
  template <typename T>
  T* At(size_t offset) {
    return reinterpret_cast<T*>(data_ + offset);
  }

  void Grow(size_t count, size_t elementSize) {
    if (count > (std::numeric_limits<size_t>::max() / 2 - size_) / elementSize) {
      throw std::bad_alloc();
    }
    const size_t grown = data_ == nullptr ? initialCapacity_ : capacity_ + (capacity_ + 1) / 2;
    const size_t capacity = std::max(grown, size_ + count * elementSize);
    data_ = static_cast<char*>(Allocator().Realloc(data_, capacity_, capacity));
    capacity_ = capacity;
  }

  char* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
  const size_t initialCapacity_;
};

}  // namespace rapidjson::internal

// Below the stack, which these instantiate.
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace temvar {

using JsonHeap = BoundedAllocator<std::numeric_limits<size_t>::max()>;

// A document's values, names and texts, freed together with it.
using JsonPool = rapidjson::MemoryPoolAllocator<JsonHeap>;
using JsonDocument = rapidjson::GenericDocument<rapidjson::UTF8<>, JsonPool, JsonHeap>;
using JsonValue = JsonDocument::ValueType;
using JsonMember = JsonValue::Member;

}  // namespace temvar

#endif  // TEMVAR_SETTINGS_RAPIDJSON_H_
