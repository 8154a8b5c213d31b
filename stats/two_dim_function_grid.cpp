#include "stats/api/two_dim_function_grid.h"

#include <algorithm>
#include <iostream>

#include "stats/failure.h"

namespace QVStats {

/// An edge of a cell, and how a branch goes on that leaves the cell through it. The names are what
/// failures report.
struct QVTwoDimFuncGrid::Edge {
  Axis axis;
  unsigned int offsetI;  ///< node of the edge, from the cell's own node
  unsigned int offsetJ;
  int stepI;  ///< to the next cell
  int stepJ;
  unsigned int nextEntryEdge;
  const char* handler;
};

const QVTwoDimFuncGrid::Edge QVTwoDimFuncGrid::edges[4] = {
    {Horizontal, 0, 0, 0, -1, 2, "QVTwoDimFuncGrid::HandleBottomEdge"},
    {Vertical, 0, 0, -1, 0, 3, "QVTwoDimFuncGrid::HandleLeftEdge"},
    {Horizontal, 0, 1, 0, 1, 0, "QVTwoDimFuncGrid::HandleTopEdge"},
    {Vertical, 1, 0, 1, 0, 1, "QVTwoDimFuncGrid::HandleRightEdge"},
};

namespace {

/// What differs between the two kinds of edges in failures, by axis.
struct EdgeTexts {
  const char* addPoint;
  const char* checkBit;
  const char* clearBit;
  const char* outside;
};
constexpr EdgeTexts kEdgeTexts[] = {
    {"QVTwoDimFuncGrid::AddIntersectionPointOnHorizontalEdge",
     "QVTwoDimFuncGrid::CheckIntersectionBitIsOnForHorizontalEdge",
     "QVTwoDimFuncGrid::ClearIntersectionBitOnHorizontalEdge",
     "contour function val doesn't interpolate on horizontal edge"
     "left, contour,right vals = "},
    {"QVTwoDimFuncGrid::AddIntersectionPointOnVerticalEdge",
     "QVTwoDimFuncGrid::CheckIntersectionBitIsOnForVerticalEdge",
     "QVTwoDimFuncGrid::ClearIntersectionBitOnVerticalEdge",
     "contour function val doesn't interpolate on vertical edge"
     "below, contour,above vals = "},
};

unsigned int Advance(unsigned int index, int step) {
  return static_cast<unsigned int>(static_cast<int>(index) + step);
}

}  // namespace

QVTwoDimFuncGrid::QVTwoDimFuncGrid(unsigned int numX, unsigned int numY, double stepX, double stepY,
                                   double originX, double originY,
                                   const std::vector<double>& values)
    : numX_(numX),
      numY_(numY),
      stepX_(stepX),
      stepY_(stepY),
      originX_(originX),
      originY_(originY),
      values_(values) {
  for (std::vector<bool>& bits : crossed_) bits.assign(std::size_t{numX} * numY, false);
  for (const double value : values) {
    maxFuncValue_ = std::max(maxFuncValue_, value);
    minFuncValue_ = std::min(minFuncValue_, value);
  }
}

std::size_t QVTwoDimFuncGrid::IndexOf(unsigned int i, unsigned int j) const {
  return std::size_t{j} * numX_ + i;
}

double QVTwoDimFuncGrid::ValueAt(unsigned int i, unsigned int j) const {
  return values_.at(IndexOf(i, j));
}

bool QVTwoDimFuncGrid::IsCrossed(Axis axis, unsigned int i, unsigned int j) const {
  const std::size_t index = IndexOf(i, j);
  return index < crossed_[axis].size() && crossed_[axis][index];
}

void QVTwoDimFuncGrid::SetupContour(double level) {
  contourLevel_ = level;
  FixAnyDegeneracy();
  MarkAllIntersectingEdges();
  std::cout << "num intersecting edges = " << totalNumIntersections_ << "\n";
}

void QVTwoDimFuncGrid::FixAnyDegeneracy() {
  const double margin =
      (maxFuncValue_ - minFuncValue_) * (100.0 * std::numeric_limits<double>::epsilon());
  for (double& value : values_) {
    if (value >= contourLevel_ && value <= contourLevel_ + margin)
      value = contourLevel_ + margin;
    else if (value < contourLevel_ && value >= contourLevel_ - margin)
      value = contourLevel_ - margin;
  }
}

void QVTwoDimFuncGrid::MarkIfCrossed(Axis axis, unsigned int i, unsigned int j) {
  const double next = axis == Horizontal ? ValueAt(i + 1, j) : ValueAt(i, j + 1);
  if ((next - contourLevel_) * (ValueAt(i, j) - contourLevel_) > 0.0) return;
  crossed_[axis][IndexOf(i, j)] = true;
  ++totalNumIntersections_;
}

void QVTwoDimFuncGrid::MarkAllIntersectingEdges() {
  totalNumIntersections_ = 0;
  for (std::vector<bool>& bits : crossed_) bits.assign(bits.size(), false);
  for (unsigned int j = 0; j < numY_; ++j)
    for (unsigned int i = 0; i + 1 < numX_; ++i) MarkIfCrossed(Horizontal, i, j);
  for (unsigned int j = 0; j + 1 < numY_; ++j)
    for (unsigned int i = 0; i < numX_; ++i) MarkIfCrossed(Vertical, i, j);
}

bool QVTwoDimFuncGrid::FindStartEdgeInRow(unsigned int j, unsigned int& i) const {
  for (i = 0; i + 1 < numX_; ++i)
    if (IsCrossed(Horizontal, i, j)) return true;
  return false;
}

bool QVTwoDimFuncGrid::FindStartEdgeOnRightBoundary(unsigned int& j) const {
  for (j = 0; j + 1 < numY_; ++j)
    if (IsCrossed(Vertical, numX_ - 1, j)) return true;
  return false;
}

bool QVTwoDimFuncGrid::FindStartEdgeOnALeftColumn(unsigned int& i, unsigned int& j) const {
  // Both loops end with the rows: the columns too are counted by numY.
  for (j = 0; j + 1 < numY_; ++j)
    for (i = 0; i + 1 < numY_; ++i)
      if (IsCrossed(Vertical, i, j)) return true;
  return false;
}

QVStatModelResult QVTwoDimFuncGrid::AddIntersectionPoint(Axis axis, unsigned int i, unsigned int j,
                                                         Points& points) const {
  const EdgeTexts& texts = kEdgeTexts[axis];
  if (!IsCrossed(axis, i, j))
    return QVCalledFrom(texts.addPoint,
                        QVFailure(QVStatModelFailureType::InternalLogicFailure, texts.checkBit)
                            << "Intersection bit is off upon procedure entry!");
  const double first = ValueAt(i, j);
  const double second = axis == Horizontal ? ValueAt(i + 1, j) : ValueAt(i, j + 1);
  const double part = (contourLevel_ - first) / (second - first);
  if (part < 0.0 || part > 1.0)
    return QVFailure(QVStatModelFailureType::InternalLogicFailure, texts.addPoint)
           << texts.outside << first << " " << contourLevel_ << " " << second;
  points.emplace_back(originX_ + (axis == Horizontal ? i + part : i) * stepX_,
                      originY_ + (axis == Vertical ? j + part : j) * stepY_);
  return true;
}

QVStatModelResult QVTwoDimFuncGrid::ClearIntersectionBit(Axis axis, unsigned int i,
                                                         unsigned int j) {
  const std::size_t index = IndexOf(i, j);
  if (index < crossed_[axis].size()) crossed_[axis][index] = false;
  if (totalNumIntersections_ == 0)
    return QVFailure(QVStatModelFailureType::InternalLogicFailure, kEdgeTexts[axis].clearBit)
           << "_totalNumIntersections prematurely goes to zero";
  --totalNumIntersections_;
  return true;
}

QVStatModelResult QVTwoDimFuncGrid::StartBranch(const Position& start, Points& points) {
  const Edge& edge = edges[start.entryEdge];
  const unsigned int i = start.i + edge.offsetI;
  const unsigned int j = start.j + edge.offsetJ;
  QVStatModelResult result = AddIntersectionPoint(edge.axis, i, j, points);
  if (result.NotSuccessful()) return result;
  const bool fromScan = start.entryEdge == 1;
  // A loop closes by coming back to its first edge, which therefore stays. On the left boundary it
  // is the bottom of the cell that is cleared.
  if (fromScan && i != 0) return true;
  return ClearIntersectionBit(fromScan ? Horizontal : edge.axis, i, j);
}

QVStatModelResult QVTwoDimFuncGrid::GetInitialGridCell(Position& start, Points& points) {
  const char* const where = "QVTwoDimFuncGrid::GetInitialGridCell";
  if (FindStartEdgeInRow(0, start.i))
    start = {start.i, 0, 0};
  else if (FindStartEdgeInRow(numY_ - 1, start.i))
    start = {start.i, numY_ - 2, 2};
  else if (FindStartEdgeOnRightBoundary(start.j))
    start = {numX_ - 2, start.j, 3};
  else if (FindStartEdgeOnALeftColumn(start.i, start.j))
    start.entryEdge = 1;
  else
    return QVFailure(QVStatModelFailureType::InternalLogicFailure, where);
  return QVCalledFrom(where, StartBranch(start, points));
}

QVStatModelResult QVTwoDimFuncGrid::CheckNumGridCellIntersections(const Position& position,
                                                                  unsigned int& exitEdge) const {
  const char* const where = "QVTwoDimFuncGrid::CheckNumGridCellIntersections";
  unsigned int numExits = 0;
  for (unsigned int turn = 1; turn < 4; ++turn) {
    const unsigned int candidate = (position.entryEdge + turn) % 4;
    const Edge& edge = edges[candidate];
    if (!IsCrossed(edge.axis, position.i + edge.offsetI, position.j + edge.offsetJ)) continue;
    ++numExits;
    exitEdge = candidate;
  }
  if (numExits == 1) return true;
  if (numExits == 0) return QVFailure(QVStatModelFailureType::NoData, where);
  return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
         << "Number of New Intersections in grid is " << numExits;
}

QVStatModelResult QVTwoDimFuncGrid::LeaveThrough(const Edge& edge, Position& position,
                                                 Points& points) {
  const unsigned int i = position.i + edge.offsetI;
  const unsigned int j = position.j + edge.offsetJ;
  QVStatModelResult result = AddIntersectionPoint(edge.axis, i, j, points);
  if (result.IsSuccessful()) result = ClearIntersectionBit(edge.axis, i, j);
  if (QVFailedIn(result, edge.handler)) return result;
  const unsigned int last = edge.axis == Horizontal ? numY_ - 1 : numX_ - 1;
  const unsigned int line = edge.axis == Horizontal ? j : i;
  const bool forward = edge.stepI + edge.stepJ > 0;
  if (line == (forward ? last : 0)) return QVFailure(QVStatModelFailureType::NoData, edge.handler);
  position = {Advance(position.i, edge.stepI), Advance(position.j, edge.stepJ), edge.nextEntryEdge};
  return true;
}

QVStatModelResult QVTwoDimFuncGrid::ProcessGridCell(Position& position, Points& points) {
  const char* const where = "QVTwoDimFuncGrid::ProcessGridCell";
  unsigned int exitEdge = 0;
  QVStatModelResult result = CheckNumGridCellIntersections(position, exitEdge);
  if (QVFailedIn(result, where)) return result;
  return QVCalledFrom(where, LeaveThrough(edges[exitEdge], position, points));
}

QVStatModelResult QVTwoDimFuncGrid::GetBranchOfContour(Points& points) {
  const char* const where = "QVTwoDimFuncGrid::GetBranchOfContour";
  const bool hasCells = numX_ > 1 && numY_ > 1;
  if (!hasCells || totalNumIntersections_ == 0)
    return QVFailure(QVStatModelFailureType::NoData, where);
  const unsigned int numBefore = totalNumIntersections_;
  Position position;
  QVStatModelResult result = GetInitialGridCell(position, points);
  if (QVFailedIn(result, where)) return result;
  std::cout << "init cell: " << position.i << " " << position.j << " " << position.entryEdge
            << "\n";
  // Every cell passed uses up an edge, so this ends.
  while (result.IsSuccessful()) result = ProcessGridCell(position, points);
  if (result.GetFailureType() != QVStatModelFailureType::NoData) return QVCalledFrom(where, result);
  // A branch that uses up nothing would be found again for ever.
  if (totalNumIntersections_ == numBefore)
    return QVFailure(QVStatModelFailureType::InternalLogicFailure, where)
           << "Branch uses no intersection";
  return true;
}

QVStatModelResult QVTwoDimFuncGrid::PlotContour(double level,
                                                std::vector<QVMath::QVDataSeries>& series) {
  SetupContour(level);
  Points points;
  points.reserve(std::size_t{totalNumIntersections_} + 1);  // a loop repeats its first point
  while (true) {
    points.clear();
    QVStatModelResult result = GetBranchOfContour(points);
    if (result.IsSuccessful())
      series.emplace_back(points);
    else if (result.GetFailureType() == QVStatModelFailureType::NoData)
      return true;
    else
      return QVCalledFrom("QVTwoDimFuncGrid::PlotContour", result);
  }
}

}  // namespace QVStats
