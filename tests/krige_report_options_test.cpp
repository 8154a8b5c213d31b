#include "stats/api/krige_report_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "platform/chem/mol_functions.h"
#include "platform/chem/smiles.h"
#include "platform/system/error_handler.h"
#include "stats/krige_report_format.h"

namespace QVStats {
namespace {

using QVSystem::QVColor;
using QVSystem::QVErrorLevel;
using QVSystem::QVScopedRecordingSink;

constexpr double kLargest = std::numeric_limits<double>::max();

// The printed text by hand, from the rules of GetFormatString.
TEST(KrigeReportFormat, HasTheFiguresAskedFor) {
  const struct {
    double value;
    unsigned int figures;
    const char* format;
    const char* text;
  } cases[] = {
      {123.456, 3, "%.0f", "123"},          {1.23456, 3, "%.2f", "1.23"},
      {0.000001234, 3, "%.2e", "1.23e-06"}, {1.5, 0, "%f", "1.500000"},
      {0.0, 4, "%.4f", "0.0000"},           {1.0, 4, "%.3f", "1.000"},
      {0.5, 4, "%.5f", "0.50000"},          {-123.456, 4, "%.1f", "-123.5"},
      {100000.0, 4, "%.3e", "1.000e+05"},   {99999.0, 4, "%.0f", "99999"},
      {1234567.0, 7, "%.0f", "1234567"},    {1e-5, 2, "%.7f", "0.0000100"},
      {9.9999999, 3, "%.1f", "10.0"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(GetFormatString(row.value, row.figures), row.format) << row.value;
    EXPECT_EQ(FormatNumber(row.value, row.figures), row.text) << row.value;
  }
  EXPECT_EQ(GetFormatString(std::numeric_limits<double>::quiet_NaN(), 3), "%f");
}

TEST(KrigeReportOptions, ClassesAreTheIntervalsBetweenSortedBoundaries) {
  QVKrigeReportOptions options;
  EXPECT_EQ(options.GetNumClassifications(), 0u);
  for (const double boundary :
       {5.0, 1.0, 5.0, kLargest, -kLargest, std::numeric_limits<double>::quiet_NaN()})
    options.PushClassificationBoundry(boundary);
  ASSERT_EQ(options.GetNumClassifications(), 3u);
  const double bounds[] = {-kLargest, 1.0, 5.0, kLargest};
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(options.GetClassificationLowerBound(i), bounds[i]);
    EXPECT_EQ(options.GetClassificationUpperBound(i), bounds[i + 1]);
  }
  const QVScopedRecordingSink sink;
  options.GetClassificationLowerBound(3);
  options.GetClassificationUpperBound(3);
  options.GetClassificationColor(3);
  EXPECT_EQ(sink.GetTexts(QVErrorLevel::Fatal).size(), 3u);
}

TEST(KrigeReportOptions, ColoursOfClassesAreTheCallersFromTwoOn) {
  QVKrigeReportOptions options;
  for (int boundary = 0; boundary < 7; ++boundary) options.PushClassificationBoundry(boundary);
  EXPECT_EQ(options.GetClassificationColor(3), QVColor(255, 0, 255));
  EXPECT_EQ(options.GetClassificationColor(6), QVSystem::QVRed) << "six colours, then over again";
  options.PushClassificationColor(QVSystem::QVWhite);
  EXPECT_EQ(options.GetClassificationColor(0), QVSystem::QVRed);
  options.PushClassificationColor(QVSystem::QVBlack);
  EXPECT_EQ(options.GetClassificationColor(3), QVSystem::QVBlack);
  options.ClearClassifications();
  EXPECT_EQ(options.GetNumClassifications(), 0u);
}

/// The molecular weight, for molecules of at least two atoms.
class WeightFxn : public QVChem::QVMolPropertyFxn {
 public:
  bool Has(const QVChem::QVMolBase& mol) const override { return mol.GetNumAtoms() > 1; }
  bool Has(const QVChem::QVMCMolBase& mol) const override { return mol.GetNumAtoms() > 1; }
  double Get(const QVChem::QVMolBase& mol) const override {
    return QVChem::QVCalculateMolecularWeight(mol);
  }
  double Get(const QVChem::QVMCMolBase& mol) const override {
    return QVChem::QVCalculateMolecularWeight(mol);
  }
  WeightFxn* CreateCopy() const override { return new WeightFxn; }
};

TEST(KrigeReportOptions, ListSDPropertiesBeforeComputedOnes) {
  QVKrigeReportOptions options;
  options.PushProperty(WeightFxn(), "MW", 4).PushSDProperty("pKa").PushSDProperty("id", "Number");
  const QVKrigeReportOptions copy(options);
  options.ClearProperties();
  EXPECT_EQ(options.GetNumProperties(), 0u);
  ASSERT_EQ(copy.GetNumProperties(), 3u);
  EXPECT_EQ(copy.GetPropertyName(0), "pKa");
  EXPECT_EQ(copy.GetPropertyName(1), "Number");
  EXPECT_EQ(copy.GetPropertyName(2), "MW");

  QVChem::QVGraphMol ethanol;
  ASSERT_TRUE(QVChem::QVParseSmiles(ethanol, "CCO"));
  ethanol.SetSDData("id", "X7");
  EXPECT_EQ(copy.GetPropertyValue(0, ethanol), "");
  EXPECT_EQ(copy.GetPropertyValue(1, ethanol), "X7");
  EXPECT_EQ(copy.GetPropertyValue(2, ethanol), "46.07");  // C2H6O, IUPAC atomic weights
  QVChem::QVGraphMol methane;
  ASSERT_TRUE(QVChem::QVParseSmiles(methane, "C"));
  EXPECT_EQ(copy.GetPropertyValue(2, methane), "") << "the function has no value for it";

  const QVScopedRecordingSink sink;
  EXPECT_EQ(copy.GetPropertyName(3), "");
  EXPECT_EQ(copy.GetPropertyValue(3, ethanol), "");
  EXPECT_EQ(sink.GetTexts(QVErrorLevel::Fatal).size(), 2u);
}

TEST(KrigeReportOptions, FindSDDataOfConformersInOrder) {
  QVChem::QVGraphMol conformer;
  ASSERT_TRUE(QVChem::QVParseSmiles(conformer, "CCO"));
  QVChem::QVMCMol mol;
  for (const char* value : {"first", "second"}) {
    conformer.SetSDData("name", value);
    ASSERT_TRUE(mol.AddConformer(conformer));
  }
  mol.SetActiveConformer(1);
  mol.DeleteSDData("name");
  QVKrigeReportOptions options;
  options.PushSDProperty("name");
  const QVChem::QVMCMolBase& base = mol;
  EXPECT_EQ(options.GetPropertyValue(0, base), "second") << "the active conformer's";
  mol.GetConformer(1).DeleteSDData("name");
  EXPECT_EQ(options.GetPropertyValue(0, base), "first");
  mol.SetSDData("name", "own");
  EXPECT_EQ(options.GetPropertyValue(0, base), "own");
}

TEST(KrigeReportOptions, ClearGoesBackToTheDefaults) {
  QVKrigeReportOptions options;
  options.SetTitle("t").SetContributionBaseline(3.0).SetUnlog(true).PushSDProperty("x");
  EXPECT_TRUE(options.GetHasContributionBaseline());
  EXPECT_EQ(QVKrigeReportOptions(options).ClearContributionBaseline().GetContributionBaseline(),
            0.0);
  options.Clear();
  EXPECT_EQ(options.GetTitle(), "");
  EXPECT_EQ(options.GetResponseName(), "Response");
  EXPECT_EQ(options.GetResponseSignificantFigures(), 4u);
  EXPECT_EQ(options.GetContributionPositiveColor(), QVSystem::QVBlue);
  EXPECT_EQ(options.GetContributionNegativeColor(), QVSystem::QVRed);
  EXPECT_FALSE(options.GetHasContributionBaseline());
  EXPECT_FALSE(options.GetUnlog());
  EXPECT_TRUE(options.GetShowKrigeDetails());
  EXPECT_EQ(options.GetNumProperties(), 0u);
}

}  // namespace
}  // namespace QVStats
