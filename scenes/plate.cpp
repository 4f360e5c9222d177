#include "scenes/plate.h"

#include "scenes/exact_math.h"
#include "scenes/plate_surface.h"
#include "scenes/random.h"
#include "scenes/surroundings.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace scenes {
namespace {

constexpr double kChamferSoftPx = 1.0;
constexpr float kJitterPx = 7.0F;    // length of the steps of a rough edge
constexpr double kBlindGlow = 90.0;  // grey level of glow in which a seam cannot be told
constexpr double kGlowReach = 0.12;  // half-height radius of the glow, share of the frame width
constexpr double kTackMinPx = 14.0;
constexpr double kTackMaxPx = 34.0;

struct TSpotOnSeam {
  double along = 0.0;
  double radiusPx = 0.0;
  double gain = 1.0;
};

// Where the course lies inside the frame.
struct TExtent {
  double begin = 0.0;
  double end = 0.0;
};

bool isInside(cv::Point2d p, cv::Size size) {
  return p.x >= 0.0 && p.y >= 0.0 && p.x <= size.width - 1.0 && p.y <= size.height - 1.0;
}

TExtent extentOf(const TPlateParams& params, const TCourseFrame& course) {
  const auto walk = [&](double step) {
    double along = 0.0;
    while (isInside(course.at(along + step), params.size)) along += step;
    return along;
  };
  return {std::max(walk(-1.0), params.course.beginPx), std::min(walk(1.0), params.course.endPx)};
}

double clampUnit(double v) {
  return std::min(std::max(v, 0.0), 1.0);
}

// Share of a pixel at this distance that a band of that half width covers.
double coverage(double distance, double halfPx) {
  return clampUnit(halfPx + 0.5 - distance) - clampUnit(-halfPx + 0.5 - distance);
}

// Factor of the seam on the light.
double seamFactor(const TPlateParams& params, const TBeside& at, const TLattice& jitter) {
  const TSeamCourse& course = params.course;
  if (at.along < course.beginPx || at.along > course.endPx) return 1.0;
  if (params.seam == TPlateSeam::step) return 1.0 - course.depth * clampUnit(0.5 - at.across);
  const double half = 0.5 * course.widthPx;
  const auto s = static_cast<float>(at.along) / kJitterPx;
  const double left = half + course.edgeJitterPx * jitter.at(s + 90.0F, 3.5F);
  const double right = half + course.edgeJitterPx * jitter.at(s + 90.0F, 9.5F);
  const double covered = clampUnit(right + 0.5 - at.across) - clampUnit(-left + 0.5 - at.across);
  const double gain = params.seam == TPlateSeam::scribe ? course.depth : -course.depth;
  double factor = 1.0 + gain * std::max(covered, 0.0);
  if (params.seam == TPlateSeam::gap && course.chamferPx > 0.0) {
    const double chamfer =
        coverage(std::abs(at.across) - half - 0.5 * course.chamferPx, 0.5 * course.chamferPx + kChamferSoftPx);
    factor *= 1.0 + course.chamferGain * chamfer * (0.7 + 0.3 * jitter.at(s / 6.0F, 21.5F));
  }
  return factor;
}

void paintSeam(const TPlateParams& params, const TCourseFrame& course, cv::Mat1f& light) {
  if (params.seam == TPlateSeam::none) return;
  const TLattice jitter(TRandom(params.seed, TStream::plate, 6));
  for (int y = 0; y < light.rows; ++y) {
    for (int x = 0; x < light.cols; ++x) {
      const TBeside at = course.beside(x, y);
      const double reach = params.course.widthPx + params.course.chamferPx + 8.0;
      if (params.seam != TPlateSeam::step && std::abs(at.across) > reach) continue;
      light(y, x) *= static_cast<float>(seamFactor(params, at, jitter));
    }
  }
}

std::vector<TSpotOnSeam> tacksOf(const TPlateParams& params, const TExtent& extent) {
  TRandom random(params.seed, TStream::plate, 7);
  std::vector<TSpotOnSeam> tacks;
  for (int i = 0; i < params.look.tacks; ++i)
    tacks.push_back({extent.begin + (extent.end - extent.begin) * random.uniform(0.05, 0.95),
                     random.uniform(kTackMinPx, kTackMaxPx), random.uniform(0.7, 1.7)});
  return tacks;
}

// A rippled bead with a dark rim.
void paintTack(const TPlateParams& params, const TCourseFrame& course, const TSpotOnSeam& tack, cv::Mat1f& light) {
  const TLattice ripple(TRandom(params.seed, TStream::plate, 8));
  const cv::Point2d centre = course.at(tack.along);
  const int reach = static_cast<int>(tack.radiusPx * 1.5);
  const cv::Rect box =
      cv::Rect(cv::Point(centre) - cv::Point(reach, reach), cv::Size(2 * reach + 1, 2 * reach + 1)) &
      cv::Rect({0, 0}, light.size());
  for (int y = box.y; y < box.y + box.height; ++y) {
    for (int x = box.x; x < box.x + box.width; ++x) {
      const cv::Point2d d = cv::Point2d(x, y) - centre;
      const float wave = ripple.at(static_cast<float>(x) / 5.0F, static_cast<float>(y) / 5.0F);
      const double rim = std::sqrt(d.dot(d)) / tack.radiusPx + 0.12 * static_cast<double>(wave);
      const double inside = clampUnit((1.0 - rim) / 0.08);
      const double edge = clampUnit(1.0 - std::abs(rim - 1.0) / 0.12);
      const double bead = params.look.level * tack.gain * (1.0 + 0.3 * static_cast<double>(wave));
      const double mixed = (1.0 - inside) * static_cast<double>(light(y, x)) + inside * bead;
      light(y, x) = static_cast<float>(mixed * (1.0 - 0.4 * edge));
    }
  }
}

// Glow at one end of the course, and balls of spatter, which show as bright or dark dots.
void paintArc(const TPlateParams& params, cv::Point2d arc, cv::Mat1f& light) {
  const double reach = kGlowReach * params.size.width;
  if (params.look.glow > 0.0) addSpot(arc, {reach, reach}, params.look.glow, nullptr, light);
  TRandom random(params.seed, TStream::spatter, params.frame);
  for (int i = 0; i < params.look.spatter; ++i) {
    const double centreY = random.uniform(0.0, light.rows);
    const cv::Point2d centre(random.uniform(0.0, light.cols), centreY);
    const double radius = random.uniform(0.8, 3.5);
    addSpot(centre, {radius, radius}, params.look.level * random.uniform(-0.7, 1.3), nullptr, light);
  }
}

// One pass along x, written transposed, so that two passes blur both directions.
cv::Mat1f blurTransposed(const cv::Mat1f& in, double sigmaPx) {
  const int reach = static_cast<int>(std::ceil(3.0 * sigmaPx));
  std::vector<float> kernel(static_cast<std::size_t>(reach) + 1);
  float sum = 0.0F;
  for (int d = 0; d <= reach; ++d) {
    const double u = d / sigmaPx;
    kernel[d] = halve(static_cast<float>(0.72134752 * u * u));  // e^-(u^2/2)
    sum += d == 0 ? kernel[d] : 2.0F * kernel[d];
  }
  cv::Mat1f out(in.cols, in.rows);
  std::vector<float> row(in.cols + 2 * reach);
  for (int y = 0; y < in.rows; ++y) {
    for (int x = -reach; x < in.cols + reach; ++x) row[x + reach] = in(y, std::clamp(x, 0, in.cols - 1)) / sum;
    for (int x = 0; x < in.cols; ++x) {
      float value = kernel[0] * row[x + reach];
      for (int d = 1; d <= reach; ++d) value += kernel[d] * (row[x + reach - d] + row[x + reach + d]);
      out(x, y) = value;
    }
  }
  return out;
}

cv::Mat1b expose(const TPlateParams& params, const cv::Mat1f& light) {
  TSceneParams camera;
  camera.size = params.size;
  camera.seed = params.seed;
  camera.frame = params.frame;
  camera.look.noiseSigma = params.look.noise;
  return exposeFrame(camera, light);
}

double glowAt(const TPlateParams& params, cv::Point2d arc, cv::Point2d p) {
  const cv::Point2d d = (p - arc) / (kGlowReach * params.size.width);
  return params.look.glow * static_cast<double>(halve(static_cast<float>(d.dot(d))));
}

TPlateTruth truthOf(const TPlateParams& params, const TCourseFrame& course, const TExtent& extent) {
  TPlateTruth truth;
  if (params.seam == TPlateSeam::none) return truth;
  const std::vector<TSpotOnSeam> tacks = tacksOf(params, extent);
  const cv::Point2d arc = course.at(extent.begin);
  for (int i = 0; i <= static_cast<int>(extent.end - extent.begin); ++i) {
    const double along = extent.begin + i;
    TSeamStation station{course.at(along), true};
    for (const TSpotOnSeam& tack : tacks)
      station.isVisible = station.isVisible && std::abs(along - tack.along) > tack.radiusPx * 1.1;
    station.isVisible = station.isVisible && glowAt(params, arc, station.point) < kBlindGlow;
    truth.stations.push_back(station);
  }
  return truth;
}

}  // namespace

TPlateScene renderPlate(const TPlateParams& params) {
  const TCourseFrame course(params.course);
  const TExtent extent = extentOf(params, course);
  cv::Mat1f light = paintPlates(params, course);
  paintMarks(params, light);
  paintSeam(params, course, light);
  for (const TSpotOnSeam& tack : tacksOf(params, extent)) paintTack(params, course, tack, light);
  paintArc(params, course.at(extent.begin), light);
  light = blurTransposed(blurTransposed(light, params.look.blurPx), params.look.blurPx);
  return {expose(params, light), truthOf(params, course, extent)};
}

double distanceToSeam(const TPlateTruth& truth, cv::Point2d point) {
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i + 1 < truth.stations.size(); ++i) {
    const cv::Point2d from = truth.stations[i].point;
    const cv::Point2d step = truth.stations[i + 1].point - from;
    const double share = clampUnit((point - from).dot(step) / step.dot(step));
    const cv::Point2d rest = point - from - share * step;
    least = std::min(least, rest.dot(rest));
  }
  return std::sqrt(least);
}

}  // namespace scenes
