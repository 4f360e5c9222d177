#include "geometry/split_merge.h"

#include "geometry/line_fitting.h"
#include "geometry/piece_fit.h"
#include "geometry/polygon.h"
#include "geometry/stripe_smoothing.h"
#include "geometry/toolkit_records.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace weld {

namespace {

constexpr double kPolygonEpsilonPx = 10.0;
constexpr std::size_t kMinVertices = 3;
constexpr std::int64_t kMinVertexStepPx = 10;  // an inner vertex must be farther from the one before
constexpr std::size_t kMinAtomInliers = 21;
constexpr int kMaxMerges = 10;
constexpr float kMaxJointHeightPx = 6.0F;  // exclusive
constexpr std::size_t kMinJumpPoints = 3;

// Deliberate: an inner vertex is measured against the vertex before it, whether that one was kept or not.
std::vector<int> selectVertexColumns(TIntPointView vertices) {
  std::vector<int> columns{vertices.front().x};
  for (std::size_t i = 1; i + 1 < vertices.size(); ++i) {
    const std::int64_t step = static_cast<std::int64_t>(vertices[i].x) - vertices[i - 1].x;
    if (std::abs(step) > kMinVertexStepPx) columns.push_back(vertices[i].x);
  }
  columns.push_back(vertices.back().x);
  return columns;
}

// Deliberate: the difference of the slopes is rounded to single precision.
cv::Point2f crossingOf(const TLinePara& first, const TLinePara& second) {
  const auto slopeStep = static_cast<double>(static_cast<float>(second.k - first.k));
  return weld::crossingOf(TSlopeLine{first.k, first.b}, TSlopeLine{second.k, second.b}, slopeStep);
}

// Joins the first neighbours that are one line; false when there are none.
bool mergeFirstPair(std::vector<TSplitAtom>& atoms, double tolPx) {
  for (std::size_t i = 0; i + 1 < atoms.size(); ++i) {
    TSplitAtom& atom = atoms[i];
    const TSplitAtom& next = atoms[i + 1];
    TLinePara line = combineLines(atom.line, next.line, atom.pts, next.pts, tolPx);
    if (!line.isValid) continue;
    atom.line = std::move(line);
    atom.pts.insert(atom.pts.end(), next.pts.begin(), next.pts.end());
    atom.endX = next.endX;
    atoms.erase(atoms.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    return true;
  }
  return false;
}

}  // namespace

std::vector<TSplitAtom> splitWeldLine(const TFrame& frame, TPointView stripePts, double tolPx) {
  std::vector<TSplitAtom> atoms = cutIntoSplitAtoms(frame, stripePts);
  if (atoms.size() < 2) return atoms;
  fuseSplitAtoms(atoms, tolPx);
  const auto isWeak = [](const TSplitAtom& atom) {
    return !atom.line.isValid || atom.line.inlierPts.size() < kMinAtomInliers;
  };
  atoms.erase(std::remove_if(atoms.begin(), atoms.end(), isWeak), atoms.end());
  return atoms;
}

std::vector<TSplitAtom> cutIntoSplitAtoms(const TFrame& frame, TPointView stripePts) {
  std::vector<TSplitAtom> atoms;
  const TPoints smoothed = cleanStripe(frame, stripePts);
  const TList<cv::Point> vertices = approximatePolygon(smoothed, kPolygonEpsilonPx, frame.memory);
  if (vertices.size() < kMinVertices) return atoms;
  const std::vector<int> columns = selectVertexColumns(vertices);
  const TPointsByColumn byColumn(smoothed, frame.memory);
  if (columns.size() < kMinVertices || !byColumn.canCut(columns)) return atoms;
  for (std::size_t i = 0; i + 1 < columns.size(); ++i) {
    const TPoints pts = byColumn.between({columns[i], columns[i + 1]});
    atoms.push_back({toVector(pts), columns[i], columns[i + 1], TLinePara()});
  }
  return atoms;
}

void fuseSplitAtoms(std::vector<TSplitAtom>& atoms, double tolPx) {
  for (TSplitAtom& atom : atoms) atom.line = toLinePara(fitLine(atom.pts, tolPx, heapMemory()));
  if (atoms.size() == 1) return;
  const auto isEmpty = [](const TSplitAtom& atom) { return atom.pts.empty(); };
  atoms.erase(std::remove_if(atoms.begin(), atoms.end(), isEmpty), atoms.end());
  for (int merges = 0; merges < kMaxMerges && mergeFirstPair(atoms, tolPx); ++merges) {
  }
}

TLinePara combineLines(const TLinePara& first, const TLinePara& second, const std::vector<cv::Point2f>& firstPts,
                       const std::vector<cv::Point2f>& secondPts, double tolPx) {
  if (!first.isValid || !second.isValid || first.inlierPts.empty() || second.inlierPts.empty()) return {};
  const float height =
      heightOverChord(first.inlierPts.front(), second.inlierPts.back(), crossingOf(first, second));
  if (!(height < kMaxJointHeightPx)) return {};
  return toLinePara(fitLine(joinPoints(firstPts, secondPts, heapMemory()), tolPx, heapMemory()));
}

// Deliberate: the first point and the last two are never kept.
std::vector<cv::Point2f> dropDiscontinuousPts(const std::vector<cv::Point2f>& points, int maxJumpPx) {
  if (points.size() < kMinJumpPoints) return points;
  std::vector<cv::Point2f> kept;
  for (std::size_t i = 1; i + 2 < points.size(); ++i) {
    const float mean = (points[i - 1].y + points[i + 1].y) / 2.0F;
    if (std::abs(points[i].y - mean) < static_cast<float>(maxJumpPx)) kept.push_back(points[i]);
  }
  return kept;
}

}  // namespace weld
