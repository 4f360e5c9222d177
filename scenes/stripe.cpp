#include "scenes/stripe.h"

#include "scenes/exact_math.h"
#include "scenes/random.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr double kDarkestVisible = 10.0;  // grey level of the ridge
constexpr double kKeepNearSeamPx = 30.0;  // no stripe is lost this near to a feature point
constexpr int kShortestRunPx = 3;         // of a lost stretch
constexpr int kBetweenRunsPx = 40;        // least distance of two lost stretches
constexpr int kShortestDropPx = 3;        // of the runs of TTroubles
constexpr int kLongestDropPx = 25;
constexpr double kDropsSparePx = 4.0;      // columns that they leave beside a point
constexpr int kMostRuns = 1000;            // tries to place lost stretches
constexpr double kFlareReachPx = 45.0;     // distance from the seam at which flare has half its effect
constexpr double kFlareWidening = 1.5;     // a full flare adds this many widths
constexpr double kHaloWidth = 4.0;         // width of the halo around a flare, stripe widths
constexpr double kHaloLevel = 50.0;        // grey level of the halo at full flare
constexpr double kSecondExposure = 0.6;    // brightness of the second exposure against the first
constexpr double kFlankGhostWidths = 2.0;  // a reflection keeps so many stripe widths from the flank
constexpr double kWhite = 255.0;

struct TColumns {
  int first = 0;
  int last = -1;
};

TColumns columnsOf(const TPiece& piece, int cols) {
  return {static_cast<int>(std::ceil(std::max(piece.firstX, 0.0))),
          static_cast<int>(std::floor(std::min(piece.lastX, cols - 1.0)))};
}

bool isNearFeature(const TProfile& profile, double fromX, double toX, double keepPx) {
  const auto isNear = [&](const cv::Point2d& p) { return p.x > fromX - keepPx && p.x < toX + keepPx; };
  if (profile.hasSeam && isNear(profile.seam)) return true;
  return std::any_of(profile.features.begin(), profile.features.end(),
                     [&](const TFeature& f) { return isNear(f.point); });
}

// One flag per column: the stripe is lost there.
std::vector<char> loseStretches(const TSceneParams& params, const TProfile& profile) {
  const int cols = params.size.width;
  std::vector<char> isLost(cols, 0);
  const auto wanted = static_cast<int>(params.look.missingShare * cols);
  const int longest = std::max(kShortestRunPx, static_cast<int>(params.look.missingRunPx));
  TRandom random(params.seed, TStream::missing);
  int lost = 0;
  for (int i = 0; i < kMostRuns && lost < wanted; ++i) {
    const int first = random.integer(0, cols - 1);
    const int last = std::min(first + random.integer(kShortestRunPx, longest), cols) - 1;
    // Stretches too near to each other would act like a longer one.
    const auto from = isLost.begin() + std::max(first - kBetweenRunsPx, 0);
    const auto to = isLost.begin() + std::min(last + 1 + kBetweenRunsPx, cols);
    const bool isTaken = std::find(from, to, 1) != to;
    if (isTaken || isNearFeature(profile, first, last, kKeepNearSeamPx)) continue;
    std::fill(isLost.begin() + first, isLost.begin() + last + 1, 1);
    lost += last - first + 1;
  }
  return isLost;
}

// Runs that leave only a few columns beside the points, and one that covers a point.
void dropRuns(const TSceneParams& params, const TProfile& profile, std::vector<char>& isLost) {
  const int cols = params.size.width;
  TRandom random(params.seed, TStream::drops, params.frame);
  const auto drop = [&](int first, int length) {
    const int begin = std::clamp(first, 0, cols);
    std::fill(isLost.begin() + begin, isLost.begin() + std::clamp(first + length, begin, cols), 1);
  };
  const int runs = static_cast<int>(params.troubles.dropShare * cols * 2.0 / (kShortestDropPx + kLongestDropPx));
  for (int i = 0; i < runs; ++i) {
    const int length = random.integer(kShortestDropPx, kLongestDropPx);
    const int first = random.integer(0, cols - length);
    if (!isNearFeature(profile, first, first + length, kDropsSparePx)) drop(first, length);
  }
  const std::vector<cv::Point2d> toes = toesOf(profile);
  const int length = params.troubles.dropAtPointPx;
  if (length <= 0 || toes.empty()) return;
  const auto which = static_cast<std::size_t>(random.integer(0, static_cast<int>(toes.size()) - 1));
  drop(static_cast<int>(toes[which].x) - random.integer(0, length - 1), length);
}

