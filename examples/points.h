/// \file
/// \brief Points with the Euclidean distance: how to bring an element type of your own to kriging.
///
/// A distance function is all that the engine needs. This one also answers in bulk, which is
/// optional: it stores coordinates by columns, so that the compiler works on several points at
/// once.
#ifndef QVSTATS_EXAMPLES_POINTS_H
#define QVSTATS_EXAMPLES_POINTS_H

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "platform/system/functors.h"
#include "stats/api/bulk_distance.h"

template <std::size_t D>
using PointIn = std::array<double, D>;

template <std::size_t D>
class EuclideanDistance : public QVSystem::QVBinaryFunction<PointIn<D>, PointIn<D>, double>,
                          public QVStats::QVBulkDistanceSource<PointIn<D>> {
 public:
  double operator()(const PointIn<D>& a, const PointIn<D>& b) const override {
    double square = 0.0;
    for (std::size_t k = 0; k < D; ++k) square += (a[k] - b[k]) * (a[k] - b[k]);
    return std::sqrt(square);
  }
  EuclideanDistance* CreateCopy() const override { return new EuclideanDistance(*this); }
  QVStats::QVBulkDistance<PointIn<D>>* CreateBulkDistance() const override { return new Bulk; }

 private:
  class Bulk : public QVStats::QVBulkDistance<PointIn<D>> {
   public:
    void Add(const PointIn<D>& point) override {
      for (std::size_t k = 0; k < D; ++k) columns_[k].push_back(point[k]);
    }
    void GetDistances(const PointIn<D>& query, double* distances) const override {
      const std::size_t count = columns_[0].size();
      for (std::size_t i = 0; i < count; ++i) distances[i] = 0.0;
      for (std::size_t k = 0; k < D; ++k) {
        const double* column = columns_[k].data();
        const double q = query[k];
        for (std::size_t i = 0; i < count; ++i) distances[i] += (q - column[i]) * (q - column[i]);
      }
      for (std::size_t i = 0; i < count; ++i) distances[i] = std::sqrt(distances[i]);
    }
    Bulk* CreateCopy() const override { return new Bulk(*this); }

   private:
    std::array<std::vector<double>, D> columns_;
  };
};

#endif  // QVSTATS_EXAMPLES_POINTS_H
