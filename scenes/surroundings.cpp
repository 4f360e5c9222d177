#include "scenes/surroundings.h"

#include "scenes/exact_math.h"
#include "scenes/random.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr int kNoiseTableSize = 1 << 16;  // a power of two
constexpr double kBrushedShare = 0.5;     // share of brushing marks in the texture
const cv::Size kPatchPx{96, 72};          // cells of the smooth brightness changes of a surface
const cv::Size kBrushPx{48, 2};           // cells of the brushing marks

constexpr int kSpotsPerBlob = 4;
constexpr double kBlobSpeckle = 0.5;  // share of a blob's light that the speckle breaks up
constexpr double kGlowHeight = 0.12;  // the arc burns this share of the frame height above the seam
constexpr double kGlowReach = 0.16;   // half-height radius of the glow, share of the frame width
constexpr double kCoreReach = 0.05;   // the same of its core
constexpr double kCoreShare = 0.4;    // share of the glow in the core
constexpr double kFlicker = 0.2;      // share by which the arc changes from frame to frame
constexpr double kStreakStep = 0.5;   // distance of the dabs that make up a streak, px

// Adds random values on a lattice, interpolated between its nodes.
void addTexture(cv::Size cell, double amplitude, const TRandom& random, cv::Mat1f& light) {
  const int nodes = light.cols / cell.width + 2;
  std::vector<float> nodeValues(nodes);
  const auto nodeAt = [&](int i, int j) {
    const auto index = (static_cast<std::uint64_t>(j) << 32U) + static_cast<std::uint64_t>(i);
    return amplitude * (2.0 * toUnit(random.at(index)) - 1.0);
  };
  for (int y = 0; y < light.rows; ++y) {
    const int j = y / cell.height;
    const double v = static_cast<double>(y % cell.height) / cell.height;
    for (int i = 0; i < nodes; ++i) {
      const double upper = nodeAt(i, j);
      nodeValues[i] = static_cast<float>(upper + (nodeAt(i, j + 1) - upper) * v * v * (3.0 - 2.0 * v));
    }
    float* row = light[y];
    for (int i = 0; i * cell.width < light.cols; ++i) {
      const int first = i * cell.width;
      const int count = std::min(cell.width, light.cols - first);
      const float step = (nodeValues[i + 1] - nodeValues[i]) / static_cast<float>(cell.width);
      for (int k = 0; k < count; ++k) row[first + k] += nodeValues[i] + step * static_cast<float>(k);
    }
  }
}

// A streak: dabs along a straight path that fade towards its tail, the brightest wins.
void addStreak(cv::Point2d head, cv::Point2d direction, double lengthPx, double radiusPx, double level,
               cv::Mat1f& light) {
  const int reach = static_cast<int>(std::ceil(radiusPx * std::sqrt(static_cast<double>(kFadedOut))));
  // Steps of a half add up exactly. NOLINTNEXTLINE(cert-flp30-c,clang-analyzer-security.FloatLoopCounter)
  for (double along = 0.0; along < lengthPx; along += kStreakStep) {
    const cv::Point2d p = head + direction * along;
    const auto dab = static_cast<float>(level * (1.0 - along / lengthPx));
    const cv::Point nearest(static_cast<int>(std::floor(p.x + 0.5)), static_cast<int>(std::floor(p.y + 0.5)));
    for (int y = std::max(0, nearest.y - reach); y <= std::min(light.rows - 1, nearest.y + reach); ++y) {
      for (int x = std::max(0, nearest.x - reach); x <= std::min(light.cols - 1, nearest.x + reach); ++x) {
        const double dx = (x - p.x) / radiusPx;
        const double dy = (y - p.y) / radiusPx;
        light(y, x) = std::max(light(y, x), dab * halve(static_cast<float>(dx * dx + dy * dy)));
      }
    }
  }
}

const std::vector<float>& noiseTable() {
  static const std::vector<float> table = [] {
    const TRandom random(0, TStream::noise);
    std::vector<float> values(kNoiseTableSize);
    for (int i = 0; i < kNoiseTableSize; ++i) values[i] = static_cast<float>(toGaussian(random.at(i)));
    return values;
  }();
  return table;
}

void exposeRow(const float* light, float sigma, std::uint64_t offset, int cols, unsigned char* out) {
  const float* noise = noiseTable().data();
  for (int x = 0; x < cols; ++x) {
    const float level = light[x] + sigma * noise[(offset + x) & (kNoiseTableSize - 1)];
    // Never negative, so that the cast rounds. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    out[x] = static_cast<unsigned char>(std::min(std::max(level, 0.0F), 255.0F) + 0.5F);
  }
}

}  // namespace

