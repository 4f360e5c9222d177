#include "profile/light_ray.h"

#include "support/grey_image.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kFarthestPx = 250;   // that the light is followed
constexpr int kReferenceFrom = 3;  // px before the point, where the flank's own brightness is read
constexpr int kReferenceTo = 18;
constexpr int kLeastStrayPx = 2;
constexpr int kReachRows = 2;  // the brightest row so near counts: a line is not laid to the pixel
constexpr double kLitShare = 0.5;
constexpr double kOtherShare = 2.5;    // of the flank's brightness, that another surface has
constexpr int kMostHalfPx = 60;        // rows from the line to the edge of its light
constexpr double kAsidePx = 3.0;       // of the light of another surface
constexpr int kAsideRun = 5;           // px in a row
constexpr int kOtherRun = 10;          // px in a row: grains are bright, too
constexpr int kDarkRun = 4;            // px in a row that end the light: speckle has dark grains
constexpr int kMostHolePx = 40;        // behind which the light goes on ...
constexpr int kResumedPx = 24;         // ... where so long a stretch ...
constexpr double kResumedShare = 0.8;  // ... is so much the flank's own
constexpr double kCrossingPx = 1.2;    // between the halves of such a stretch: light that crosses the line

}  // namespace

// What speaks against the light on the way.
struct TLightRay::TStop {
  int lit = 0;  // the last px that was
  int aside = 0;
  int bright = 0;
  double freePx = 0.0;

  // Where the light ends by what has been seen up to this px; the px itself: it does not.
  int endAt(int px, bool isColumnDark) const {
    int end = px;
    if (px - lit >= kDarkRun || isColumnDark) end = lit;
    if (aside >= kAsideRun) end = std::min(end, px - aside);
    if (bright >= kOtherRun) end = std::min(end, px - bright);
    if (px > freePx) end = std::min(end, static_cast<int>(freePx));
    return end;
  }
};

TLightRay::TLightRay(const cv::Mat& readImage, cv::Point2d from, cv::Point2d direction)
    : image(readImage), origin(from), step(direction) {
  double sum = 0.0;
  for (int px = kReferenceFrom; px < kReferenceTo; ++px) sum += greyAt(-px);
  const double own = sum / (kReferenceTo - kReferenceFrom);
  least = kLitShare * own;
  most = kOtherShare * own;
}

double TLightRay::litPx(double freePx) const {
  if (!(least > 0.0)) return 0.0;
  TStop stop;
  stop.freePx = freePx;
  int px = 0;
  if (greyAt(0) < least) {
    const std::optional<int> resumed = resumedAfter(0);
    if (!resumed) return endBefore();
    px = stop.lit = *resumed;
  }
  while (++px <= kFarthestPx) {
    const double grey = greyAt(px);
    const bool isLit = grey >= least;
    if (isLit) stop.lit = px;
    stop.aside = isLit && std::abs(asidePx(px)) > kAsidePx ? stop.aside + 1 : 0;
    stop.bright = grey > most ? stop.bright + 1 : 0;
    const int end = stop.endAt(px, isColumnDark(px));
    if (end == px) continue;
    const std::optional<int> resumed = resumedAfter(end);
    if (!resumed) return end == stop.lit && end > 0 ? borderAfter(end) : std::max(end, 0);
    px = *resumed;
    stop = {px, 0, 0, kFarthestPx};
  }
  return 0.0;
}

// Behind stray light; 0 where that is no longer than the blur of an end, or goes on for long.
double TLightRay::endBefore() const {
  int px = -1;
  while (px >= -kReferenceFrom && greyAt(px) < least) --px;
  return px < -kReferenceFrom || px > -kLeastStrayPx ? 0.0 : borderAfter(px);
}

bool TLightRay::hasDarkColumn(double toPx) const {
  const int columns = roundToInt(std::abs(toPx * step.x));
  for (int i = 0; i <= columns; ++i) {
    if (isColumnDark(i / std::max(std::abs(step.x), 0.02))) return true;
  }
  return false;
}

double TLightRay::greyAt(int px) const {
  return brightestIn(px, kReachRows);
}

// Of the rows about the line; 0 outside the image.
int TLightRay::brightestIn(double px, int reach) const {
  const int x = roundToInt(origin.x + px * step.x);
  const int y = roundToInt(origin.y + px * step.y);
  int brightest = 0;
  if (x < 0 || x >= image.cols) return brightest;
  for (int row = std::max(y - reach, 0); row <= std::min(y + reach, image.rows - 1); ++row)
    brightest = std::max(brightest, greyOf(image.ptr(row, x), image.channels()));
  return brightest;
}

bool TLightRay::isOwn(int px) const {
  const double grey = greyAt(px);
  return grey >= least && grey <= most && std::abs(asidePx(px)) <= kAsidePx;
}

// By how much the middle of the light in the column lies beside the line.
double TLightRay::asidePx(int px) const {
  const int x = roundToInt(origin.x + px * step.x);
  const int y = roundToInt(origin.y + px * step.y);
  if (x < 0 || x >= image.cols) return 0.0;
  const double middle = 0.5 * (edgeFrom(x, y, 1) + edgeFrom(x, y, -1));
  return (middle - (origin.y + px * step.y)) * step.x;
}

// The last lit row of a column on the way up or down.
int TLightRay::edgeFrom(int x, int y, int way) const {
  const int first = y + way;
  if (first < 0 || first >= image.rows) return y;
  const int channels = image.channels();
  const int leastGrey = static_cast<int>(std::ceil(least));
  const unsigned char* const column = image.ptr() + static_cast<std::ptrdiff_t>(x) * channels;
  const auto stride = static_cast<std::ptrdiff_t>(image.step[0]);
  const int last = way > 0 ? std::min(image.rows - 1, y + kMostHalfPx) : std::max(0, y - kMostHalfPx);
  int edge = y;
  for (int row = first; (last - row) * way >= 0; row += way) {
    if ((row - edge) * way > kReachRows + 2) break;
    if (greyOf(column + row * stride, channels) >= leastGrey) edge = row;
  }
  return edge;
}

double TLightRay::borderAfter(int lit) const {
  const double before = greyAt(lit);
  return lit + (before - least) / std::max(before - greyAt(lit + 1), 1.0);
}

// Whether the light of the stretch up to this px crosses the line: it is another surface's.
bool TLightRay::isCrossing(int px) const {
  double sums[2] = {0.0, 0.0};
  int counts[2] = {0, 0};
  for (int back = 0; back < kResumedPx; ++back) {
    if (!isOwn(px - back)) continue;
    const int half = 2 * back < kResumedPx ? 1 : 0;
    sums[half] += asidePx(px - back);
    ++counts[half];
  }
  if (counts[0] == 0 || counts[1] == 0) return false;
  return std::abs(sums[1] / counts[1] - sums[0] / counts[0]) > kCrossingPx;
}

std::optional<int> TLightRay::resumedAfter(int end) const {
  int own = 0;  // of the last px
  for (int px = end + 1; px <= end + kMostHolePx + kResumedPx; ++px) {
    const bool isOwnNow = isOwn(px);
    own += isOwnNow ? 1 : 0;
    if (px > end + kResumedPx && isOwn(px - kResumedPx)) --own;
    if (isOwnNow && own >= kResumedShare * kResumedPx && !isCrossing(px)) return px;
  }
  return std::nullopt;
}

}  // namespace weld
