#include "profile/fit_table.h"

#include "support/arc_tangent.h"
#include "support/exact_log.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kMostDropped = 2;           // atoms
constexpr int kLongestDropped = 48;       // centres of an atom that may be a ghost's
constexpr double kSmallestLimitPx = 2.2;  // rms that any surface may have
constexpr double kLimitPerNoise = 3.0;
constexpr double kLimitPerLength = 0.012;
constexpr double kMostNoise2 = 9.0;  // variance of a dim surface over that of the stripe
constexpr double kLeastSagittaPx = 3.0;
constexpr double kSagittaPerNoise = 4.0;
constexpr double kDropGain = 0.8;    // what the variance must fall to
constexpr double kLeastKept = 0.78;  // of the weight of an element
constexpr double kGhostOffPerNoise = 4.0;
constexpr double kGhostNoise2 = 3.0;  // variance over that of the noise that makes look for a ghost

constexpr double kCostPerCentre = 1.0 / 3.0;  // neighbours tell nearly the same
constexpr double kBowPerLength = 0.005;       // rms that a real surface has over its length

// Grows with the logarithm of the deviation: real surfaces bow and wave, and a square would drop whole flanks.
double fitCost(double variance, const TLineEntry& entry, int centres, int dropped) {
  const double bowPx = kBowPerLength * entry.lengthPx;
  return centres * kCostPerCentre * 0.5 * exactLog(1.0 + variance / (entry.noise2 + bowPx * bowPx)) +
         2.0 * dropped * kCostPerCentre;
}

double angleOf(double dx, double dy) {
  return dx > 0.0 ? arcTangent(dy / dx) * kDegPerRad : (dy < 0.0 ? -90.0 : 90.0);
}

// Angle of the tangent where the circle passes the column, on the side the centre is not.
double tangentDeg(const TCircle& circle, double x, double y) {
  const double rx = x - circle.x;
  const double ry = y - circle.y;
  return ry > 0.0 ? angleOf(ry, -rx) : angleOf(-ry, rx);
}

}  // namespace

TFitTable::TFitTable(const TCentres& c, const TMoments& m, TView<int> borders, double noisePx,
                     std::pmr::memory_resource* memory)
    : centres(c),
      moments(m),
      cuts(borders.begin(), borders.end(), memory),
      noise(noisePx),
      lines(cuts.size() * cuts.size(), memory),
      circles(lines.size(), memory),
      isCircleFitted(lines.size(), 0, memory) {
  for (int k = 0; k < atoms(); ++k) {
    const auto at = static_cast<std::size_t>(k);
    atomResiduals[at + 1] = atomResiduals[at] + moments.residualOf(span(k, k + 1));
  }
  findGhosts();
  for (int first = 0; first < atoms(); ++first) {
    for (int last = first + 1; last <= atoms(); ++last) lines[indexOf(first, last)] = fitLine(first, last);
  }
}

double TFitTable::varianceLimit(double noise2, double lengthPx) const {
  const double limitPx =
      std::max({kSmallestLimitPx, kLimitPerNoise * std::sqrt(noise2), kLimitPerLength * lengthPx});
  return limitPx * limitPx;
}

// Short atoms, alone or two together, off the line through what lies on both sides of them.
void TFitTable::findGhosts() {
  for (int length = 1; length <= 2; ++length) {
    for (int k = 1; k + length < atoms(); ++k) {
      if (centresOf(k, k + length) > kLongestDropped) continue;
      TMoments::TSums sums = moments.sumsOf(span(k - 1, k));
      sums += moments.sumsOf(span(k + length, k + length + 1));
      const TLine around = moments.lineOf(sums);
      const TLine own = moments.lineOf(span(k, k + length));
      const double off = std::abs(around.offsetOf(own.x, own.y));
      if (off < kGhostOffPerNoise * noise || off * off < kGhostNoise2 * around.variance) continue;
      for (int g = k; g < k + length; ++g) mayBeGhost[static_cast<std::size_t>(g)] = true;
    }
  }
}

// Leaves out the short inner atom that disturbs the line most.
bool TFitTable::dropWorst(int first, int last, TMoments::TSums& sums, TLineEntry& entry) const {
  const double all = moments.sumsOf(span(first, last)).n;
  int worst = -1;
  TMoments::TSums bestSums;
  TLine best = entry.line;
  best.variance *= kDropGain;
  for (int k = first + 1; k + 1 < last; ++k) {
    if (!mayBeGhost[static_cast<std::size_t>(k)]) continue;
    TMoments::TSums rest = sums;
    rest -= moments.sumsOf(span(k, k + 1));
    const TLine line = moments.lineOf(rest);
    if (line.variance < best.variance) {
      best = line;
      bestSums = rest;
      worst = k;
    }
  }
  if (worst < 0 || bestSums.n < kLeastKept * all) return false;
  sums = bestSums;
  entry.line = best;
  entry.dropped += centresOf(worst, worst + 1);
  return true;
}

