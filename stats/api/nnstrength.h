/// \file
/// \brief The links of one object to its mutual near neighbours, with their strengths.
#ifndef QVSTATS_API_NNSTRENGTH_H
#define QVSTATS_API_NNSTRENGTH_H

#include <vector>

#include "platform/system/iter.h"
#include "stats/api/export.h"

namespace QVStats {

/// A link: the index of the neighbour, and the number of near neighbours shared with it.
struct QVStrValue {
  unsigned int neighbourIndex;
  unsigned int strength;
};

/// An object's links in the order in which they were added. Records are ordered by the object index
/// alone, so that a record without links serves as a key.
class QVSTATS_EXPORT QVNNStrength {
 public:
  /// A record without links.
  explicit QVNNStrength(unsigned int objectIndex) : objectIndex_(objectIndex) {}
  /// A record with one link.
  QVNNStrength(unsigned int objectIndex, unsigned int neighbourIndex, unsigned int strength)
      : objectIndex_(objectIndex), links_{{neighbourIndex, strength}} {}

  unsigned int GetSmallIdx() const { return objectIndex_; }
  /// \return the number of links. More than 32 bits can hold is a fatal report.
  unsigned int GetStrCt() const;
  /// Appends a link; one that is there already is counted again.
  void Add(const QVStrValue& link) { links_.push_back(link); }
  /// The links in the order of insertion; the iterator reads this object.
  QVSystem::QVIter<const QVStrValue> GetValues();
  QVSystem::QVIter<const QVStrValue> GetValues() const;
  /// The same as a vector, for inner loops.
  const std::vector<QVStrValue>& GetLinks() const { return links_; }

  bool operator<(const QVNNStrength& other) const { return objectIndex_ < other.objectIndex_; }

 private:
  unsigned int objectIndex_;
  std::vector<QVStrValue> links_;
};

}  // namespace QVStats

#endif  // QVSTATS_API_NNSTRENGTH_H
