#include "api/contrast_seam.h"

#include "contrast/find_line.h"
#include "support/arc_tangent.h"
#include "support/grey_image.h"
#include "trace/trace_conclusion.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace weld {

namespace {

constexpr float kTrackedBandPx = 60.0F;   // around the last line
constexpr float kTrackedTolDeg = 15.0F;   // from its direction
constexpr float kBesideBandPx = 40.0F;    // around the stripe's seam
constexpr float kBesideReachPx = 250.0F;  // along the line from there
constexpr float kBandTolDeg = 45.0F;      // a wider choice of directions has no band
constexpr float kBeyondPx = 16.0F;        // a line is carried on so far
constexpr float kMostApartPx = 12.0F;     // of the two sources

constexpr TCheck kLine{{60, TWeldOutcome::noLine, "line", "no line that looks like a seam"}, "line"};
constexpr TCheck kSure{{61, TWeldOutcome::lineUncertain, "line", "line not surely a seam"},
                       "confidence",
                       TRule::atLeast,
                       "",
                       "minConfidence"};
constexpr TCheck kAsWanted{{62, TWeldOutcome::lineTooShort, "line", "line of another width, length or direction"},
                           "width, length and direction"};
constexpr TCheck kReaches{{63, TWeldOutcome::lineTooShort, "line", "line ends before the place that is looked at"},
                          "line at the place that is looked at"};
constexpr TCheck kAgree{{64, TWeldOutcome::lineUncertain, "line", "stripe and contrast contradict each other"},
                        "distance of the line from the stripe's seam",
                        TRule::atMost,
                        "px"};

bool isSteep(const TContourCenterLine& line) {
  return std::abs(line.directionDeg) > 45.0F;
}

// A place on the line, and its direction there.
struct TPlace {
  cv::Point2f pos;
  cv::Point2f along;  // of length 1
  float widthPx = 0.0F;
};

// Where the line crosses a row, or a column of a flat line.
std::optional<TPlace> placeAt(const TContourCenterLine& line, float at) {
  const auto key = [&](cv::Point2f p) { return isSteep(line) ? p.y : p.x; };
  const std::vector<cv::Point2f>& pts = line.pts;
  if (pts.size() < 2 || at < key(pts.front()) - kBeyondPx || at > key(pts.back()) + kBeyondPx) return std::nullopt;
  const auto above = std::lower_bound(pts.begin() + 1, pts.end() - 1, at,
                                      [&](cv::Point2f p, float value) { return key(p) < value; });
  const cv::Point2f from = *(above - 1);
  const cv::Point2f step = *above - from;
  const float share = (at - key(from)) / std::max(key(*above) - key(from), 1e-3F);
  const float length = std::sqrt(step.dot(step));
  return TPlace{from + share * step, step / std::max(length, 1e-3F), line.widthPx};
}

// The seam's edge on that side.
cv::Point2f edgeOf(const TPlace& place, TWeldPosType pos) {
  cv::Point2f aside(place.along.y, -place.along.x);
  if (std::abs(aside.x) > std::abs(aside.y) ? aside.x < 0.0F : aside.y < 0.0F) aside = -aside;
  const bool isFirst = pos == TWeldPosType::left || pos == TWeldPosType::upper;
  return place.pos + (isFirst ? -0.5F : 0.5F) * place.widthPx * aside;
}

TLineMeasure measureOf(const TContourCenterLine& line) {
  return {static_cast<double>(line.widthPx), static_cast<double>(line.directionDeg), line.confidence};
}

void reportLine(const TTrace& trace, const TFoundLine& found, float minConfidence) {
  if (!trace) return;
  trace.attempt().centres = found.line.pts;
  for (int i = 0; i < kLineFeatures; ++i) {
    const TFeatureReport report = reportFeature(found.features, found.trait, static_cast<TFeatureOfLine>(i),
                                                static_cast<double>(minConfidence));
    if (std::isnan(report.limit)) continue;
    const TRule rule = report.isLeast ? TRule::atLeast : TRule::atMost;
    trace.passes({kSure.failure, report.name, rule}, report.measured, report.limit);
  }
}

// One search; false where the line is none that was asked for.
bool search(const TFrame& frame, const TContrastSearch& asked, TFoundLine& found) {
  const bool isNear = asked.bandPx > 0.0F;
  frame.trace.beginAttempt(isNear ? TSearchPath::tracking : TSearchPath::first, TStripeExtraction::none);
  const TStageTimer timer(frame.trace, "contrast");
  const TBuffer<unsigned char> pixels(frame.memory, greyBytes(frame.image));
  found = findLine(toGrey(frame.image, pixels), asked, frame.memory);
  if (!frame.trace.holds(kLine, !found.line.pts.empty())) return false;
  const bool isSure = frame.trace.passes(kSure, found.line.confidence, asked.minConfidence);
  reportLine(frame.trace, found, asked.minConfidence);
  return isSure && frame.trace.holds(kAsWanted, isWanted(found, asked));
}

void conclude(const TFrame& frame, bool isFound, cv::Point2f pos) {
  if (!frame.trace) return;
  if (isFound) {
    concludeFoundAttempt(frame.trace.record(), "seam at " + positionText(pos));
  } else {
    concludeFailedAttempt(frame.trace.record(), TWeldJoint());
  }
}

float middleOf(const cv::Mat& image, const TContourCenterLine& line) {
  return 0.5F * static_cast<float>((isSteep(line) ? image.rows : image.cols) - 1);
}

TSeam seamOn(const TFrame& frame, const TTrackerOptions& options, const TContourCenterLine& line) {
  TSeam seam(TPoints(line.pts.begin(), line.pts.end(), frame.memory));
  const float at = std::isfinite(options.lookAtPx) ? options.lookAtPx : middleOf(frame.image, line);
  const std::optional<TPlace> place = placeAt(line, at);
  if (!frame.trace.holds(kReaches, place.has_value())) return seam;
  const bool isCentre = frame.params.weldPosType == TWeldPosType::centre;
  seam.isFound = true;
  seam.pos = isCentre ? place->pos : edgeOf(*place, frame.params.weldPosType);
  const cv::Point2f along = isSteep(line) ? cv::Point2f(place->along.y, place->along.x) : place->along;
  const cv::Point2f pos = isSteep(line) ? cv::Point2f(place->pos.y, place->pos.x) : place->pos;
  seam.auxVal1 = static_cast<double>(along.y / along.x);
  seam.auxVal2 = static_cast<double>(pos.y) - seam.auxVal1 * static_cast<double>(pos.x);
  seam.auxVal3 = static_cast<double>(line.widthPx);
  seam.auxVal4 = static_cast<double>(line.contrast);
  seam.trackVal = static_cast<double>(line.confidence);
  seam.line = measureOf(line);
  return seam;
}

TSeam findOnce(const TFrame& frame, const TTrackerOptions& options, const TContrastSearch& asked) {
  TFoundLine found;
  TSeam seam(frame.memory);
  if (search(frame, asked, found)) seam = seamOn(frame, options, found.line);
  conclude(frame, seam.isFound, seam.pos);
  return seam;
}

// A band around the last line.
TContrastSearch nearLast(const TContrastSearch& asked, const TPrevious& last) {
  const cv::Point2d chord = cv::Point2d(last.stripePts.back()) - cv::Point2d(last.stripePts.front());
  TContrastSearch near = asked;
  near.roughPos = last.pos;
  near.directionDeg = static_cast<float>(arcTangent2(chord.y, chord.x) * kDegPerRad);
  near.directionTolDeg = kTrackedTolDeg;
  near.bandPx = kTrackedBandPx;
  near.reachPx = 0.0F;
  return near;
}

// Row of the stripe in a column; none where its points are farther away than the line is carried on.
std::optional<float> rowOf(const TPoints& stripe, float x) {
  const auto right =
      std::lower_bound(stripe.begin(), stripe.end(), x, [](cv::Point2f p, float v) { return p.x < v; });
  if (stripe.empty()) return std::nullopt;
  const cv::Point2f b = right == stripe.end() ? stripe.back() : *right;
  const cv::Point2f a = right == stripe.begin() ? b : *(right - 1);
  if (std::min(std::abs(a.x - x), std::abs(b.x - x)) > kBeyondPx) return std::nullopt;
  const float share = b.x > a.x ? std::clamp((x - a.x) / (b.x - a.x), 0.0F, 1.0F) : 0.0F;
  return a.y + share * (b.y - a.y);
}

// Where a steep line crosses the stripe: in the row of the stripe's own seam, which all of the stripe tells; else
// in that of the points around, which settles within a few turns.
std::optional<cv::Point2f> crossingWith(const TSeam& seam, const TContourCenterLine& line) {
  const TPoints& stripe = seam.stripePts;
  if (stripe.empty() || !isSteep(line)) return std::nullopt;
  if (seam.isFound) {
    const std::optional<TPlace> place = placeAt(line, seam.pos.y);
    return place ? std::make_optional(place->pos) : std::nullopt;
  }
  float row = stripe[stripe.size() / 2].y;
  for (int turn = 0; turn < 6; ++turn) {
    const std::optional<TPlace> place = placeAt(line, row);
    const std::optional<float> next = place ? rowOf(stripe, place->pos.x) : std::nullopt;
    if (!next) return std::nullopt;
    if (std::abs(*next - row) < 0.05F) return cv::Point2f(place->pos.x, *next);
    row = *next;
  }
  return std::nullopt;
}

}  // namespace