TLineEntry TFitTable::fitLine(int first, int last) const {
  TLineEntry entry;
  const TSpan all = span(first, last);
  if (all.count() < 2) return entry;
  TMoments::TSums sums = moments.sumsOf(all);
  const double weight = sums.n;
  entry.line = moments.lineOf(sums);
  entry.leftX = centres.at(all.first);
  entry.rightX = centres.at(all.last - 1);
  const double pooled =
      (atomResiduals[static_cast<std::size_t>(last)] - atomResiduals[static_cast<std::size_t>(first)]) / weight;
  entry.noise2 = std::clamp(pooled, noise * noise, kMostNoise2 * noise * noise);
  for (int drop = 0; drop < kMostDropped && entry.line.variance > kGhostNoise2 * entry.noise2; ++drop) {
    if (!dropWorst(first, last, sums, entry)) break;
  }
  const double dx = std::max(entry.line.dx, 1e-9);
  entry.lengthPx = (entry.rightX - entry.leftX + 1.0) / dx;
  entry.isStraight = entry.line.variance <= varianceLimit(entry.noise2, entry.lengthPx) && entry.line.dx > 0.02;
  if (!entry.isStraight) return entry;
  entry.angleDeg = angleOf(entry.line.dx, entry.line.dy);
  entry.cost = fitCost(entry.line.variance, entry, all.count(), entry.dropped);
  return entry;
}

std::optional<TCircle> TFitTable::circleWithoutGhosts(int first, int last, int& dropped) const {
  TMoments::TSums sums = moments.sumsOf(span(first, last));
  const double all = sums.n;
  dropped = 0;
  for (int k = first + 1; k + 1 < last; ++k) {
    if (!mayBeGhost[static_cast<std::size_t>(k)]) continue;
    sums -= moments.sumsOf(span(k, k + 1));
    dropped += centresOf(k, k + 1);
  }
  return dropped > 0 && sums.n >= kLeastKept * all ? moments.circleOf(sums) : std::nullopt;
}

TCircleEntry TFitTable::fitCircle(int first, int last) const {
  TCircleEntry entry;
  const TSpan all = span(first, last);
  if (all.count() < 5) return entry;
  std::optional<TCircle> circle = moments.circleOf(all);
  if (circle && circle->variance > kGhostNoise2 * noise * noise) {
    const std::optional<TCircle> clean = circleWithoutGhosts(first, last, entry.dropped);
    if (clean && clean->variance < kDropGain * circle->variance) {
      circle = clean;
    } else {
      entry.dropped = 0;
    }
  }
  if (!circle) return entry;
  entry.circle = *circle;
  const double leftX = centres.at(all.first);
  const double rightX = centres.at(all.last - 1);
  const double leftY = centres.y[static_cast<std::size_t>(all.first)];
  const double rightY = centres.y[static_cast<std::size_t>(all.last) - 1];
  entry.startDeg = tangentDeg(*circle, leftX, leftY);
  entry.endDeg = tangentDeg(*circle, rightX, rightY);
  const double chord2 = (rightX - leftX) * (rightX - leftX) + (rightY - leftY) * (rightY - leftY);
  const double height2 = circle->r * circle->r - 0.25 * chord2;
  entry.sagittaPx = circle->r - (height2 > 0.0 ? std::sqrt(height2) : 0.0);
  const TLineEntry& straight = line(first, last);
  const double limit = varianceLimit(straight.noise2, rightX - leftX);
  entry.cost = fitCost(circle->variance, straight, all.count(), entry.dropped);
  const bool isOneSided = (leftY > circle->y) == (rightY > circle->y);
  entry.isValid = circle->variance <= limit && isOneSided &&
                  entry.sagittaPx >= std::max(kLeastSagittaPx, kSagittaPerNoise * noise);
  return entry;
}

const TCircleEntry& TFitTable::circle(int first, int last) {
  const std::size_t at = indexOf(first, last);
  if (isCircleFitted[at] == 0) {
    circles[at] = fitCircle(first, last);
    isCircleFitted[at] = 1;
  }
  return circles[at];
}

}  // namespace weld
