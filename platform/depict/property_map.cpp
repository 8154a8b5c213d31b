#include "platform/depict/property_map.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/system/text.h"

namespace QVPropDepict {
namespace {

/// How much of the full colour the largest value gets: black on it keeps its contrast.
constexpr double kStrength = 0.6;

/// The value of each atom; NaN where there is none.
std::vector<double> ReadValues(const QVChem::QVMolBase& mol, const std::string& tag) {
  std::vector<double> values;
  for (const QVChem::QVAtomBase atom : mol.GetAtoms()) {
    const double* const value = atom.GetDataHolder().FindData<double>(tag);
    values.push_back(value && std::isfinite(*value) ? *value : std::nan(""));
  }
  return values;
}

}  // namespace

QVSystem::QVColor QV2DPropMap::GetColor(double value, double min, double max) const {
  const bool isPositive = value > 0.0;
  const double bound = isPositive ? max : min;
  const double share = bound != 0.0 ? std::clamp(value / bound, 0.0, 1.0) : 0.0;
  return QVSystem::QVMixColors(background_, isPositive ? positive_ : negative_, kStrength * share);
}

bool QV2DPropMap::Render(QVDepict::QV2DMolDisplay& display, const QVChem::QVMolBase& mol,
                         const std::string& tag) const {
  if (!display.IsValid() || display.GetNumAtoms() != mol.GetNumAtoms()) return false;
  const std::vector<double> values = ReadValues(mol, tag);
  double min = 0.0;
  double max = 0.0;
  bool any = false;
  for (const double value : values) {
    if (std::isnan(value)) continue;
    any = true;
    min = std::min(min, value);
    max = std::max(max, value);
  }
  if (!any) return false;
  min = min_.value_or(min);
  max = max_.value_or(max);

  constexpr double kCarbonRadius = 1.7;
  constexpr double kCarbonHalo = 0.42;
  for (unsigned int i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i]) || values[i] == 0.0) continue;
    const double radius = mol.GetAtom(i).GetRadius();
    const double relative = radius > 0.0 ? std::clamp(radius / kCarbonRadius, 0.7, 1.25) : 1.0;
    display.SetAtomHalo(i, GetColor(values[i], min, max), kCarbonHalo * relative);
  }
  if (legendLocation_ == QVLegendLocation::Hidden) return true;
  QVDepict::QV2DMolDisplay::Legend legend;
  constexpr int kSteps = 32;
  for (int k = 0; k <= kSteps; ++k)
    legend.colors.push_back(GetColor(min + (max - min) * k / kSteps, min, max));
  legend.lowText = QVSystem::QVNumberToString(min, 3);
  legend.highText = QVSystem::QVNumberToString(max, 3);
  legend.fontScale = legendFontScale_;
  legend.left = legendLocation_ == QVLegendLocation::Left;
  display.SetLegend(std::move(legend));
  return true;
}

}  // namespace QVPropDepict
