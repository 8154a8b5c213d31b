/// \file
/// \brief A pointer that owns a polymorphic object and copies it with itself.
#ifndef QV_PLATFORM_SYSTEM_COPY_PTR_H
#define QV_PLATFORM_SYSTEM_COPY_PTR_H

#include <memory>
#include <utility>

namespace QVSystem {

/// Owns one object of a class with a virtual `T* CreateCopy() const` (the caller owns the copy).
/// Copying the pointer copies the object; a null pointer copies to a null pointer. A value handle
/// that holds one needs no copy, assignment, move or destructor of its own.
template <class T>
class QVCopyPtr {
 public:
  QVCopyPtr() = default;
  /// Takes ownership.
  explicit QVCopyPtr(T* object) : object_(object) {}
  explicit QVCopyPtr(std::unique_ptr<T> object) : object_(std::move(object)) {}
  QVCopyPtr(const QVCopyPtr& other) : object_(Copy(other.get())) {}
  QVCopyPtr(QVCopyPtr&& other) noexcept = default;
  QVCopyPtr& operator=(const QVCopyPtr& other) {
    if (this != &other) object_.reset(Copy(other.get()));
    return *this;
  }
  QVCopyPtr& operator=(QVCopyPtr&& other) noexcept = default;
  ~QVCopyPtr() = default;

  T* get() const { return object_.get(); }
  T& operator*() const { return *object_; }
  T* operator->() const { return object_.get(); }
  explicit operator bool() const { return object_ != nullptr; }
  void reset(T* object = nullptr) { object_.reset(object); }
  T* release() { return object_.release(); }

 private:
  /// CreateCopy may return a base class of T where T overrides it without a covariant type.
  static T* Copy(const T* object) {
    return object ? static_cast<T*>(object->CreateCopy()) : nullptr;
  }

  std::unique_ptr<T> object_;
};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_COPY_PTR_H
