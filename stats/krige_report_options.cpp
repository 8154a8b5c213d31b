#include "stats/api/krige_report_options.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <set>
#include <vector>

#include "platform/system/error_handler.h"
#include "platform/system/text.h"
#include "stats/krige_report_format.h"

namespace QVStats {

using QVSystem::QVColor;

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

constexpr QVColor kClassificationColors[] = {QVSystem::QVRed,      QVSystem::QVBlue,
                                             QVSystem::QVGreen,    QVColor(255, 0, 255),
                                             QVColor(0, 255, 255), QVColor(255, 255, 0)};

/// A text that a molecule carries, and its caption.
struct SDProperty {
  std::string tag;
  std::string name;
};

struct ComputedProperty {
  QVSystem::QVCopyPtr<QVChem::QVMolPropertyFxn> function;
  std::string name;
  unsigned int significantFigures;
};

const std::string& GetSDData(const QVChem::QVMolBase& mol, const std::string& tag) {
  return mol.GetSDData(tag);
}

const std::string& GetSDData(const QVChem::QVMCMolBase& mol, const std::string& tag) {
  if (mol.HasSDData(tag)) return mol.GetSDData(tag);
  if (mol.GetActiveConformer().HasSDData(tag)) return mol.GetActiveConformer().GetSDData(tag);
  for (unsigned int i = 0; i < mol.GetNumConformers(); ++i)
    if (mol.GetConformer(i).HasSDData(tag)) return mol.GetConformer(i).GetSDData(tag);
  return mol.GetSDData(tag);
}

}  // namespace

std::string GetFormatString(double value, unsigned int n) {
  if (n == 0 || !std::isfinite(value)) return "%f";
  if (value == 0.0) return "%." + std::to_string(n) + "f";
  const double logarithm = std::log10(std::abs(value));
  const double raised = logarithm + 1e-6;
  const double limit = n > 5 ? n : 5.0;
  if (logarithm < -5.000001 || raised > limit) return "%." + std::to_string(n - 1) + "e";
  const long digits = std::lround(std::floor(raised)) + (logarithm > -1e-6 ? 1 : 0);
  return "%." + std::to_string(std::max(0L, static_cast<long>(n) - digits)) + "f";
}

std::string FormatNumber(double value, unsigned int n) {
  return QVSystem::QVFormat(GetFormatString(value, n).c_str(), value);
}

struct QVKrigeReportOptionsImpl {
  QVKrigeReportOptionsImpl* CreateCopy() const { return new QVKrigeReportOptionsImpl(*this); }

  template <class Mol>
  std::string GetPropertyValue(unsigned int i, const Mol& mol) const {
    if (i < sdProperties.size()) return GetSDData(mol, sdProperties[i].tag);
    i -= static_cast<unsigned int>(sdProperties.size());
    if (!QV_ASSERT(i < computedProperties.size())) return "";
    const ComputedProperty& property = computedProperties[i];
    if (!property.function->Has(mol)) return "";
    return FormatNumber(property.function->Get(mol), property.significantFigures);
  }

  std::string title;
  std::string responseName = "Response";
  bool unlog = false;
  unsigned int responseSignificantFigures = 4;
  bool showConfidence = false;
  bool higherIsBetter = true;
  bool hasContributionBaseline = false;
  double contributionBaseline = 0.0;
  QVColor contributionPositiveColor = QVSystem::QVBlue;
  QVColor contributionNegativeColor = QVSystem::QVRed;
  std::string contributionPositiveLabel;
  std::string contributionNegativeLabel;
  std::vector<SDProperty> sdProperties;
  std::vector<ComputedProperty> computedProperties;
  std::set<double> classificationBoundaries;
  std::vector<QVColor> classificationColors;
  bool showKrigeDetails = true;
};

