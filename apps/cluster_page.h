/// \file
/// \brief Pages of structures, cluster by cluster.
#ifndef QVSTATS_APPS_CLUSTER_PAGE_H
#define QVSTATS_APPS_CLUSTER_PAGE_H

#include <cstddef>
#include <string>
#include <vector>

#include "platform/chem/mol.h"
#include "platform/depict/image.h"
#include "platform/depict/image_writer.h"

namespace QVApps {

/// Draws clusters below one another on A4 pages: a heading, then rows of molecules with their
/// titles, the head of the cluster framed. A cluster that does not fit goes on on the next page.
class ClusterPages {
 public:
  /// \param path a .pdf with all pages; .png or .svg, then a file for each page.
  explicit ClusterPages(std::string path);

  /// \param members the molecules that are drawn, the head first.
  void Add(const std::string& heading, const std::vector<const QVChem::QVMolBase*>& members);
  /// Throws Failure when the file could not be written.
  void Close();

 private:
  void StartPage();
  void FinishPage();
  void DrawHeading(const std::string& heading);

  std::string path_;
  QVDepict::QVImageFileWriter writer_;
  QVDepict::QVImage page_;
  double top_ = 0.0;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_CLUSTER_PAGE_H
