#include "detectors/known_shape.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr float kSamePx = 2.0F;
constexpr int kLeastFrames = 3;
constexpr double kLeastSigmaPx = 0.2;  // of a feature's weight

constexpr float kUnseen = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t kMoving = kShapeFeatures.size() - 1;  // the root follows from its edges

using TPlaces = std::array<cv::Point2f, TKnownShapes::kMost>;  // one of each frame before

bool isSame(cv::Point2f a, cv::Point2f b) {  // false where one of them is not seen
  const cv::Point2f d = a - b;
  return d.dot(d) <= kSamePx * kSamePx;
}

bool isSeen(cv::Point2f p) {
  return isSame(p, p);
}

TShape shapeOf(const TProfileFit& fit) {
  TShape shape;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const TMeasuredPoint& point = fit.feature(kShapeFeatures[i]);
    shape[i] = point.isFound ? cv::Point2f(point.pos) : cv::Point2f(kUnseen, kUnseen);
  }
  return shape;
}

// By how much the groove has moved: the mean of the moves that agree, of the surest set of them.
cv::Point2f moveOf(const TShape& before, const TShape& now, const TProfileFit& fit) {
  cv::Point2f best(kUnseen, kUnseen);
  float most = 0.0F;
  for (std::size_t i = 0; i < kMoving; ++i) {
    cv::Point2f sum;
    float weights = 0.0F;
    for (std::size_t j = 0; j < kMoving; ++j) {
      if (!isSame(now[j] - before[j], now[i] - before[i])) continue;
      const double sigmaPx = std::max(fit.feature(kShapeFeatures[j]).sigmaPx, kLeastSigmaPx);
      const auto weight = static_cast<float>(1.0 / sigmaPx);
      sum += weight * (now[j] - before[j]);
      weights += weight;
    }
    if (weights <= most) continue;
    most = weights;
    best = sum / weights;
  }
  return best;
}

// The mean of the largest set of places that agree, and how many they are; of equal sets the latest.
struct TCommon {
  cv::Point2f place;
  int frames = 0;
};

TCommon commonOf(const TPlaces& places) {
  TCommon common;
  for (const cv::Point2f centre : places) {
    cv::Point2f sum;
    int frames = 0;
    for (const cv::Point2f place : places) {
      if (!isSame(place, centre)) continue;
      sum += place;
      ++frames;
    }
    if (frames > common.frames) common = {sum / static_cast<float>(frames), frames};
  }
  return common;
}

void measureAnew(TProfileFit& fit) {
  const cv::Point2d left = fit.feature(TFeature::leftShoulder).pos;
  const cv::Point2d across = fit.feature(TFeature::rightShoulder).pos - left;
  const cv::Point2d down = fit.feature(TFeature::root).pos - left;
  const cv::Point2d gap = fit.feature(TFeature::rightRoot).pos - fit.feature(TFeature::leftRoot).pos;
  TJointMeasures& m = fit.measures;
  if (!std::isnan(m.widthPx)) m.widthPx = std::sqrt(across.dot(across));
  if (!std::isnan(m.depthPx) && m.widthPx > 0.0) m.depthPx = std::abs(down.cross(across)) / m.widthPx;
  if (!std::isnan(m.gapPx)) m.gapPx = std::sqrt(gap.dot(gap));
}

void remember(const TShape& shape, TKnownShapes& shapes) {
  std::copy_backward(shapes.all.begin(), shapes.all.end() - 1, shapes.all.end());
  shapes.all[0] = shape;
  shapes.count = std::min(shapes.count + 1, static_cast<int>(TKnownShapes::kMost));
}

// Where a feature of the frames before would lie in this one.
TPlaces placesOf(const TKnownShapes& shapes, const TPlaces& moves, std::size_t feature) {
  TPlaces places;
  places.fill({kUnseen, kUnseen});
  for (std::size_t k = 0; k < static_cast<std::size_t>(shapes.count); ++k)
    places[k] = shapes.all[k][feature] + moves[k];
  return places;
}

// As most frames show it, or, where the part has changed, the latest ones.
bool isKnown(cv::Point2f now, const TCommon& known, const TPlaces& places) {
  return isSame(now, known.place) || (isSame(now, places[0]) && isSame(now, places[1]));
}

}  // namespace

bool isUsual(const TKnownShapes& shapes) {
  const TShape& latest = shapes.all[0];
  const auto showsSame = [&](const TShape& shape) {
    return std::equal(shape.begin(), shape.end(), latest.begin(),
                      [](cv::Point2f a, cv::Point2f b) { return isSeen(a) == isSeen(b); });
  };
  return 2 * std::count_if(shapes.all.begin(), shapes.all.begin() + shapes.count, showsSame) >= shapes.count;
}

double keepShape(TProfileFit& fit, TKnownShapes& shapes) {
  const TShape now = shapeOf(fit);
  TPlaces moves;
  for (std::size_t k = 0; k < moves.size(); ++k) moves[k] = moveOf(shapes.all[k], now, fit);
  bool isMoved = false;
  double rootOffPx = 0.0;
  for (std::size_t i = 0; i < now.size(); ++i) {
    const TPlaces places = placesOf(shapes, moves, i);
    const TCommon known = commonOf(places);
    const auto seen = std::count_if(places.begin(), places.end(), isSeen);
    if (!isSeen(now[i]) || seen < kLeastFrames || isKnown(now[i], known, places)) continue;
    TMeasuredPoint& feature = fit.features[static_cast<std::size_t>(kShapeFeatures[i])];
    if (known.frames >= kLeastFrames) {
      feature.pos = known.place;
      isMoved = true;
    } else {
      const cv::Point2d off = cv::Point2d(known.place) - feature.pos;
      const double offPx = std::sqrt(off.dot(off));
      feature.sigmaPx = std::max(feature.sigmaPx, offPx);
      if (i == kMoving) rootOffPx = offPx;
    }
  }
  if (isMoved) measureAnew(fit);
  remember(now, shapes);
  return rootOffPx;
}

}  // namespace weld
