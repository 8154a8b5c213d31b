/// \file
/// \brief The report of a molecular prediction: a page that shows why.
///
///     QVDepict::QVImage page(842.0, 595.0);
///     QVStats::QVKrigeReportOptions options;
///     options.SetTitle("Aspirin").SetResponseName("log S");
///     QVStats::QVKrigeRenderReport(page, result, mol, options, 3, 2);
///     QVDepict::QVWriteImage("aspirin.pdf", page);
///
/// Every function draws into all of an image, which may be a part of another one, and returns
/// whether it succeeded; a panel that could not be drawn makes the page false too. An invalid
/// result is never coloured, weighed or judged.
#ifndef QVSTATS_API_KRIGE_2D_MOL_DEPICT_H
#define QVSTATS_API_KRIGE_2D_MOL_DEPICT_H

#include <string>

#include "platform/chem/mol.h"
#include "platform/depict/image.h"
#include "stats/api/export.h"
#include "stats/api/krige_report_options.h"
#include "stats/api/mol_krige_result.h"

namespace QVStats {

/// Draws the page: the `rows` x `columns` training molecules of largest weight, the molecule with
/// the contributions of its atoms, the predicted value and its distribution, the properties of the
/// options, and, if the options show details, the variogram and the quality of the model. Without
/// rows or columns the place of the training molecules stays empty.
///
/// With an invalid result the molecule is drawn without colours and a warning says so; the answer
/// is false.
QVSTATS_EXPORT bool QVKrigeRenderReport(QVDepict::QVImageBase& image,
                                        const QVMolKrigeResult& result,
                                        const QVChem::QVMolBase& mol,
                                        const QVKrigeReportOptions& options, unsigned int rows,
                                        unsigned int columns);
QVSTATS_EXPORT bool QVKrigeRenderReport(QVDepict::QVImageBase& image,
                                        const QVMolKrigeResult& result,
                                        const QVChem::QVMCMolBase& mol,
                                        const QVKrigeReportOptions& options, unsigned int rows,
                                        unsigned int columns);

/// Writes the page, A4 across and without training molecules, to a file: PNG, SVG or PDF by the
/// extension of its name.
/// \return whether the file was written; a failure is reported as an error that names the file.
QVSTATS_EXPORT bool QVKrigeRenderReport(const std::string& fileName, const QVMolKrigeResult& result,
                                        const QVChem::QVMolBase& mol,
                                        const QVKrigeReportOptions& options);
QVSTATS_EXPORT bool QVKrigeRenderReport(const std::string& fileName, const QVMolKrigeResult& result,
                                        const QVChem::QVMCMolBase& mol,
                                        const QVKrigeReportOptions& options);

/// The predicted value as a headline; below it, on one axis from the smallest to the largest
/// training response, the probabilities of the classes, the prediction's place, a histogram of the
/// training responses in ten bins and the normal density of the prediction.
QVSTATS_EXPORT bool QVKrigeRenderDistribution(QVDepict::QVImageBase& image,
                                              const QVMolKrigeResult& result,
                                              const QVKrigeReportOptions& options);

/// The bins of the variogram (red), the kernel (blue) and the predicted variance (dashed).
/// \return whether the title could be drawn.
QVSTATS_EXPORT bool QVKrigeRenderVariogram(QVDepict::QVImageBase& image,
                                           const QVMolKrigeResult& result);

/// The model quality as a gauge: the smallest of three ratios, each a ring around it.
/// - confidence, 1 - variance / sill;
/// - variogram fit, 2 - 2 / (exp(-4 F) + 1) with the fitness F of the kernel (QVGetFitness);
/// - measured share, the part of the absolute weights that rests on measured responses.
/// \return whether the percentage could be drawn; false for an invalid result.
QVSTATS_EXPORT bool QVKrigeRenderConfidenceRadial(QVDepict::QVImageBase& image,
                                                  const QVMolKrigeResult& result);

/// The molecule with its atoms coloured by their contributions c (GetAtomContribution) to the
/// prediction being above or below the baseline: by 2 / (exp(-c n) + 1) - 1, n heavy atoms. A
/// result of a model without fingerprints has no contributions; its molecule is drawn plain.
/// \return false, and nothing is drawn, for an image narrower or lower than 100, an invalid result
/// or a molecule without a layout.
/// \param title whether the title of the molecule stands below it.
QVSTATS_EXPORT bool QVKrigeRenderMolecule(QVDepict::QVImageBase& image,
                                          const QVMolKrigeResult& result,
                                          const QVChem::QVMolBase& mol,
                                          const QVKrigeReportOptions& options, bool title = true);

/// The same in the upper nine tenths, and below it what the two colours mean.
QVSTATS_EXPORT bool QVKrigeRenderMoleculeWithLegend(QVDepict::QVImageBase& image,
                                                    const QVMolKrigeResult& result,
                                                    const QVChem::QVMolBase& mol,
                                                    const QVKrigeReportOptions& options);

/// The panel "Similar Training Molecules": `rows` x `columns` cells, row by row, with the training
/// molecules of largest absolute weight (ties: the nearer first), each with its response, distance
/// and weight. Draws nothing, and succeeds, without rows or columns.
QVSTATS_EXPORT bool QVKrigeRenderTraining(QVDepict::QVImageBase& image,
                                          const QVMolKrigeResult& result,
                                          const QVKrigeReportOptions& options, unsigned int rows,
                                          unsigned int columns);

/// The probabilities of the classes as a divided circle, clockwise from the top. Without classes
/// nothing is drawn.
/// \param legend divides the image along its longer side and names the classes in the second half.
/// \return whether the legend could be drawn; true without one, and false for an invalid result.
QVSTATS_EXPORT bool QVKrigeRenderClassification(QVDepict::QVImageBase& image,
                                                const QVMolKrigeResult& result,
                                                const QVKrigeReportOptions& options, bool legend);

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_2D_MOL_DEPICT_H
