/// \file
/// \brief Contour lines of a function of two variables given on a rectangular grid.
#ifndef QVSTATS_API_TWO_DIM_FUNCTION_GRID_H
#define QVSTATS_API_TWO_DIM_FUNCTION_GRID_H

#include <cstddef>
#include <limits>
#include <vector>

#include "platform/math/data_series.h"
#include "stats/api/export.h"
#include "stats/api/stat_model.h"

namespace QVStats {

/// The values of a function at the nodes of a grid, and its contour lines, traced from cell to cell
/// with linear interpolation along the edges that they cross.
///
/// Node (i, j) lies at (originX + i stepX, originY + j stepY) and its value is element j numX + i
/// of the values. Cell (i, j) has node (i, j) at its lower left.
///
/// Tracing consumes the crossed edges, moves values off the level and writes to standard output, so
/// a grid is used by one caller at a time.
class QVSTATS_EXPORT QVTwoDimFuncGrid {
 public:
  /// \param numX, numY nodes along each axis. \param stepX, stepY distances between nodes.
  /// \param originX, originY where node (0, 0) lies. \param values numX * numY values, x fastest;
  /// the number is not checked, but tracing throws std::out_of_range at a node without a value.
  QVTwoDimFuncGrid(unsigned int numX, unsigned int numY, double stepX, double stepY, double originX,
                   double originY, const std::vector<double>& values);

  /// The extremes of the values given; for no values, -DBL_MAX and DBL_MAX.
  double GetMaxFuncValue() const { return maxFuncValue_; }
  double GetMinFuncValue() const { return minFuncValue_; }

  /// Marks the edges that the contour at a level crosses. Values at the level, to 1e2 * 2^-52 of
  /// their range, are first moved that far off it, and stay there: a value below the level
  /// downwards, any other upwards.
  ///
  /// Writes "num intersecting edges = <number>" and a line end to standard output.
  void SetupContour(double level);

  /// Appends the branches of the contour at a level to `series`: those that start on the bottom of
  /// the grid (left to right), on its top, on its right (upwards), then those that a scan of the
  /// other vertical edges finds, row by row: branches from the left of the grid, and closed loops,
  /// whose last point repeats the first. A grid of one row or column of nodes has no branches.
  ///
  /// The scan looks at numY - 1 columns, which is right for square grids. A branch that starts on
  /// the left of the grid does not use up its first edge; when others remain, the scan may find it
  /// again, as a series of one point, and leave others out.
  ///
  /// Writes what SetupContour writes, and "init cell: <i> <j> <edge>" and a line end for each
  /// branch, edges counted 0 bottom, 1 left, 2 top, 3 right.
  ///
  /// Failure: InternalLogicFailure when a branch meets a cell of which it could leave by more than
  /// one edge (a saddle), or uses up no edge. The branches traced so far stay.
  QVStatModelResult PlotContour(double level, std::vector<QVMath::QVDataSeries>& series);

 private:
  using Points = std::vector<QVMath::QVDataPoint>;

  enum Axis : unsigned int { Horizontal, Vertical };
  struct Edge;
  static const Edge edges[4];

  /// Where a branch is about to go on: a cell and the edge by which it was entered.
  struct Position {
    unsigned int i = 0;
    unsigned int j = 0;
    unsigned int entryEdge = 4;
  };

  std::size_t IndexOf(unsigned int i, unsigned int j) const;
  double ValueAt(unsigned int i, unsigned int j) const;
  /// An edge runs from node (i, j) to the next one along its axis. One outside is not crossed.
  bool IsCrossed(Axis axis, unsigned int i, unsigned int j) const;

  void FixAnyDegeneracy();
  void MarkAllIntersectingEdges();
  void MarkIfCrossed(Axis axis, unsigned int i, unsigned int j);

  bool FindStartEdgeInRow(unsigned int j, unsigned int& i) const;
  bool FindStartEdgeOnRightBoundary(unsigned int& j) const;
  bool FindStartEdgeOnALeftColumn(unsigned int& i, unsigned int& j) const;

  QVStatModelResult AddIntersectionPoint(Axis axis, unsigned int i, unsigned int j,
                                         Points& points) const;
  QVStatModelResult ClearIntersectionBit(Axis axis, unsigned int i, unsigned int j);
  QVStatModelResult StartBranch(const Position& start, Points& points);
  QVStatModelResult GetInitialGridCell(Position& start, Points& points);
  QVStatModelResult CheckNumGridCellIntersections(const Position& position,
                                                  unsigned int& exitEdge) const;
  QVStatModelResult LeaveThrough(const Edge& edge, Position& position, Points& points);
  QVStatModelResult ProcessGridCell(Position& position, Points& points);
  QVStatModelResult GetBranchOfContour(Points& points);

  unsigned int numX_;
  unsigned int numY_;
  double stepX_;
  double stepY_;
  double originX_;
  double originY_;
  std::vector<double> values_;
  double contourLevel_ = std::numeric_limits<double>::max();
  double maxFuncValue_ = -std::numeric_limits<double>::max();
  double minFuncValue_ = std::numeric_limits<double>::max();
  /// By axis, a bit for each node: the edge from it is crossed and not used up.
  std::vector<bool> crossed_[2];
  unsigned int totalNumIntersections_ = 0;
};

}  // namespace QVStats

#endif  // QVSTATS_API_TWO_DIM_FUNCTION_GRID_H
