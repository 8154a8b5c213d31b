/// \file
/// \brief A value that copies share until one of them changes it.
#ifndef QV_PLATFORM_SYSTEM_COW_PTR_H
#define QV_PLATFORM_SYSTEM_COW_PTR_H

#include <atomic>
#include <memory>
#include <utility>

namespace QVSystem {

/// Owns a T as a value does, but copies in constant time: copies share the object, and the first
/// one to ask for a changeable reference gets a copy of its own. Reading is as safe from many
/// threads as reading a T; changing needs exclusive use of this pointer, not of its copies.
template <class T>
class QVCowPtr {
 public:
  QVCowPtr() : object_(std::make_shared<T>()) {}
  explicit QVCowPtr(T object) : object_(std::make_shared<T>(std::move(object))) {}

  const T& operator*() const { return *object_; }
  const T* operator->() const { return object_.get(); }

  /// The object for changing, copied first when another pointer shares it.
  T& GetMutable() {
    if (object_.use_count() != 1) object_ = std::make_shared<T>(*object_);
    // The last other owner may just have let go in another thread: its reads come before our
    // writes.
    std::atomic_thread_fence(std::memory_order_acquire);
    return *object_;
  }
  /// A reference that keeps the object as it is now alive.
  std::shared_ptr<const T> GetShared() const { return object_; }

 private:
  std::shared_ptr<T> object_;
};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_COW_PTR_H