// A flash drowns the stripe but for one scrap of it.
void keepScrap(const TSceneParams& params, std::vector<char>& isLost) {
  const int length = static_cast<int>(params.troubles.scrapPx);
  const int cols = params.size.width;
  if (length <= 0 || length >= cols) return;
  TRandom random(params.seed, TStream::scrap, params.frame);
  const int first = random.integer(0, cols - length);
  std::fill(isLost.begin(), isLost.begin() + first, 1);
  std::fill(isLost.begin() + first + length, isLost.end(), 1);
}

double flareAt(const TSceneParams& params, const TProfile& profile, double x) {
  const double share = (x - profile.seam.x) / kFlareReachPx;
  return params.look.flare * halve(static_cast<float>(share * share));
}

TStripeColumn layOutColumn(const TSceneParams& params, const TProfile& profile, const TPiece& piece, int x) {
  const TLook& look = params.look;
  const double span = piece.lastX - piece.firstX;
  const double along = span > 0.0 ? (x - piece.firstX) / span : 0.0;
  const double root = piece.rootShareFirst + (piece.rootShareLast - piece.rootShareFirst) * along;
  const double side = x < profile.seam.x ? (profile.seam.x - x) / profile.seam.x
                                         : (x - profile.seam.x) / (params.size.width - profile.seam.x);
  const double slope = slopeAt(profile, piece, x);
  TStripeColumn column;
  column.x = x;
  column.row = rowAt(profile, piece, x);
  column.cosine = 1.0 / std::sqrt(1.0 + slope * slope);
  column.fwhmPx = (look.fwhmPx + (look.rootFwhmPx - look.fwhmPx) * root) *
                  (1.0 + kFlareWidening * flareAt(params, profile, x));
  column.peak = (look.peak + (look.rootPeak - look.peak) * root) * (1.0 - look.fade * side * side) /
                (piece.isDark ? look.brightnessRatio : 1.0);
  if (piece.isDark && params.troubles.darkFwhmPx > 0.0) column.fwhmPx = params.troubles.darkFwhmPx;
  column.roughPx = piece.isDark ? params.troubles.darkRoughPx : 0.0;
  if (piece.isInGroove()) column.roughPx = std::max(column.roughPx, params.troubles.flankRoughPx);
  column.peak *= 1.0 - look.slopeDimming * (1.0 - column.cosine);
  return column;
}

bool isVisible(const TSceneParams& params, const TStripeColumn& column) {
  const double steepest = params.look.steepestSlope;
  return column.cosine >= 1.0 / std::sqrt(1.0 + steepest * steepest) && column.peak >= kDarkestVisible &&
         column.row >= 0.0 && column.row <= params.size.height - 1.0;
}

void drawGhost(const TSceneParams& params, const TProfile& profile, const TSpeckle& speckle, cv::Mat1f& light) {
  const TLook& look = params.look;
  const double halfSpan = look.ghostSpan * params.size.width / 2.0;
  const double crossing = tanDeg(look.ghostTiltDeg);
  TSceneParams whole = params;
  whole.look.missingShare = 0.0;  // a reflection has no part in what the surface loses
  whole.look.flare = 0.0;
  for (TStripeColumn column : layOutStripe(whole, profile)) {
    const double dx = column.x - profile.pivotX;
    if (std::abs(dx) > halfSpan) continue;
    column.row += look.ghostOffsetPx + crossing * dx;
    column.peak = look.ghostShare * std::min(column.peak, kWhite);
    drawColumn(column, look.flatTop, speckle, light);
  }
}

