#include "platform/system/generic_data.h"

#include <cxxabi.h>

#include <cstdlib>

#include "platform/system/text.h"

namespace QVSystem {

namespace {

/// Steps through a list of shared values that it keeps alive.
class DataIter : public QVIterBase<const QVBaseData> {
 public:
  explicit DataIter(std::vector<std::shared_ptr<const QVBaseData>> values)
      : values_(std::move(values)) {}
  bool IsValid() const override { return current_ < values_.size(); }
  const QVBaseData& Get() const override { return *values_[current_]; }
  void Increment() override { ++current_; }
  DataIter* CreateCopy() const override { return new DataIter(*this); }

 private:
  std::vector<std::shared_ptr<const QVBaseData>> values_;
  std::size_t current_ = 0;
};

}  // namespace

std::string QVGetTypeName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  return status == 0 && name ? name.get() : type.name();
}

std::string QVGetCastFailureText(const std::type_info& to, const std::type_info& from,
                                 const void* object, const std::type_info& actual) {
  // "%p" writes the 0x itself.
  return "dynamic_cast<" + QVGetTypeName(to) + " * >( " + QVGetTypeName(from) + " * ) failed on '" +
         QVFormat("%p", object) + "', that points to a " + QVGetTypeName(actual);
}

QVBaseData::~QVBaseData() = default;

bool QVDataHolder::HasData(std::string_view tag) const {
  return std::any_of(data_.begin(), data_.end(),
                     [&](const Entry& entry) { return entry.tag == tag; });
}

bool QVDataHolder::DeleteData(std::string_view tag) {
  const auto end = std::remove_if(data_.begin(), data_.end(),
                                  [&](const Entry& entry) { return entry.tag == tag; });
  const bool found = end != data_.end();
  data_.erase(end, data_.end());
  return found;
}

QVIter<const QVBaseData> QVDataHolder::GetDataIter(std::string_view tag) const {
  std::vector<std::shared_ptr<const QVBaseData>> values;
  for (const Entry& entry : data_)
    if (entry.tag == tag) values.push_back(entry.value);
  return QVIter<const QVBaseData>(new DataIter(std::move(values)));
}

std::vector<std::string> QVDataHolder::GetDataTags() const {
  std::vector<std::string> tags;
  for (const Entry& entry : data_)
    if (std::find(tags.begin(), tags.end(), entry.tag) == tags.end()) tags.push_back(entry.tag);
  return tags;
}

}  // namespace QVSystem