void addSpot(cv::Point2d centre, cv::Size2d radius, double level, const TSpeckle* speckle, cv::Mat1f& light) {
  const double reach = std::sqrt(static_cast<double>(kFadedOut));
  const int left = std::max(0, static_cast<int>(centre.x - reach * radius.width));
  const int right = std::min(light.cols - 1, static_cast<int>(centre.x + reach * radius.width));
  const int top = std::max(0, static_cast<int>(centre.y - reach * radius.height));
  const int bottom = std::min(light.rows - 1, static_cast<int>(centre.y + reach * radius.height));
  if (left > right) return;
  std::vector<float> across(right - left + 1);
  for (int x = left; x <= right; ++x) {
    const double share = (x - centre.x) / radius.width;
    across[x - left] = halve(static_cast<float>(share * share));
  }
  for (int y = top; y <= bottom; ++y) {
    const double share = (y - centre.y) / radius.height;
    const float down = static_cast<float>(level) * halve(static_cast<float>(share * share));
    float* row = light[y];
    for (int x = left; x <= right; ++x) {
      const float value = down * across[x - left];
      row[x] += speckle == nullptr ? value : value * speckle->factor(x, y);
    }
  }
}

cv::Mat1f lightSurroundings(const TSceneParams& params) {
  const TLook& look = params.look;
  cv::Mat1f light(params.size, static_cast<float>(look.background + params.troubles.flashLevel));
  if (look.texture <= 0.0) return light;
  TRandom random(params.seed, TStream::texture);
  addTexture(kPatchPx, look.texture * (1.0 - kBrushedShare), TRandom(random.next(), TStream::texture), light);
  addTexture(kBrushPx, look.texture * kBrushedShare, TRandom(random.next(), TStream::texture), light);
  return light;
}

void addBlobs(const TSceneParams& params, const std::vector<double>& centreY, const TSpeckle& speckle,
              cv::Mat1f& light) {
  TRandom random(params.seed, TStream::blobs);
  for (int i = 0; i < params.look.blobs; ++i) {
    const int x = random.integer(0, params.size.width - 1);
    const double side = random.chance(0.5) ? 1.0 : -1.0;
    const double distance = 2.0 * params.look.fwhmPx + random.uniform(15.0, 70.0);
    const double level = random.uniform(60.0, 250.0);
    for (int spot = 0; spot < kSpotsPerBlob; ++spot) {
      const cv::Point2d offset{random.uniform(-25.0, 25.0), random.uniform(-8.0, 8.0)};
      const cv::Size2d radius{random.uniform(4.0, 20.0), random.uniform(3.0, 9.0)};
      if (std::isnan(centreY[x])) continue;
      const cv::Point2d centre = cv::Point2d(x, centreY[x] + side * distance) + offset;
      addSpot(centre, radius, level * (1.0 - kBlobSpeckle), nullptr, light);
      addSpot(centre, radius, level * kBlobSpeckle, &speckle, light);
    }
  }
}

void addArc(const TSceneParams& params, cv::Point2d seam, cv::Mat1f& light) {
  const TLook& look = params.look;
  const cv::Point2d arc{seam.x, seam.y - kGlowHeight * params.size.height};
  TRandom flicker(params.seed, TStream::glow, params.frame);
  const double level = look.arcGlow * flicker.uniform(1.0 - kFlicker, 1.0);
  const double reach = kGlowReach * params.size.width;
  const double core = kCoreReach * params.size.width;
  if (level > 0.0) {
    addSpot(arc, {reach, reach}, level * (1.0 - kCoreShare), nullptr, light);
    addSpot(arc, {core, core}, level * kCoreShare, nullptr, light);
  }
  TRandom random(params.seed, TStream::spatter, params.frame);
  for (int i = 0; i < look.spatter; ++i) {
    const TSinCos angle = sinCosDeg(random.uniform(0.0, 360.0));
    const cv::Point2d outwards{angle.cos, angle.sin};
    const double distance = random.uniform(0.02, 0.45) * params.size.width;
    const double lengthPx = random.uniform(12.0, 110.0);
    const double radiusPx = random.uniform(0.7, 2.2);
    addStreak(arc + outwards * distance, -outwards, lengthPx, radiusPx, random.uniform(120.0, 400.0), light);
  }
}

cv::Mat1b exposeFrame(const TSceneParams& params, const cv::Mat1f& light) {
  const TRandom random(params.seed, TStream::noise, params.frame);
  const auto sigma = static_cast<float>(params.look.noiseSigma);
  cv::Mat1b frame(light.size());
  for (int y = 0; y < light.rows; ++y) exposeRow(light[y], sigma, random.at(y), light.cols, frame[y]);
  return frame;
}

}  // namespace scenes
