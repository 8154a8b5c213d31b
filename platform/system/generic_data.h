/// \file
/// \brief Values of any type attached to an object under a tag, and the checked downcast behind
/// them.
#ifndef QV_PLATFORM_SYSTEM_GENERIC_DATA_H
#define QV_PLATFORM_SYSTEM_GENERIC_DATA_H

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "platform/system/error_handler.h"
#include "platform/system/export.h"
#include "platform/system/iter.h"

namespace QVSystem {

/// The readable name of a type, for example "double" or "QVStats::QVVseprPropFP".
QVSYSTEM_EXPORT std::string QVGetTypeName(const std::type_info& type);

/// "dynamic_cast<To * >( From * ) failed on '0x55d0', that points to a Actual".
QVSYSTEM_EXPORT std::string QVGetCastFailureText(const std::type_info& to,
                                                 const std::type_info& from, const void* object,
                                                 const std::type_info& actual);

/// `dynamic_cast` to a class derived from that of the pointer. An object of another class is a
/// fatal report with the text of QVGetCastFailureText, followed by the assertion line.
/// \return null for a null pointer and after a failure.
template <class To, class From>
const To* QVDowncastChecked(const From* object) {
  const To* const result = dynamic_cast<const To*>(object);
  if (object && !result)
    QVReportFailedAssertion(QVGetCastFailureText(typeid(To), typeid(From), object, typeid(*object)),
                            __LINE__, __FILE__);
  return result;
}

/// One value of any type. Values are immutable, so copies of an object share them.
class QVSYSTEM_EXPORT QVBaseData {
 public:
  virtual ~QVBaseData();
  virtual const std::type_info& GetType() const = 0;

  template <class T>
  bool IsOfType() const {
    return GetType() == typeid(T);
  }
};

/// A value of type T.
template <class T>
class QVSYSTEM_EXPORT QVTypedData : public QVBaseData {
 public:
  explicit QVTypedData(T value) : value_(std::move(value)) {}
  const std::type_info& GetType() const override { return typeid(T); }
  const T& GetValue() const { return value_; }

 private:
  const T value_;
};

/// An object that carries generic data: under each tag a list of values, each of any type.
///
/// Copying the object shares the values, so it costs a pointer each. Types match exactly: a value
/// set as a float is not found as a double.
class QVSYSTEM_EXPORT QVDataHolder {
 public:
  /// Replaces everything under the tag by one value.
  template <class T>
  void SetData(std::string_view tag, T value) {
    DeleteData(tag);
    AddData(tag, std::move(value));
  }

  /// Adds a value behind those that the tag already holds.
  template <class T>
  void AddData(std::string_view tag, T value) {
    data_.push_back({std::string(tag), std::make_shared<const QVTypedData<T>>(std::move(value))});
  }

  /// Whether there is a value of any type, or of type T, under the tag.
  bool HasData(std::string_view tag) const;
  template <class T>
  bool HasData(std::string_view tag) const {
    return FindData<T>(tag) != nullptr;
  }

  /// \return the first value of type T under the tag; null when there is none. The pointer is good
  /// until the tag is set or deleted on every object that shares the value.
  template <class T>
  const T* FindData(std::string_view tag) const {
    for (const Entry& entry : data_)
      if (entry.tag == tag && entry.value->IsOfType<T>()) return Read<T>(*entry.value);
    return nullptr;
  }

  /// The first value under the tag, which must be of type T: another type is the fatal report of
  /// QVDowncastChecked, a tag without data a fatal assertion, and the result is then T().
  template <class T>
  T GetData(std::string_view tag) const {
    const auto entry = std::find_if(data_.begin(), data_.end(),
                                    [&](const Entry& candidate) { return candidate.tag == tag; });
    if (!QV_ASSERT(entry != data_.end())) return T();
    const T* const value = Read<T>(*entry->value);
    return value ? *value : T();
  }

  /// Removes everything under the tag. \return whether there was anything.
  bool DeleteData(std::string_view tag);
  void ClearData() { data_.clear(); }

  /// The values under a tag in the order of their adding; they live as long as the iterator.
  QVIter<const QVBaseData> GetDataIter(std::string_view tag) const;
  /// The tags, each once, in the order of their first value.
  std::vector<std::string> GetDataTags() const;

 private:
  struct Entry {
    std::string tag;
    std::shared_ptr<const QVBaseData> value;
  };

  template <class T>
  static const T* Read(const QVBaseData& data) {
    const auto* const typed = QVDowncastChecked<QVTypedData<T>>(&data);
    return typed ? &typed->GetValue() : nullptr;
  }

  std::vector<Entry> data_;
};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_GENERIC_DATA_H
