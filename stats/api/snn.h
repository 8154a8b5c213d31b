/// \file
/// \brief Shared-nearest-neighbour clustering.
///
/// Two objects are linked when each is in the other's list of near neighbours; the strength of a
/// link is the number of neighbours that their lists have in common. Objects with many links head
/// clusters, objects with few are noise; clusters whose heads are strongly linked are merged, and
/// objects with a strong link to a head are attached. Source: R. A. Jarvis, E. A. Patrick, IEEE
/// Trans. Comput. C-22, 1973, 1025-1034; L. Ertoz, M. Steinbach, V. Kumar, SIAM Int. Conf. on Data
/// Mining, 2003, 47-58.
///
/// Diagnostic lines go to the standard error stream, as each function says.
#ifndef QVSTATS_API_SNN_H
#define QVSTATS_API_SNN_H

#include <cstddef>
#include <vector>

#include "stats/api/export.h"
#include "stats/api/nnstrength.h"

namespace QVStats {

/// The thresholds of the clustering.
struct QVSNNParameters {
  unsigned int nbrCt;  ///< length of the neighbour lists
  unsigned int topic;  ///< an object with at least this many links heads a cluster
  unsigned int noise;  ///< an object with fewer links than this is noise
  unsigned int merge;  ///< heads with a link of more than this strength merge
  unsigned int label;  ///< an object with a link of more than this strength to a head is attached
};

/// The parameters for n objects: k = n / 10 within [6, 30], and topic, noise, merge and label
/// 0.75 k, 0.5 k, 0.63 k and 0.53 k, each truncated.
QVSTATS_EXPORT QVSNNParameters QVGetSNNParameters(std::size_t n);

/// The k most similar objects of each object, itself among them when its self-similarity is high
/// enough, most similar first; of equal similarities the lower index comes first. What is no number
/// counts as the lowest.
/// \param similarity n x n values, row after row; only the entries (i, j) with i <= j are read.
QVSTATS_EXPORT std::vector<std::vector<unsigned int>> QVGetNearestNeighbours(
    const std::vector<double>& similarity, std::size_t n, unsigned int k);

/// The links between objects that are in each other's lists: a record for each object that has one,
/// in ascending order of the objects, its links in the order of its list. An object that meets
/// itself in its list skips itself. For every other member of every list the line "slow unsorted
/// search of size nn" goes to the standard error stream. \param nnLists the members are below
/// nnLists.size().
QVSTATS_EXPORT std::vector<QVNNStrength> QVGetNeighbourLinks(
    const std::vector<std::vector<unsigned int>>& nnLists);

/// Clusters n objects from their neighbour lists.
///
/// \param clusters expected empty; receives the members of each cluster, the head first. Members
///   attached to a cluster do not attach further ones: an object belongs to the first cluster to
///   whose head (or merged heads) it has a strong link.
/// \param noise expected empty; receives the objects without neighbours and those with few links.
///   Objects that are in neither are singletons; their number is reported at information level.
/// \param nnLists n lists of indices below n.
/// \param sortLists whether links are listed in ascending order of the neighbours.
/// \return whether there are clusters. Otherwise a warning says why; a list with an index of n or
///   more, or another number of lists than n, is an error.
QVSTATS_EXPORT bool QVGetSNNCluster(std::vector<std::vector<unsigned int>>& clusters,
                                    std::vector<unsigned int>& noise, std::size_t n,
                                    const std::vector<std::vector<unsigned int>>& nnLists,
                                    const QVSNNParameters& params, bool sortLists);

}  // namespace QVStats

#endif  // QVSTATS_API_SNN_H
