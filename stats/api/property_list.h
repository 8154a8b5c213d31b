/// \file
/// \brief Numbers that describe an element: one property, and an ordered list of properties.
///
/// Universal kriging models the mean of a response as a linear function of such a list (the
/// drift); data models take one as their predictors.
#ifndef QVSTATS_API_PROPERTY_LIST_H
#define QVSTATS_API_PROPERTY_LIST_H

#include <cstddef>

namespace QVStats {

/// Reads one number from an element.
template <class T>
class QVPropertyFxn {
 public:
  /// Whether `element` has the property. Get() may be called only when it does.
  virtual bool Has(const T& element) const = 0;
  /// \return the property of `element`, in the property's own unit.
  virtual double Get(const T& element) const = 0;
  /// \return a new copy that the caller owns.
  virtual QVPropertyFxn* CreateCopy() const = 0;
  virtual ~QVPropertyFxn() = default;
};

/// Reads a fixed number of properties from an element, in a fixed order.
template <class T>
class QVPropertyListFxn {
 public:
  /// Whether `element` has every property of the list. An element without them takes no part: it
  /// is refused as training and gets no prediction.
  virtual bool HasProperties(const T& element) const = 0;
  /// \return the number of properties, the same for every element.
  virtual std::size_t GetSize() const = 0;
  /// \return property `k` of `element`, 0 <= k < GetSize(), HasProperties(element).
  virtual double GetProperty(const T& element, std::size_t k) const = 0;
  /// \return a new copy that the caller owns.
  virtual QVPropertyListFxn* CreateCopy() const = 0;
  virtual ~QVPropertyListFxn() = default;
};

}  // namespace QVStats

#endif  // QVSTATS_API_PROPERTY_LIST_H
