/// \file
/// \brief What a caller may choose about the report of a molecular prediction.
#ifndef QVSTATS_API_KRIGE_REPORT_OPTIONS_H
#define QVSTATS_API_KRIGE_REPORT_OPTIONS_H

#include <string>

#include "platform/chem/mol.h"
#include "platform/chem/mol_properties.h"
#include "platform/system/color.h"
#include "platform/system/copy_ptr.h"
#include "stats/api/export.h"

namespace QVStats {

struct QVKrigeReportOptionsImpl;

/// The options of QVKrigeRenderReport and its panels. A value; setters return the object.
///
/// An index past the end is a fatal assertion and gives "", 0 or black.
class QVSTATS_EXPORT QVKrigeReportOptions {
 public:
  QVKrigeReportOptions();
  QVKrigeReportOptions(const QVKrigeReportOptions& other);
  QVKrigeReportOptions& operator=(const QVKrigeReportOptions& other);
  ~QVKrigeReportOptions();

  /// \name Title and response
  /// @{

  /// Stands above the page; "" (at first) for none.
  const std::string& GetTitle() const;
  QVKrigeReportOptions& SetTitle(const std::string& title);
  QVKrigeReportOptions& ClearTitle();

  /// The predicted property, as captions name it; "Response" at first.
  const std::string& GetResponseName() const;
  QVKrigeReportOptions& SetResponseName(const std::string& name);

  /// Whether responses are base-10 logarithms that are shown as 10^value; false at first.
  bool GetUnlog() const;
  QVKrigeReportOptions& SetUnlog(bool unlog);

  /// Of printed responses, 4 at first; 0 prints six decimals.
  unsigned int GetResponseSignificantFigures() const;
  QVKrigeReportOptions& SetResponseSignificantFigures(unsigned int figures);

  /// Whether a 95 % interval (1.96 standard deviations to either side) follows printed responses;
  /// false at first.
  bool GetShowConfidence() const;
  QVKrigeReportOptions& SetShowConfidence(bool show);

  /// Kept for the caller: no drawing looks at it. True at first.
  bool GetHigherIsBetter() const;
  QVKrigeReportOptions& SetHigherIsBetter(bool higherIsBetter);

  /// Whether the variogram and the model quality are drawn; true at first.
  bool GetShowKrigeDetails() const;
  QVKrigeReportOptions& SetShowKrigeDetails(bool show);
  /// @}

  /// \name Contributions of atoms
  /// @{

  /// The response that contributions raise or lower. Without one, as at first, it is the
  /// predicted response; the getter then gives 0.
  bool GetHasContributionBaseline() const;
  double GetContributionBaseline() const;
  QVKrigeReportOptions& SetContributionBaseline(double baseline);
  QVKrigeReportOptions& ClearContributionBaseline();

  /// Of atoms that raise (blue at first) and lower (red at first) the prediction.
  const QVSystem::QVColor& GetContributionPositiveColor() const;
  QVKrigeReportOptions& SetContributionPositiveColor(const QVSystem::QVColor& color);
  const QVSystem::QVColor& GetContributionNegativeColor() const;
  QVKrigeReportOptions& SetContributionNegativeColor(const QVSystem::QVColor& color);

  /// Texts of the legend; "" (at first) gives " Contributes to Higher <response name>" and "Lower".
  const std::string& GetContributionPositiveLabel() const;
  QVKrigeReportOptions& SetContributionPositiveLabel(const std::string& label);
  const std::string& GetContributionNegativeLabel() const;
  QVKrigeReportOptions& SetContributionNegativeLabel(const std::string& label);
  QVKrigeReportOptions& ClearContributionLabels();
  /// @}

  /// \name Properties listed for the molecule
  /// Those read from SD data come first, then the computed ones; each kind in the order of pushing.
  /// @{

  /// Shows the SD data of a tag, under the tag itself or a name of its own.
  QVKrigeReportOptions& PushSDProperty(const std::string& tag);
  QVKrigeReportOptions& PushSDProperty(const std::string& tag, const std::string& name);
  /// Shows a computed property, printed with a number of significant figures. The function is
  /// copied.
  QVKrigeReportOptions& PushProperty(const QVChem::QVMolPropertyFxn& property,
                                     const std::string& name, unsigned int significantFigures);
  QVKrigeReportOptions& ClearProperties();

  unsigned int GetNumProperties() const;
  std::string GetPropertyName(unsigned int i) const;
  /// \return "" where the molecule has no such data, or the function no value for it.
  std::string GetPropertyValue(unsigned int i, const QVChem::QVMolBase& mol) const;
  /// SD data is that of the molecule itself, else of its active conformer, else of the first
  /// conformer that has it.
  std::string GetPropertyValue(unsigned int i, const QVChem::QVMCMolBase& mol) const;
  /// @}

  /// \name Classes of the response
  /// Boundaries b1 < b2 < ... make the classes below b1, from b1 to b2, ..., above the last.
  /// @{

  /// Ignores a boundary that is there already, and those that are not below the largest finite
  /// double in magnitude.
  QVKrigeReportOptions& PushClassificationBoundry(double boundary);
  /// Colours of the classes in order; they start over when there are more classes. One alone is no
  /// choice: red, blue, green, magenta, cyan and yellow serve until there are two.
  QVKrigeReportOptions& PushClassificationColor(const QVSystem::QVColor& color);
  /// Drops boundaries and colours.
  QVKrigeReportOptions& ClearClassifications();

  /// One more than there are boundaries; 0 without any.
  unsigned int GetNumClassifications() const;
  /// The largest finite double, negative, for the first class.
  double GetClassificationLowerBound(unsigned int i) const;
  /// The largest finite double for the last class.
  double GetClassificationUpperBound(unsigned int i) const;
  QVSystem::QVColor GetClassificationColor(unsigned int i) const;
  /// @}

  /// Back to what a new object holds.
  QVKrigeReportOptions& Clear();

 private:
  QVSystem::QVCopyPtr<QVKrigeReportOptionsImpl> impl_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_REPORT_OPTIONS_H
