#include "scenes/plate_surface.h"

#include "scenes/exact_math.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr float kPatchPx = 90.0F;
constexpr float kGrainPx = 1.6F;
constexpr float kMarkLengthPx = 150.0F;  // of one brushing mark
constexpr float kMarkPitchPx = 1.7F;
constexpr float kBandPitchPx = 7.0F;  // marks come in bands
constexpr float kBandShare = 0.45F;
constexpr float kTintPx = 60.0F;

float smoothStep(float t) {
  return t * t * (3.0F - 2.0F * t);
}

double clampUnit(double v) {
  return std::min(std::max(v, 0.0), 1.0);
}

// Everything that a row of pixels needs.
class TSurface {
public:
  TSurface(const TPlateParams& plate, const TCourseFrame& frame)
      : params(plate),
        course(frame),
        patches(TRandom(plate.seed, TStream::plate, 1)),
        marks(TRandom(plate.seed, TStream::plate, 2)),
        brush(sinCosDeg(plate.look.brushedDeg)) {
    TRandom random(plate.seed, TStream::plate, 3);
    const TSinCos side = sinCosDeg(random.uniform(0.0, 360.0));
    shadowNormal = {side.cos, side.sin};
    const double throughY = plate.size.height * random.uniform(0.2, 0.8);
    const cv::Point2d through(plate.size.width * random.uniform(0.2, 0.8), throughY);
    shadowEdge = shadowNormal.dot(through);
  }

  float at(int x, int y) const {
    const TPlateLook& look = params.look;
    const double dx = static_cast<double>(x) / params.size.width - 0.5;
    const double dy = static_cast<double>(y) / params.size.height - 0.5;
    double light = 1.0 + look.slope.x * dx + look.slope.y * dy - look.vignette * 2.0 * (dx * dx + dy * dy);
    if (look.ratio != 1.0) light *= course.beside(x, y).across > 0.0 ? look.ratio : 1.0;
    if (look.shadow > 0.0) {
      const double depth = shadowNormal.dot(cv::Point2d(x, y)) - shadowEdge;
      light *= 1.0 - look.shadow * smoothStep(static_cast<float>(clampUnit(depth / look.penumbraPx + 0.5)));
    }
    return static_cast<float>(look.level * std::max(light, 0.05)) *
           texture(static_cast<float>(x), static_cast<float>(y));
  }

private:
  float texture(float x, float y) const {
    const TPlateLook& look = params.look;
    float factor = 1.0F + static_cast<float>(look.patches) * patches.at(x / kPatchPx, y / kPatchPx);
    factor *= 1.0F + static_cast<float>(look.grain) * marks.at(x / kGrainPx + 500.0F, y / kGrainPx + 300.0F);
    if (look.tint > 0.0)
      factor *= 1.0F + static_cast<float>(look.tint) * patches.at(x / kTintPx + 71.0F, y / kTintPx / 3.0F + 37.0F);
    const float u = static_cast<float>(brush.cos) * x + static_cast<float>(brush.sin) * y;
    float v = static_cast<float>(brush.cos) * y - static_cast<float>(brush.sin) * x;
    v += u * u / static_cast<float>(2.0 * look.brushedBendPx);
    const float mark = (1.0F - kBandShare) * marks.at(u / kMarkLengthPx + 40.0F, v / kMarkPitchPx + 4000.0F) +
                       kBandShare * patches.at(u / (3.0F * kMarkLengthPx) + 40.0F, v / kBandPitchPx + 900.0F);
    return factor * (1.0F + static_cast<float>(look.brushed) * mark);
  }

  const TPlateParams& params;
  const TCourseFrame& course;
  TLattice patches;
  TLattice marks;
  TSinCos brush;
  cv::Point2d shadowNormal;
  double shadowEdge = 0.0;
};

// Multiplies the light within a soft-edged dab.
void dim(cv::Point2d centre, double radiusPx, double factor, cv::Mat1f& light) {
  const int reach = static_cast<int>(std::ceil(radiusPx + 1.0));
  const cv::Rect box = cv::Rect(cv::Point(static_cast<int>(centre.x) - reach, static_cast<int>(centre.y) - reach),
                                cv::Size(2 * reach + 1, 2 * reach + 1)) &
                       cv::Rect({0, 0}, light.size());
  for (int y = box.y; y < box.y + box.height; ++y) {
    for (int x = box.x; x < box.x + box.width; ++x) {
      const cv::Point2d d = cv::Point2d(x, y) - centre;
      const double inside = clampUnit(radiusPx + 0.5 - std::sqrt(d.dot(d)));
      light(y, x) *= static_cast<float>(1.0 + (factor - 1.0) * inside);
    }
  }
}

