/// \file
/// \brief Forward iterators as values, whatever container stands behind them.
#ifndef QV_PLATFORM_SYSTEM_ITER_H
#define QV_PLATFORM_SYSTEM_ITER_H

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "platform/system/copy_ptr.h"
#include "platform/system/functors.h"

namespace QVSystem {

/// What a QVIter steps through.
template <class T>
class QVIterBase {
 public:
  virtual ~QVIterBase() = default;
  virtual bool IsValid() const = 0;
  virtual T& Get() const = 0;
  virtual void Increment() = 0;
  virtual QVIterBase* CreateCopy() const = 0;
};

/// A forward iterator over Ts that knows its end: true while it stands on an element.
///
///     for (QVIter<const std::string> name = table.GetNames(); name; ++name) Print(*name);
///     for (const std::string& name : table.GetNames()) Print(name);
///
/// A default-constructed iterator is at its end. The elements must outlive the iterator.
template <class T>
class QVIter {
 public:
  using value_type = std::remove_const_t<T>;
  using reference = T&;
  using pointer = T*;
  using difference_type = std::ptrdiff_t;
  using iterator_category = std::input_iterator_tag;

  QVIter() = default;
  /// Takes ownership.
  explicit QVIter(QVIterBase<T>* base) : base_(base) {}

  explicit operator bool() const { return base_ && base_->IsValid(); }
  T& operator*() const { return base_->Get(); }
  T* operator->() const { return &base_->Get(); }
  QVIter& operator++() {
    base_->Increment();
    return *this;
  }
  QVIter operator++(int) {
    QVIter before(*this);
    ++*this;
    return before;
  }

  /// Range-for: from where the iterator stands to its end.
  QVIter begin() const { return *this; }
  QVIter end() const { return QVIter(); }
  /// Only as the test for the end of a range.
  friend bool operator!=(const QVIter& a, const QVIter& b) {
    return static_cast<bool>(a) != static_cast<bool>(b);
  }
  friend bool operator==(const QVIter& a, const QVIter& b) { return !(a != b); }

 private:
  QVCopyPtr<QVIterBase<T>> base_;
};

/// Steps through [current, end) of any standard iterators.
template <class T, class Iterator>
class QVRangeIter : public QVIterBase<T> {
 public:
  QVRangeIter(Iterator current, Iterator end) : current_(current), end_(end) {}
  bool IsValid() const override { return current_ != end_; }
  T& Get() const override { return *current_; }
  void Increment() override { ++current_; }
  QVRangeIter* CreateCopy() const override { return new QVRangeIter(*this); }

 private:
  Iterator current_;
  Iterator end_;
};

/// Steps through a container that it keeps alive.
template <class T, class Container>
class QVSharedRangeIter : public QVIterBase<T> {
 public:
  explicit QVSharedRangeIter(std::shared_ptr<Container> container)
      : container_(std::move(container)), current_(std::begin(*container_)) {}
  bool IsValid() const override { return current_ != std::end(*container_); }
  T& Get() const override { return *current_; }
  void Increment() override { ++current_; }
  QVSharedRangeIter* CreateCopy() const override { return new QVSharedRangeIter(*this); }

 private:
  std::shared_ptr<Container> container_;
  decltype(std::begin(std::declval<Container&>())) current_;
};

/// Steps only through the elements that satisfy a predicate.
template <class T>
class QVPredIter : public QVIterBase<T> {
 public:
  QVPredIter(QVIter<T> iter, const QVUnaryPredicate<std::remove_const_t<T>>& predicate)
      : iter_(std::move(iter)), predicate_(predicate.CreateCopy()) {
    SkipRefused();
  }
  bool IsValid() const override { return static_cast<bool>(iter_); }
  T& Get() const override { return *iter_; }
  void Increment() override {
    ++iter_;
    SkipRefused();
  }
  QVPredIter* CreateCopy() const override { return new QVPredIter(*this); }

 private:
  void SkipRefused() {
    while (iter_ && !(*predicate_)(*iter_)) ++iter_;
  }

  QVIter<T> iter_;
  QVCopyPtr<QVUnaryPredicate<std::remove_const_t<T>>> predicate_;
};

/// An iterator over a whole container, which must outlive it.
template <class T, class Container>
QVIter<T> QVMakeIter(Container& container) {
  return QVIter<T>(new QVRangeIter<T, decltype(std::begin(container))>(std::begin(container),
                                                                       std::end(container)));
}

/// An iterator over a container that it shares and keeps alive.
template <class T, class Container>
QVIter<T> QVMakeSharedIter(std::shared_ptr<Container> container) {
  return QVIter<T>(new QVSharedRangeIter<T, Container>(std::move(container)));
}

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_ITER_H
