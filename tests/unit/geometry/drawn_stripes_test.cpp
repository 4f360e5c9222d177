// The toolkit on drawn stripes, its results with all their bits: limits are met exactly again and again. A change
// that means to move a result puts the number that the failure prints in place of the old one.
#include "geometry/piece_fit.h"
#include "geometry/toolkit_records.h"
#include "support/checksum.h"
#include "support/drawn_stripe.h"
#include "support/line_math.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

constexpr int kRounds = 600;

struct TDraw {
  TPoints points;
  TBaseWeld weld;
  scenes::TRandom& random;
  TChecksum sum{};

  int below(std::size_t count) { return random.integer(0, static_cast<int>(count) - 1); }
  double oneOf(std::initializer_list<double> values) { return values.begin()[below(values.size())]; }
  TPoints part(int fewest, int most) {
    const auto from = static_cast<std::size_t>(below(points.size()));
    const std::size_t to = std::min(points.size(), from + static_cast<std::size_t>(random.integer(fewest, most)));
    return {points.begin() + static_cast<std::ptrdiff_t>(from), points.begin() + static_cast<std::ptrdiff_t>(to)};
  }
  void add(const TPoints& list) {
    for (const cv::Point2f p : list) sum.add({static_cast<double>(p.x), static_cast<double>(p.y)});
  }
  void add(const TLinePara& line) {
    sum.add({line.k, line.b, line.inlierRatio, line.isValid ? 1.0 : 0.0});
    add(line.inlierPts);
  }
  void add(const TStripePiece& p) {
    for (const cv::Point end : {p.startPt, p.endPt}) sum.add({1.0 * end.x, 1.0 * end.y});
    for (const float value : {p.k, p.b, p.maxDist, p.meanDist}) sum.add({static_cast<double>(value)});
    sum.add({1.0 * p.lineState, p.isFitted ? 1.0 : 0.0});
    add(p.pts);
    add(p.fitPts);
  }
};

// A line of slope 3/4 has distances that are exact.
void selectByDistance(TDraw& d) {
  const double k = d.oneOf({0.0, 0.75, -0.75});
  const cv::Point2f on = d.points[d.below(d.points.size())];
  const double b = static_cast<double>(on.y) + d.random.integer(-4, 4);
  const double tolPx = d.random.integer(0, 24) / 2.0;
  TPoints far;
  d.weld.filterOutLinePts(k, b, tolPx, d.points, far);
  d.add(far);
  std::vector<cv::Point> near;
  double share = 0.125;
  d.weld.calcFitPercent(d.points, near, k, b, tolPx, share);
  const std::vector<cv::Point> whole = near;
  d.sum.add({share, d.weld.calcFitLinePercent(k, b, tolPx - 1.0, whole), static_cast<double>(near.size())});
  d.sum.add({d.weld.calcFitPercent(whole, near, k, b, tolPx - 1.0, share) ? 1.0 : 0.0, share,
             static_cast<double>(near.size())});
  TLinePara line;
  line.k = d.oneOf({0.0, 1e-5, -1e-6, 1.0, -0.75, 40.0});
  line.b = b;
  d.add({d.weld.calcDropFeet(line, d.points.back())});
}

void fitLines(TDraw& d) {
  const int count = static_cast<int>(d.points.size());
  for (const int start : {-1, 0, d.below(d.points.size()), count - d.random.integer(9, 11)}) {
    for (const int length : {9, 10, d.random.integer(10, 120)})
      d.add(d.weld.findALine(d.points, start, start + length));
  }
  d.add(d.weld.findALine(d.part(8, 400), -1, -1));
}

void fitConsensusLines(TDraw& d) {
  const TPoints points = d.part(9, d.random.chance(0.2) ? 11 : 400);
  const double fromDeg = d.random.integer(-50, 50);
  const double toDeg = fromDeg + d.random.integer(-60, 60);
  const double tolPx = d.oneOf({0.5, 2.0, 5.0});
  const TLinePara any = d.weld.findALineRansac(fromDeg, toDeg, tolPx, -1.0, points);
  d.add(any);
  for (const double share : {any.inlierRatio, std::nextafter(any.inlierRatio, 2.0)})
    d.sum.add({d.weld.findALineRansac(fromDeg, toDeg, tolPx, share, points).isValid ? 1.0 : 0.0});
}

void cutPieces(TDraw& d) {
  std::vector<TStripePiece> pieces(1);
  const TPoints points = d.random.chance(0.2) ? d.part(17, 22) : d.points;
  const std::array<double, 4> limits{d.oneOf({0, 5, 10, 1e4}), d.oneOf({0, 10, 200}), d.oneOf({0, 20, 1e4}),
                                     d.oneOf({1, 3})};
  const auto limit = [&](std::size_t i) { return static_cast<float>(limits[i]); };
  d.weld.segmentStripe(points, pieces, limit(0), limit(1), limit(2), limit(3));
  for (const TStripePiece& piece : pieces) d.add(piece);
  d.weld.segmentStripe(d.points, pieces, 0.0F, 0.0F, 0.0F, 3.0F);
  if (pieces.size() > 1) {  // merged at the very height of a joint
    const auto i = static_cast<std::size_t>(d.below(pieces.size() - 1));
    const float height = weld::heightOverChord(pieces[i].startPt, pieces[i + 1].endPt, pieces[i].endPt);
    d.weld.segmentStripe(d.points, pieces, height, 1e4F, 1e4F, 3.0F);
    for (const TStripePiece& piece : pieces) d.add(piece);
  }
  const TPoints part = d.part(9, 60);
  d.add(weld::toStripePiece(weld::fitPiece({part.begin(), part.end()}, 3.0F, weld::heapMemory())));
}

