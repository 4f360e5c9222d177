#include "scenes/troubles.h"

#include "scenes/exact_math.h"
#include "scenes/random.h"
#include "scenes/surroundings.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr double kWhite = 255.0;
constexpr double kSeamLineFwhmPx = 5.0;
constexpr double kMirrorFwhm = 1.5;      // width of a mirror image, stripe widths
constexpr double kTorchWidth = 0.09;     // share of the frame width
constexpr double kTorchGap = 0.22;       // the torch ends this share of the frame height above the seam
constexpr double kWireGap = 0.08;        // the same of the wire
constexpr double kWirePx = 5.0;          // half the wire's width
constexpr double kTorchHighlight = 3.0;  // brightness of the gloss along its middle against its sides

cv::Point2d seamOf(const TSceneParams& params) {
  return {params.geometry.seam.x * params.size.width, params.geometry.seam.y * params.size.height};
}

// Upright like the joint of two plates, leaning against the stripe's tilt.
void addSeamLine(const TSceneParams& params, cv::Mat1f& light) {
  const cv::Point2d seam = seamOf(params);
  const double lean = -tanDeg(params.geometry.tiltDeg);
  for (int y = 0; y < light.rows; ++y) {
    const double centre = seam.x + lean * (y - seam.y);
    const int first = std::max(0, static_cast<int>(centre - 3.0 * kSeamLineFwhmPx));
    const int last = std::min(light.cols - 1, static_cast<int>(centre + 3.0 * kSeamLineFwhmPx));
    for (int x = first; x <= last; ++x) {
      const double share = 2.0 * (x - centre) / kSeamLineFwhmPx;
      light(y, x) -= static_cast<float>(params.troubles.seamLine) * halve(static_cast<float>(share * share));
    }
  }
}

// A glossy cylinder that ends above the seam, and the wire below it.
void addTorch(const TSceneParams& params, cv::Mat1f& light) {
  const cv::Point2d seam = seamOf(params);
  const double radiusPx = kTorchWidth * params.size.width / 2.0;
  const double torchEnd = seam.y - kTorchGap * params.size.height;
  const double wireEnd = seam.y - kWireGap * params.size.height;
  const double level = params.troubles.torchLevel;
  for (int y = 0; y < std::min<double>(light.rows, wireEnd); ++y) {
    const double reach = y < torchEnd ? radiusPx : kWirePx;
    const int first = std::max(0, static_cast<int>(std::ceil(seam.x - reach)));
    const int last = std::min(light.cols - 1, static_cast<int>(std::floor(seam.x + reach)));
    for (int x = first; x <= last; ++x) {
      const double share = 4.0 * (x - seam.x) / reach;
      const auto gloss = static_cast<double>(halve(static_cast<float>(share * share)));
      light(y, x) = static_cast<float>(level * (1.0 + (kTorchHighlight - 1.0) * gloss));
    }
  }
}

void drawSecondLaser(const TSceneParams& params, const TProfile& profile,
                     const std::vector<TStripeColumn>& columns, const TSpeckle& speckle, cv::Mat1f& light) {
  const TTroubles& troubles = params.troubles;
  for (TStripeColumn column : columns) {
    column.row =
        profile.seam.y + troubles.secondLaserDropPx + troubles.secondLaserRise * (column.row - profile.seam.y);
    const double slope = troubles.secondLaserRise * std::sqrt(1.0 / (column.cosine * column.cosine) - 1.0);
    column.cosine = 1.0 / std::sqrt(1.0 + slope * slope);
    column.peak = troubles.secondLaserShare * std::min(column.peak, kWhite);
    drawColumn(column, params.look.flatTop, speckle, light);
  }
}

void drawMirrorLines(const TSceneParams& params, const TProfile& profile, const TSpeckle& speckle,
                     cv::Mat1f& light) {
  TRandom random(params.seed, TStream::mirrors);
  for (int i = 0; i < params.troubles.mirrorLines; ++i) {
    const double slope = tanDeg(random.uniform(-60.0, 60.0));
    const double reach = random.uniform(0.05, 0.25) * params.size.width * (random.chance(0.5) ? 1.0 : -1.0);
    const double share = random.uniform(0.08, 0.3);
    TStripeColumn column;
    column.cosine = 1.0 / std::sqrt(1.0 + slope * slope);
    column.fwhmPx = kMirrorFwhm * params.look.fwhmPx;
    const int first = std::max(0, static_cast<int>(profile.seam.x + std::min(reach, 0.0)));
    const int last = std::min(light.cols - 1, static_cast<int>(profile.seam.x + std::max(reach, 0.0)));
    for (column.x = first; column.x <= last; ++column.x) {
      const double dx = column.x - profile.seam.x;
      column.row = profile.seam.y + slope * dx;
      column.peak = share * std::min(params.look.peak, kWhite) * (1.0 - dx / reach);
      drawColumn(column, 0.0, speckle, light);
    }
  }
}

void addToeBlob(const TSceneParams& params, const TProfile& profile, const TSpeckle& speckle, cv::Mat1f& light) {
  const std::vector<cv::Point2d> toes = toesOf(profile);
  if (toes.empty()) return;
  TRandom random(params.seed, TStream::toeBlob);
  const auto which = static_cast<std::size_t>(random.integer(0, static_cast<int>(toes.size()) - 1));
  const double radiusPx = params.troubles.toeBlobPx / 2.0;
  const cv::Point2d offset{random.uniform(-0.4, 0.4) * radiusPx, random.uniform(-0.4, 0.4) * radiusPx};
  const cv::Point2d centre = toes[which] + offset;
  // Twice white at its middle: white as far as its radius.
  addSpot(centre, {radiusPx, radiusPx * random.uniform(0.6, 1.0)}, 1.5 * kWhite, nullptr, light);
  addSpot(centre, {radiusPx, radiusPx}, 0.5 * kWhite, &speckle, light);
}

}  // namespace

void addRoomLight(const TSceneParams& params, cv::Mat1f& light) {
  if (params.troubles.seamLine != 0.0) addSeamLine(params, light);
  if (params.troubles.torchLevel > 0.0) addTorch(params, light);
}

void addTroubles(const TSceneParams& params, const TProfile& profile, const std::vector<TStripeColumn>& columns,
                 const TSpeckle& speckle, cv::Mat1f& light) {
  const TTroubles& troubles = params.troubles;
  if (troubles.secondLaserShare > 0.0) drawSecondLaser(params, profile, columns, speckle, light);
  if (profile.hasSeam) drawMirrorLines(params, profile, speckle, light);
  if (troubles.toeBlobPx > 0.0) addToeBlob(params, profile, speckle, light);
}

}  // namespace scenes