// Unit variance; neighbours share two thirds of it.
double roughnessAt(const TRandom& random, int x) {
  const auto place = static_cast<std::uint64_t>(x);
  double sum = 0.0;
  for (std::uint64_t i = 0; i < 3; ++i) sum += toGaussian(random.at(place + i));
  return sum / std::sqrt(3.0);
}

// The reflection of a flank starts clear of the flank that it lies on.
void drawFlankGhosts(const TSceneParams& params, const TProfile& profile, const TSpeckle& speckle,
                     cv::Mat1f& light) {
  const TLook& look = params.look;
  for (const TPiece& piece : profile.reflections) {
    const TColumns range = columnsOf(piece, params.size.width);
    for (int x = range.first; x <= range.last; ++x) {
      TStripeColumn column = layOutColumn(params, profile, piece, x);
      column.row += profile.deeper * kFlankGhostWidths * column.fwhmPx / column.cosine;
      column.peak = look.flankGhostShare * std::min(column.peak, kWhite);
      drawColumn(column, look.flatTop, speckle, light);
    }
  }
}

}  // namespace

void drawColumn(const TStripeColumn& column, double flatTop, const TSpeckle& speckle, cv::Mat1f& light) {
  const double perRow = 2.0 * column.cosine / column.fwhmPx;
  const double reach = std::sqrt(static_cast<double>(kFadedOut)) / perRow;
  const int top = std::max(0, static_cast<int>(std::ceil(column.row - reach)));
  const int bottom = std::min(light.rows - 1, static_cast<int>(std::floor(column.row + reach)));
  const auto peak = static_cast<float>(column.peak);
  const auto flat = static_cast<float>(flatTop);
  for (int y = top; y <= bottom; ++y) {
    const double distance = (y - column.row) * perRow;
    const auto u = static_cast<float>(distance * distance);
    const float gaussian = halve(u);
    const float shape = flat > 0.0F ? gaussian + flat * (halve(u * u * u) - gaussian) : gaussian;
    light(y, column.x) += peak * shape * speckle.factor(column.x, y);
  }
}

std::vector<TStripeColumn> layOutStripe(const TSceneParams& params, const TProfile& profile) {
  std::vector<char> isLost = loseStretches(params, profile);
  dropRuns(params, profile, isLost);
  keepScrap(params, isLost);
  std::vector<TStripeColumn> columns;
  for (const TPiece& piece : profile.pieces) {
    const TColumns range = columnsOf(piece, params.size.width);
    for (int x = range.first; x <= range.last; ++x) {
      const TStripeColumn column = layOutColumn(params, profile, piece, x);
      if (isLost[x] == 0 && isVisible(params, column)) columns.push_back(column);
    }
  }
  return columns;
}

void drawStripe(const TSceneParams& params, const TProfile& profile, const std::vector<TStripeColumn>& columns,
                const TSpeckle& speckle, cv::Mat1f& light) {
  const TLook& look = params.look;
  const TRandom roughness(params.seed, TStream::roughness, params.frame);
  for (TStripeColumn column : columns) {
    if (column.roughPx > 0.0) column.row += column.roughPx * roughnessAt(roughness, column.x);
    drawColumn(column, look.flatTop, speckle, light);
    const double flare = look.flare > 0.0 ? flareAt(params, profile, column.x) : 0.0;
    if (flare > 0.0) {
      TStripeColumn halo = column;
      halo.fwhmPx = kHaloWidth * column.fwhmPx;
      halo.peak = kHaloLevel * flare;
      drawColumn(halo, 0.0, speckle, light);
    }
    if (look.doubleExposurePx == 0.0) continue;
    column.row += look.doubleExposurePx;
    column.peak *= kSecondExposure;
    drawColumn(column, look.flatTop, speckle, light);
  }
  if (look.ghostShare > 0.0) drawGhost(params, profile, speckle, light);
  if (look.flankGhostShare > 0.0) drawFlankGhosts(params, profile, speckle, light);
}

}  // namespace scenes