void splitIntoAtoms(TDraw& d) {
  std::vector<TSplitAtom> atoms(1);
  const auto add = [&] {
    for (const TSplitAtom& atom : atoms) {
      d.sum.add({1.0 * atom.startX, 1.0 * atom.endX});
      d.add(atom.pts);
      d.add(atom.line);
    }
  };
  d.weld.splitWeldLine2lines(d.points, atoms, {});
  add();
  atoms.clear();
  for (std::size_t i = 0; i + 1 < d.points.size(); i += 25) {
    const std::size_t end = std::min(i + 25, d.points.size());
    const auto from = d.points.begin() + static_cast<std::ptrdiff_t>(i);
    const bool isEmpty = d.random.chance(0.05);
    atoms.push_back({{from, isEmpty ? from : d.points.begin() + static_cast<std::ptrdiff_t>(end)},
                     static_cast<int>(i),
                     static_cast<int>(end),
                     {}});
  }
  d.weld.fusePolyLines2LinesSegment(atoms, {});
  add();
  TPoints thinned = d.points;
  d.weld.removeDiscontinuousPts(thinned, d.random.integer(0, 45));
  d.add(thinned);
}

// Two lines that meet so many eighths of a pixel above or below the chord between their far ends.
void combineLines(TDraw& d) {
  const double heightPx = d.random.integer(-52, 52) / 8.0;
  TLinePara first;
  first.k = heightPx / 128.0;
  first.isValid = !d.random.chance(0.1);
  first.inlierPts = {{0, 0}, {60, 1}};
  TLinePara second = first;
  second.k = -first.k;
  second.b = 2.0 * heightPx;
  second.isValid = !d.random.chance(0.1);
  second.inlierPts = {{190, 1}, {256, 0}};
  if (d.random.chance(0.1)) (d.random.chance(0.5) ? first : second).inlierPts.clear();
  const TPoints firstPts = d.part(5, 30);
  const TPoints secondPts = d.part(5, 30);
  d.add(d.weld.combine2Lines(first, second, firstPts, secondPts));
}

// Bands of brightness, and a line near the stripe's.
void moveCorners(TDraw& d) {
  cv::Mat image(480, 640, CV_8UC1);
  for (int x = 0, next = 0; x < image.cols; x = next) {
    next = std::min(x + d.random.integer(2, 60), image.cols);
    image.colRange(x, next).setTo(10 * d.random.integer(0, 25));
  }
  for (int n = 0; n < 8; ++n) {
    TWeldParams params;
    params.dPara1 = 10.0 * d.random.integer(0, 12);
    params.dPara2 = d.oneOf({0.5, 1.0, 5.0});
    d.weld.setWeldParameters(params);
    TPoints support = d.part(9, 150);
    if (n == 0) std::reverse(support.begin(), support.end());
    const TLinePara line = d.weld.findALine(support, -1, -1);
    const float x =
        (n % 2 == 0 ? support.front() : support.back()).x + static_cast<float>(d.random.integer(-12, 12));
    const double k = line.isValid ? line.k : 0.0;
    const double b = line.isValid ? line.b : static_cast<double>(support.front().y);
    d.add({d.weld.modifySingleVGroovePos(support, {x, 200.0F}, static_cast<float>(k), static_cast<float>(b),
                                         image)});
  }
}

const struct {
  const char* name;
  void (*run)(TDraw&);
  std::uint32_t sum;
} kPinned[] = {{"distances", selectByDistance, 0x8e7d0754},  {"fits", fitLines, 0x7ef5777a},
               {"consensus", fitConsensusLines, 0x9085ddd3}, {"pieces", cutPieces, 0x3e1e068f},
               {"atoms", splitIntoAtoms, 0xd405ddb6},        {"combined lines", combineLines, 0x1d81bc95},
               {"corners", moveCorners, 0xb2d05851}};

TEST(DrawnStripes, giveThePinnedResultsOfTheToolkit) {
  for (const auto& row : kPinned) {
    scenes::TRandom random(7, scenes::TStream::layout);
    TDraw draw{{}, {}, random};
    for (int n = 0; n < kRounds; ++n) {
      draw.points = drawn::stripe(random, {n % 3 == 0 ? 40 : 400, 80.0, n % 4 == 0 ? 1.5 : 0.0});
      TWeldParams params;
      params.dPara4 = draw.oneOf({0.5, 2.0, 3.0});
      draw.weld.setWeldParameters(params);
      row.run(draw);
    }
    EXPECT_EQ(draw.sum.value, row.sum) << row.name << std::hex << " 0x" << draw.sum.value;
  }
}

}  // namespace
