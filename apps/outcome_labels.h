/// \file
/// \brief Columns that say yes or no.
#ifndef QVSTATS_APPS_OUTCOME_LABELS_H
#define QVSTATS_APPS_OUTCOME_LABELS_H

#include <optional>
#include <string>

namespace QVApps {

/// Reads the two outcomes of a column.
class OutcomeLabels {
 public:
  /// \param positive the text, in any case, of the positive outcome; every other text that is not
  /// empty is then the negative one. If empty, the usual words are known: 1, true, yes, active,
  /// positive and 0, -1, false, no, inactive, decoy, negative.
  explicit OutcomeLabels(const std::string& positive);

  /// \return nothing for a text that is neither.
  std::optional<bool> Read(const std::string& text) const;

 private:
  std::string positive_;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_OUTCOME_LABELS_H
