/// \file
/// \brief Points to plot.
#ifndef QV_PLATFORM_MATH_DATA_SERIES_H
#define QV_PLATFORM_MATH_DATA_SERIES_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/system/iter.h"

namespace QVMath {

/// A point of a plot, in the units of the axes.
class QVDataPoint {
 public:
  QVDataPoint() = default;
  QVDataPoint(double x, double y) : x_(x), y_(y) {}
  double GetX() const { return x_; }
  double GetY() const { return y_; }
  void SetX(double x) { x_ = x; }
  void SetY(double y) { y_ = y; }
  friend bool operator==(const QVDataPoint& a, const QVDataPoint& b) {
    return a.x_ == b.x_ && a.y_ == b.y_;
  }
  friend bool operator!=(const QVDataPoint& a, const QVDataPoint& b) { return !(a == b); }

 private:
  double x_ = 0.0;
  double y_ = 0.0;
};

/// A named series of points, drawn in order: a curve, the outline of a histogram, a scatter.
class QVDataSeries {
 public:
  QVDataSeries() = default;
  explicit QVDataSeries(std::vector<QVDataPoint> points, std::string name = std::string())
      : points_(std::move(points)), name_(std::move(name)) {}

  void SetPoints(std::vector<QVDataPoint> points) { points_ = std::move(points); }
  void AddPoint(const QVDataPoint& point) { points_.push_back(point); }
  void AddPoint(double x, double y) { points_.emplace_back(x, y); }
  void Reserve(std::size_t count) { points_.reserve(count); }
  void Clear() { points_.clear(); }

  std::size_t GetNumPoints() const { return points_.size(); }
  /// The point at an index below GetNumPoints().
  const QVDataPoint& GetPoint(std::size_t index) const { return points_[index]; }
  const std::vector<QVDataPoint>& GetPointVec() const { return points_; }
  /// An iterator that reads this series.
  QVSystem::QVIter<const QVDataPoint> GetPoints() const {
    return QVSystem::QVMakeIter<const QVDataPoint>(points_);
  }

  /// What a legend calls the series.
  const std::string& GetName() const { return name_; }
  void SetName(const std::string& name) { name_ = name; }

 private:
  std::vector<QVDataPoint> points_;
  std::string name_;
};

}  // namespace QVMath

#endif  // QV_PLATFORM_MATH_DATA_SERIES_H