// A thin line, bent a little, that fades towards its ends. Every pixel is touched once.
void paintScratch(TRandom& random, cv::Mat1f& light) {
  const double centreY = random.uniform(0.0, light.rows);
  const cv::Point2d middle(random.uniform(0.0, light.cols), centreY);
  const TSinCos turn = sinCosDeg(random.uniform(0.0, 180.0));
  const double halfPx = random.uniform(20.0, 160.0);
  const double bend = random.uniform(-0.15, 0.15) / halfPx;
  const double radiusPx = random.uniform(0.4, 0.9);
  const double gain = random.chance(0.5) ? random.uniform(0.1, 0.45) : -random.uniform(0.1, 0.4);
  const int reach = static_cast<int>(halfPx) + 2;
  for (int y = std::max(0, static_cast<int>(middle.y) - reach);
       y < std::min(light.rows, static_cast<int>(middle.y) + reach); ++y) {
    for (int x = std::max(0, static_cast<int>(middle.x) - reach);
         x < std::min(light.cols, static_cast<int>(middle.x) + reach); ++x) {
      const double along = (x - middle.x) * turn.cos + (y - middle.y) * turn.sin;
      if (std::abs(along) > halfPx) continue;
      const double across = (y - middle.y) * turn.cos - (x - middle.x) * turn.sin - bend * along * along;
      const double inside = clampUnit(radiusPx + 0.5 - std::abs(across));
      const double fade = 1.0 - along * along / (halfPx * halfPx);
      light(y, x) *= static_cast<float>(1.0 + gain * fade * inside);
    }
  }
}

void paintOxide(TRandom& random, const TLattice& ragged, cv::Mat1f& light) {
  const double centreY = random.uniform(0.0, light.rows);
  const cv::Point2d centre(random.uniform(0.0, light.cols), centreY);
  const double radiusPx = random.uniform(30.0, 130.0);
  const double depth = random.uniform(0.1, 0.35);
  const int reach = static_cast<int>(1.6 * radiusPx);
  for (int y = std::max(0, static_cast<int>(centre.y) - reach);
       y < std::min(light.rows, static_cast<int>(centre.y) + reach); ++y) {
    for (int x = std::max(0, static_cast<int>(centre.x) - reach);
         x < std::min(light.cols, static_cast<int>(centre.x) + reach); ++x) {
      const cv::Point2d d = cv::Point2d(x, y) - centre;
      const double rim = std::sqrt(d.dot(d)) / radiusPx +
                         0.4 * ragged.at(static_cast<float>(x) / 19.0F, static_cast<float>(y) / 19.0F);
      light(y, x) *=
          static_cast<float>(1.0 - depth * smoothStep(static_cast<float>(clampUnit((1.1 - rim) / 0.25))));
    }
  }
}

}  // namespace

TCourseFrame::TCourseFrame(const TSeamCourse& course) : centre(course.centre) {
  const TSinCos turn = sinCosDeg(course.directionDeg);
  ahead = {turn.cos, turn.sin};
  // To the right of a steep seam, below a flat one.
  aside = turn.cos > std::abs(turn.sin) ? cv::Point2d(-turn.sin, turn.cos)
                                        : cv::Point2d(std::abs(turn.sin), turn.sin > 0 ? -turn.cos : turn.cos);
  bend = course.bowPx / (course.halfLengthPx * course.halfLengthPx);
}

TBeside TCourseFrame::beside(double x, double y) const {
  const cv::Point2d d = cv::Point2d(x, y) - centre;
  const double along = d.dot(ahead);
  const double rise = 2.0 * bend * along;
  return {along, (d.dot(aside) - bend * along * along) / std::sqrt(1.0 + rise * rise)};
}

cv::Point2d TCourseFrame::at(double along) const {
  return centre + along * ahead + bend * along * along * aside;
}

TLattice::TLattice(TRandom random) : values(kValues + 1), rowBegins(kRows) {
  for (float& v : values) v = static_cast<float>(random.uniform(-1.0, 1.0));
  for (int& begin : rowBegins) begin = random.integer(0, kValues - 1);
}

float TLattice::at(float u, float v) const {
  const float column = std::floor(u);
  const float row = std::floor(v);
  const int i = static_cast<int>(column);
  const int j = static_cast<int>(row);
  const float fu = smoothStep(u - column);
  const auto along = [&](int r) {
    const int begin = rowBegins[static_cast<std::size_t>(r & (kRows - 1))];
    const auto k = static_cast<std::size_t>((begin + i) & (kValues - 1));
    return values[k] + (values[k + 1] - values[k]) * fu;
  };
  const float upper = along(j);
  return upper + (along(j + 1) - upper) * smoothStep(v - row);
}

cv::Mat1f paintPlates(const TPlateParams& params, const TCourseFrame& course) {
  const TSurface surface(params, course);
  cv::Mat1f light(params.size);
  for (int y = 0; y < light.rows; ++y) {
    for (int x = 0; x < light.cols; ++x) light(y, x) = surface.at(x, y);
  }
  return light;
}

void paintMarks(const TPlateParams& params, cv::Mat1f& light) {
  TRandom random(params.seed, TStream::plate, 4);
  const TLattice ragged(TRandom(params.seed, TStream::plate, 5));
  for (int i = 0; i < params.look.oxideSpots; ++i) paintOxide(random, ragged, light);
  for (int i = 0; i < params.look.oilSpots; ++i) {
    const double centreY = random.uniform(0.0, light.rows);
    const cv::Point2d centre(random.uniform(0.0, light.cols), centreY);
    const double radiusPx = random.uniform(8.0, 45.0);
    dim(centre, radiusPx + 2.0, 1.15, light);  // the bright rim of a drop
    dim(centre, radiusPx, random.uniform(0.5, 0.8), light);
  }
  for (int i = 0; i < params.look.scratches; ++i) paintScratch(random, light);
}

}  // namespace scenes
