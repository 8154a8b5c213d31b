#include "stats/api/nnstrength.h"

#include "platform/system/cast.h"

namespace QVStats {

unsigned int QVNNStrength::GetStrCt() const {
  return QVSystem::QVUnsignedFromCountChecked(links_.size());
}

QVSystem::QVIter<const QVStrValue> QVNNStrength::GetValues() {
  return QVSystem::QVMakeIter<const QVStrValue>(links_);
}

QVSystem::QVIter<const QVStrValue> QVNNStrength::GetValues() const {
  return QVSystem::QVMakeIter<const QVStrValue>(links_);
}

}  // namespace QVStats
