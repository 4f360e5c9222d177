#include "api/own_rules.h"

#include "detectors/plate.h"
#include "stripe/flush_edges.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr TCheck kTwoEnds{{26, TWeldOutcome::elementMissing, "plate", "one end of the plate only"},
                          "two opposite changes of the stripe's light"};
constexpr TCheck kWidth{{28, TWeldOutcome::sizeOutOfRange, "plate", "plate too narrow"},
                        "plate width",
                        TRule::notBelow,
                        "px",
                        "minWidthPx"};

constexpr double kBorderPx = 10.0;

struct TEnds {
  double left = 0.0;
  double right = 0.0;
};

// Of the opposite steps those whose smaller one is largest.
std::optional<TEnds> endsBetween(const TList<TLightStep>& steps) {
  std::optional<TEnds> ends;
  double best = 0.0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    for (std::size_t k = i + 1; k < steps.size(); ++k) {
      const double left = steps[i].change;
      const double right = steps[k].change;
      const double smaller = std::min(std::abs(left), std::abs(right));
      if (left * right >= 0.0 || smaller <= best) continue;
      best = smaller;
      ends = TEnds{steps[i].x, steps[k].x};
    }
  }
  return ends;
}

// One step only: the plate is the part of the stripe on the side that the position leaves to it. Where that part
// runs out of the picture, it may as well be the table.
std::optional<TEnds> endsBeside(const TFrame& frame, const TList<TLightStep>& steps, const TStripe& stripe) {
  const auto isSmaller = [](const TLightStep& a, const TLightStep& b) {
    return std::abs(a.change) < std::abs(b.change);
  };
  const double x = std::max_element(steps.begin(), steps.end(), isSmaller)->x;
  const auto first = static_cast<double>(stripe.points.front().x);
  const auto last = static_cast<double>(stripe.points.back().x);
  const TWeldPosType pos = frame.params.weldPosType;
  if (pos == TWeldPosType::left && last + kBorderPx < frame.image.cols) return TEnds{x, last};
  if (pos == TWeldPosType::right && first > kBorderPx) return TEnds{first, x};
  return std::nullopt;
}

TSeam seamBetween(const TFrame& frame, const TStripe& stripe, const TEnds& ends) {
  const auto isOn = [&](cv::Point2f p) {
    return static_cast<double>(p.x) >= ends.left && static_cast<double>(p.x) <= ends.right;
  };
  TSeam seam(frame.memory);
  seam.stripePts.reserve(stripe.points.size());
  std::copy_if(stripe.points.begin(), stripe.points.end(), std::back_inserter(seam.stripePts), isOn);
  if (seam.stripePts.size() < 2) return seam;
  const cv::Point2f start = seam.stripePts.front();
  const cv::Point2f end = seam.stripePts.back();
  const cv::Point2f d = end - start;
  const TPlateSettings settings = TPlateSettings::of(frame.params);
  seam.auxVal1 = seam.auxVal3 = static_cast<double>(d.y) / guardDivisor(static_cast<double>(d.x));
  seam.auxVal2 = seam.auxVal4 = static_cast<double>(start.y) - static_cast<double>(start.x) * seam.auxVal1;
  const TWeldPosType pos = frame.params.weldPosType;
  const double middle = 0.5 * (ends.left + ends.right);
  const double x = pos == TWeldPosType::left ? ends.left : pos == TWeldPosType::right ? ends.right : middle;
  seam.pos = {static_cast<float>(x), 0.5F * (start.y + end.y)};
  frame.trace.addTestedPoint(seam.pos);
  seam.isFlush = true;
  seam.isFound = frame.trace.passes(kWidth, std::sqrt(static_cast<double>(d.dot(d))), settings.minWidthPx);
  return seam;
}

}  // namespace

TSeam findOwnPlate(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  // Along a raised plate the stripe is straight too, and its light may change near the ends.
  const bool isRaised = previous.isFound && !previous.isFlush;
  const TList<TLightStep> steps = isRaised ? TList<TLightStep>(frame.memory) : findLightSteps(frame, stripe);
  if (steps.empty()) return findPlate(frame, stripe, previous);
  std::optional<TEnds> ends = endsBetween(steps);
  if (!ends) ends = endsBeside(frame, steps, stripe);
  if (!frame.trace.holds(kTwoEnds, ends.has_value())) return TSeam(TPoints(stripe.points, frame.memory));
  return seamBetween(frame, stripe, *ends);
}

}  // namespace weld