TSeam findContrastSeam(const TFrame& frame, const TTrackerOptions& options, const TPrevious& last) {
  const TContrastSearch asked = inRange(options.contrast);
  if (last.isFound && last.stripePts.size() >= 2) {
    TSeam near = findOnce(frame, options, nearLast(asked, last));
    if (near.isFound || !options.searchWholeOnLoss) return near;
  }
  return findOnce(frame, options, asked);
}

void joinContrast(const TFrame& frame, const TTrackerOptions& options, TSeam& seam) {
  TContrastSearch asked = inRange(options.contrast);
  if (seam.isFound && asked.bandPx == 0.0F && asked.directionTolDeg <= kBandTolDeg) {
    asked.roughPos = seam.pos;
    asked.bandPx = kBesideBandPx;
    asked.reachPx = kBesideReachPx;
  }
  TFoundLine found;
  std::optional<cv::Point2f> crossing;
  if (search(frame, asked, found)) {
    crossing = crossingWith(seam, found.line);
    frame.trace.holds(kReaches, crossing.has_value());
  }
  const float apart = crossing && seam.isFound ? std::abs(crossing->x - seam.pos.x) : 0.0F;
  if (!frame.trace.atGate().passes(kAgree, apart, kMostApartPx)) {
    seam = TSeam(std::move(seam.stripePts));
  } else if (crossing) {
    if (!seam.isFound) seam.line = measureOf(found.line);
    seam.isFound = true;
    seam.pos = *crossing;
  }
  conclude(frame, crossing.has_value(), seam.pos);
}

}  // namespace weld