QVKrigeReportOptions::QVKrigeReportOptions() : impl_(new QVKrigeReportOptionsImpl) {}
QVKrigeReportOptions::QVKrigeReportOptions(const QVKrigeReportOptions& other) = default;
QVKrigeReportOptions& QVKrigeReportOptions::operator=(const QVKrigeReportOptions& other) = default;
QVKrigeReportOptions::~QVKrigeReportOptions() = default;

const std::string& QVKrigeReportOptions::GetTitle() const { return impl_->title; }

QVKrigeReportOptions& QVKrigeReportOptions::SetTitle(const std::string& title) {
  impl_->title = title;
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::ClearTitle() { return SetTitle(""); }

const std::string& QVKrigeReportOptions::GetResponseName() const { return impl_->responseName; }

QVKrigeReportOptions& QVKrigeReportOptions::SetResponseName(const std::string& name) {
  impl_->responseName = name;
  return *this;
}

bool QVKrigeReportOptions::GetUnlog() const { return impl_->unlog; }

QVKrigeReportOptions& QVKrigeReportOptions::SetUnlog(bool unlog) {
  impl_->unlog = unlog;
  return *this;
}

unsigned int QVKrigeReportOptions::GetResponseSignificantFigures() const {
  return impl_->responseSignificantFigures;
}

QVKrigeReportOptions& QVKrigeReportOptions::SetResponseSignificantFigures(unsigned int figures) {
  impl_->responseSignificantFigures = figures;
  return *this;
}

bool QVKrigeReportOptions::GetShowConfidence() const { return impl_->showConfidence; }

QVKrigeReportOptions& QVKrigeReportOptions::SetShowConfidence(bool show) {
  impl_->showConfidence = show;
  return *this;
}

bool QVKrigeReportOptions::GetHigherIsBetter() const { return impl_->higherIsBetter; }

QVKrigeReportOptions& QVKrigeReportOptions::SetHigherIsBetter(bool higherIsBetter) {
  impl_->higherIsBetter = higherIsBetter;
  return *this;
}

bool QVKrigeReportOptions::GetShowKrigeDetails() const { return impl_->showKrigeDetails; }

QVKrigeReportOptions& QVKrigeReportOptions::SetShowKrigeDetails(bool show) {
  impl_->showKrigeDetails = show;
  return *this;
}

bool QVKrigeReportOptions::GetHasContributionBaseline() const {
  return impl_->hasContributionBaseline;
}

double QVKrigeReportOptions::GetContributionBaseline() const { return impl_->contributionBaseline; }

QVKrigeReportOptions& QVKrigeReportOptions::SetContributionBaseline(double baseline) {
  impl_->hasContributionBaseline = true;
  impl_->contributionBaseline = baseline;
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::ClearContributionBaseline() {
  impl_->hasContributionBaseline = false;
  impl_->contributionBaseline = 0.0;
  return *this;
}

const QVColor& QVKrigeReportOptions::GetContributionPositiveColor() const {
  return impl_->contributionPositiveColor;
}

QVKrigeReportOptions& QVKrigeReportOptions::SetContributionPositiveColor(const QVColor& color) {
  impl_->contributionPositiveColor = color;
  return *this;
}

const QVColor& QVKrigeReportOptions::GetContributionNegativeColor() const {
  return impl_->contributionNegativeColor;
}

QVKrigeReportOptions& QVKrigeReportOptions::SetContributionNegativeColor(const QVColor& color) {
  impl_->contributionNegativeColor = color;
  return *this;
}

const std::string& QVKrigeReportOptions::GetContributionPositiveLabel() const {
  return impl_->contributionPositiveLabel;
}

QVKrigeReportOptions& QVKrigeReportOptions::SetContributionPositiveLabel(const std::string& label) {
  impl_->contributionPositiveLabel = label;
  return *this;
}

const std::string& QVKrigeReportOptions::GetContributionNegativeLabel() const {
  return impl_->contributionNegativeLabel;
}

QVKrigeReportOptions& QVKrigeReportOptions::SetContributionNegativeLabel(const std::string& label) {
  impl_->contributionNegativeLabel = label;
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::ClearContributionLabels() {
  return SetContributionPositiveLabel("").SetContributionNegativeLabel("");
}

QVKrigeReportOptions& QVKrigeReportOptions::PushSDProperty(const std::string& tag) {
  return PushSDProperty(tag, tag);
}

QVKrigeReportOptions& QVKrigeReportOptions::PushSDProperty(const std::string& tag,
                                                           const std::string& name) {
  impl_->sdProperties.push_back({tag, name});
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::PushProperty(const QVChem::QVMolPropertyFxn& property,
                                                         const std::string& name,
                                                         unsigned int significantFigures) {
  impl_->computedProperties.push_back(
      {QVSystem::QVCopyPtr<QVChem::QVMolPropertyFxn>(property.CreateCopy()), name,
       significantFigures});
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::ClearProperties() {
  impl_->sdProperties.clear();
  impl_->computedProperties.clear();
  return *this;
}

unsigned int QVKrigeReportOptions::GetNumProperties() const {
  return static_cast<unsigned int>(impl_->sdProperties.size() + impl_->computedProperties.size());
}

std::string QVKrigeReportOptions::GetPropertyName(unsigned int i) const {
  if (!QV_ASSERT(i < GetNumProperties())) return "";
  const std::size_t numSD = impl_->sdProperties.size();
  return i < numSD ? impl_->sdProperties[i].name : impl_->computedProperties[i - numSD].name;
}

std::string QVKrigeReportOptions::GetPropertyValue(unsigned int i,
                                                   const QVChem::QVMolBase& mol) const {
  return impl_->GetPropertyValue(i, mol);
}

std::string QVKrigeReportOptions::GetPropertyValue(unsigned int i,
                                                   const QVChem::QVMCMolBase& mol) const {
  return impl_->GetPropertyValue(i, mol);
}

QVKrigeReportOptions& QVKrigeReportOptions::PushClassificationBoundry(double boundary) {
  // Written so that a NaN, which has no place in an ordered set, is ignored too.
  if (std::abs(boundary) < kLargest) impl_->classificationBoundaries.insert(boundary);
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::PushClassificationColor(const QVColor& color) {
  impl_->classificationColors.push_back(color);
  return *this;
}

QVKrigeReportOptions& QVKrigeReportOptions::ClearClassifications() {
  impl_->classificationBoundaries.clear();
  impl_->classificationColors.clear();
  return *this;
}

unsigned int QVKrigeReportOptions::GetNumClassifications() const {
  const std::size_t boundaries = impl_->classificationBoundaries.size();
  return boundaries == 0 ? 0 : static_cast<unsigned int>(boundaries) + 1;
}

double QVKrigeReportOptions::GetClassificationLowerBound(unsigned int i) const {
  if (!QV_ASSERT(i < GetNumClassifications())) return 0.0;
  return i == 0 ? -kLargest : *std::next(impl_->classificationBoundaries.begin(), i - 1);
}

double QVKrigeReportOptions::GetClassificationUpperBound(unsigned int i) const {
  if (!QV_ASSERT(i < GetNumClassifications())) return 0.0;
  return i + 1 == GetNumClassifications() ? kLargest
                                          : *std::next(impl_->classificationBoundaries.begin(), i);
}

QVColor QVKrigeReportOptions::GetClassificationColor(unsigned int i) const {
  if (!QV_ASSERT(i < GetNumClassifications())) return QVSystem::QVBlack;
  const std::vector<QVColor>& chosen = impl_->classificationColors;
  return chosen.size() > 1 ? chosen[i % chosen.size()]
                           : kClassificationColors[i % std::size(kClassificationColors)];
}

QVKrigeReportOptions& QVKrigeReportOptions::Clear() {
  *impl_ = QVKrigeReportOptionsImpl();
  return *this;
}

}  // namespace QVStats
