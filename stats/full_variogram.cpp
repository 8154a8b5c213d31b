#include "stats/api/full_variogram.h"

#include <algorithm>

#include "platform/system/error_handler.h"
#include "stats/variogram_binning.h"

namespace QVStats {

QVFullVariogramBase::~QVFullVariogramBase() = default;

unsigned int QVFullVariogramImpl::GetNumBins() const {
  return static_cast<unsigned int>(bins_.size());
}

unsigned int QVFullVariogramImpl::GetNumBinElements(unsigned int bin) const {
  if (!QV_ASSERT(bin < bins_.size())) return 0;
  return static_cast<unsigned int>(bins_[bin].distances.size());
}

double QVFullVariogramImpl::GetDistance(unsigned int bin, unsigned int pair) const {
  if (!QV_ASSERT(bin < bins_.size() && pair < bins_[bin].distances.size())) return 0.0;
  return bins_[bin].distances[pair];
}

double QVFullVariogramImpl::GetHalfSquaredDifference(unsigned int bin, unsigned int pair) const {
  if (!QV_ASSERT(bin < bins_.size() && pair < bins_[bin].halfSquaredDiffs.size())) return 0.0;
  return bins_[bin].halfSquaredDiffs[pair];
}

QVFullVariogramImpl* QVFullVariogramImpl::CreateCopy() const {
  return new QVFullVariogramImpl(*this);
}

void QVFullVariogramImpl::Push(const std::vector<double>& distances,
                               const std::vector<double>& halfSquaredDiffs) {
  if (distances.size() != halfSquaredDiffs.size()) {
    QVSystem::QVThrow.Warning("QVFullVariogramImpl::Push : Vectors differ in size");
    return;
  }
  bins_.push_back({distances, halfSquaredDiffs});
}

void QVFullVariogramImpl::Clear() { bins_.clear(); }

QVFullVariogram::QVFullVariogram() : variogram_(std::make_shared<QVFullVariogramImpl>()) {}
QVFullVariogram::QVFullVariogram(const QVFullVariogramBase& variogram)
    : variogram_(variogram.CreateCopy()) {}
unsigned int QVFullVariogram::GetNumBins() const { return variogram_->GetNumBins(); }
unsigned int QVFullVariogram::GetNumBinElements(unsigned int bin) const {
  return variogram_->GetNumBinElements(bin);
}
double QVFullVariogram::GetDistance(unsigned int bin, unsigned int pair) const {
  return variogram_->GetDistance(bin, pair);
}
double QVFullVariogram::GetHalfSquaredDifference(unsigned int bin, unsigned int pair) const {
  return variogram_->GetHalfSquaredDifference(bin, pair);
}
QVFullVariogramBase* QVFullVariogram::CreateCopy() const { return variogram_->CreateCopy(); }

bool QVSetupVariogram(QVFullVariogramImpl& variogram, std::vector<QVDistanceAndDifference>& pairs,
                      bool sort) {
  variogram.Clear();
  if (sort) std::sort(pairs.begin(), pairs.end(), QVIsNearerPair);
  const auto isIdentical = [](const QVDistanceAndDifference& pair) {
    return pair.first <= QVIdenticalPairDistance;
  };
  const auto firstOther = std::find_if_not(pairs.begin(), pairs.end(), isIdentical);
  const QVVariogramBins bins(pairs.size(), static_cast<std::size_t>(firstOther - pairs.begin()));
  std::size_t position = 0;
  for (const std::size_t end : bins.ends) {
    std::vector<double> distances;
    std::vector<double> halfSquaredDiffs;
    for (; position < end; ++position) {
      distances.push_back(pairs[position].first);
      halfSquaredDiffs.push_back(0.5 * pairs[position].second * pairs[position].second);
    }
    variogram.Push(distances, halfSquaredDiffs);
  }
  return bins.isUsable;
}

}  // namespace QVStats
