#include "contrast/families.h"

#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kBetweenShears = 7.5;  // degrees from a strip at which it still gathers a line
constexpr int kSteepestShear = kStripStep;
// Of larger images the middle, or what is near the rough place: scores of longer paths would leave their 16 bits.
constexpr int kMostAlongPx = 5800;
constexpr int kBandMargin = 40;  // px beyond the band that its lines are compared with

// tan(x) for |x| up to a right angle's half, by Newton's rule.
double tangent(double rad) {
  double t = rad;
  for (int i = 0; i < 6; ++i) t -= (arcTangent(t) - rad) * (1.0 + t * t);
  return t;
}

// Direction in the image of a slope across per along.
double directionOf(double slope, bool isFlat) {
  const double deg = slopeToDeg(slope);
  return isFlat ? deg : 90.0 - deg;
}

TShears shearsFor(const TContrastSearch& search, double slope, bool isFlat) {
  const double farthest = static_cast<double>(search.directionTolDeg) + kBetweenShears;
  TShears shears{1, 0};
  for (int k = -kSteepestShear; k <= kSteepestShear; ++k) {
    const double direction = directionOf(slope + static_cast<double>(k) / kStripStep, isFlat);
    if (angleBetween(direction, static_cast<double>(search.directionDeg)) > farthest) continue;
    if (shears.count() == 0) shears.first = k;
    shears.last = k;
  }
  return shears;
}

void limitLength(double about, TFieldBand& band) {
  if (band.end - band.begin <= kMostAlongPx) return;
  const int middle =
      static_cast<int>(std::clamp(about, static_cast<double>(band.begin), static_cast<double>(band.end)));
  band.begin = std::clamp(middle - kMostAlongPx / 2, band.begin, band.end - kMostAlongPx);
  band.end = band.begin + kMostAlongPx;
}

TFamily wholeFamily(const cv::Mat& grey, const TContrastSearch& search, bool isFlat) {
  TFamily family{viewAlong(grey, isFlat), isFlat, {}, shearsFor(search, 0.0, isFlat)};
  family.band.end = family.view.along;
  limitLength(0.5 * family.view.along, family.band);
  return family;
}

TFamily bandFamily(const cv::Mat& grey, const TContrastSearch& search) {
  constexpr double kRadPerDeg = 1.0 / kDegPerRad;
  const double direction = static_cast<double>(search.directionDeg);
  const bool isFlat = angleBetween(direction, 0.0) < 45.0;
  // The angle from the family's own axis, within half a right angle.
  double off = isFlat ? direction : 90.0 - direction;
  off -= 180.0 * std::floor(off / 180.0 + 0.5);
  const double slope = tangent(off * kRadPerDeg);
  TFamily family{viewAlong(grey, isFlat), isFlat, {}, shearsFor(search, slope, isFlat)};
  const double along = static_cast<double>(isFlat ? search.roughPos.x : search.roughPos.y);
  const double stretch = std::sqrt(1.0 + slope * slope);
  TFieldBand& band = family.band;
  band.about = along;
  band.middle = static_cast<double>(isFlat ? search.roughPos.y : search.roughPos.x);
  band.slope = slope;
  const int widest = family.view.across + family.view.along;
  band.halfPx = std::min(static_cast<int>(static_cast<double>(search.bandPx) * stretch), widest) + kBandMargin;
  band.end = family.view.along;
  if (search.reachPx > 0.0F) {
    const double reach = static_cast<double>(search.reachPx) / stretch;
    band.begin = static_cast<int>(std::clamp(along - reach, 0.0, static_cast<double>(band.end)));
    band.end = static_cast<int>(std::clamp(along + reach, 0.0, static_cast<double>(band.end)));
  }
  limitLength(along, band);
  return family;
}

}  // namespace

double angleBetween(double deg, double other) {
  const double apart = std::fmod(std::abs(deg - other), 180.0);
  return std::min(apart, 180.0 - apart);
}

TList<TFamily> familiesOf(const cv::Mat& grey, const TContrastSearch& search, TMemory* memory) {
  TList<TFamily> families(memory);
  families.reserve(2);
  if (search.bandPx > 0.0F) {
    families.push_back(bandFamily(grey, search));
    return families;
  }
  for (const bool isFlat : {false, true}) {
    const TFamily family = wholeFamily(grey, search, isFlat);
    if (family.shears.count() > 0) families.push_back(family);
  }
  return families;
}

}  // namespace weld
