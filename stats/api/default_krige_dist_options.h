/// \file
/// \brief Options of the default distance between molecules.
#ifndef QVSTATS_API_DEFAULT_KRIGE_DIST_OPTIONS_H
#define QVSTATS_API_DEFAULT_KRIGE_DIST_OPTIONS_H

#include "platform/likeness/vsepr.h"
#include "stats/api/export.h"

namespace QVStats {

/// Configures the VSEPR fingerprint behind the default molecular distance, 1 - Tanimoto. What the
/// properties mean, and what they are at first, is said at QVLikeness::QVVseprOptions.
class QVSTATS_EXPORT QVDefaultKrigeDistanceOptions {
 public:
  unsigned int GetMaxPathLength() const { return options_.GetMaxPathLength(); }
  unsigned int GetMinPathLength() const { return options_.GetMinPathLength(); }
  bool GetForcePathsOut() const { return options_.GetForcePathsOut(); }
  bool GetWeightByLength() const { return options_.GetWeightByLength(); }
  bool GetStereoAware() const { return options_.GetStereoAware(); }

  QVDefaultKrigeDistanceOptions& SetMaxPathLength(unsigned int length) {
    options_.SetMaxPathLength(length);
    return *this;
  }
  QVDefaultKrigeDistanceOptions& SetMinPathLength(unsigned int length) {
    options_.SetMinPathLength(length);
    return *this;
  }
  QVDefaultKrigeDistanceOptions& SetForcePathsOut(bool force) {
    options_.SetForcePathsOut(force);
    return *this;
  }
  QVDefaultKrigeDistanceOptions& SetWeightByLength(bool weight) {
    options_.SetWeightByLength(weight);
    return *this;
  }
  QVDefaultKrigeDistanceOptions& SetStereoAware(bool aware) {
    options_.SetStereoAware(aware);
    return *this;
  }

  const QVLikeness::QVVseprOptions& GetImpl() const { return options_; }

 private:
  QVLikeness::QVVseprOptions options_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_DEFAULT_KRIGE_DIST_OPTIONS_H
