#include "api/own_rules.h"

#include "api/known_width.h"
#include "detectors/plate.h"
#include "profile/flare_end.h"
#include "stripe/flush_edges.h"
#include "support/arc_tangent.h"
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
constexpr double kFlarePx = 12.0;         // columns from a flare within which a step of the light is its edge
constexpr double kLeastRival = 0.7;       // of the change of light at the ends: may be an end as well
constexpr float kTouchingPx = 12.0F;      // columns to the next centre of a stripe that goes on
constexpr double kMostOffPx = 8.0;        // of that centre
constexpr float kReachPx = 60.0F;         // columns that tell how it goes on
constexpr std::size_t kLeastBeyond = 15;  // centres among them
constexpr double kLeastTurnDeg = 12.0;

constexpr int kMostBlobPx = 90;  // of something dimmer next to an end that the stripe seems to go on in

constexpr float kLineReachPx = 100.0F;
constexpr double kOnLinePx = 5.0;
constexpr int kMostOnLine = 40;          // one that turns leaves the line sooner
constexpr double kLeastFlushPx = 100.0;  // a brighter stretch that is shorter is a blob

constexpr TCheck kGoesOn =
    countCheck({27, TWeldOutcome::elementMissing, "plate", "the stripe goes straight on beyond the plate"},
               "stripe points on the plate's line beyond its end", TRule::atMost);
constexpr TCheck kInPicture{{27, TWeldOutcome::elementMissing, "plate", "the plate runs out of the picture"},
                            "both ends of the plate in the picture"};
constexpr TCheck kEnds{{27, TWeldOutcome::elementMissing, "plate", "the stripe goes straight on beyond the plate"},
                       "turn of the stripe at the end of the plate",
                       TRule::atLeast,
                       "deg"};

constexpr TCheck kKnown{{28, TWeldOutcome::changedTooMuch, "plate", "both ends lie elsewhere than before"},
                        "width of the plate as before"};

struct TEnds {
  double left = 0.0;
  double right = 0.0;
  double change = 0.0;  // the smaller one of both
};

// A step at a flare lies anywhere under it: an edge shines to both sides.
void moveUnderFlares(TView<TFlare> flares, TList<TLightStep>& steps) {
  for (TLightStep& step : steps) {
    for (const TFlare& flare : flares) {
      const auto first = static_cast<double>(flare.firstX);
      const auto last = static_cast<double>(flare.lastX);
      if (step.x > first - kFlarePx && step.x < last + kFlarePx) step.x = flare.middleX;
    }
  }
}

// Of the opposite steps those whose smaller one is largest.
std::optional<TEnds> endsBetween(const TList<TLightStep>& steps) {
  std::optional<TEnds> ends;
  double best = 0.0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    for (std::size_t k = i + 1; k < steps.size(); ++k) {
      const double left = steps[i].change;
      const double right = steps[k].change;
      const double smaller = std::min(std::abs(left), std::abs(right));
      if (left * right >= 0.0 || smaller <= best || steps[k].x - steps[i].x < kLeastFlushPx) continue;
      best = smaller;
      ends = TEnds{steps[i].x, steps[k].x, smaller};
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
  const TPoints straight = onStraightLine(stripe.points, frame.memory);
  TSeam seam(frame.memory);
  seam.stripePts.reserve(straight.size());
  std::copy_if(straight.begin(), straight.end(), std::back_inserter(seam.stripePts), isOn);
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
  // Steps lie between two columns.
  seam.ends =
      TSeamEnds{{ends.left + 0.5, static_cast<double>(start.y)}, {ends.right - 0.5, static_cast<double>(end.y)}};
  seam.isFlush = true;
  seam.isFound = frame.trace.passes(kWidth, std::sqrt(static_cast<double>(d.dot(d))), settings.minWidthPx);
  return seam;
}

// The stripe beyond an end of the plate, as far as it goes on without a break; the nearest centre first.
TPoints beyond(const TFrame& frame, TPointView points, cv::Point2f end, bool isRight) {
  TPoints on(frame.memory);
  const auto isFarther = [&](cv::Point2f p) { return isRight ? p.x > end.x : p.x < end.x; };
  for (const cv::Point2f p : centresIn(points, {end.x - kReachPx, end.x + kReachPx})) {
    if (isFarther(p)) on.push_back(p);
  }
  if (!isRight) std::reverse(on.begin(), on.end());
  cv::Point2f last = end;
  const auto breaks = [&](cv::Point2f p) {
    const bool isApart = std::abs(p.x - last.x) > kTouchingPx || std::abs(p.y - last.y) > kMostOffPx;
    last = p;
    return isApart;
  };
  on.erase(std::find_if(on.begin(), on.end(), breaks), on.end());
  return on;
}

// Centres beyond an end that lie on the line of the plate, behind holes as well.
int countOnLine(TPointView points, const TSeam& seam, cv::Point2f end, bool isRight) {
  const TPointView about = centresIn(points, {end.x - kLineReachPx, end.x + kLineReachPx});
  return static_cast<int>(std::count_if(about.begin(), about.end(), [&](cv::Point2f p) {
    const float columns = isRight ? p.x - end.x : end.x - p.x;
    const double row = seam.auxVal1 * static_cast<double>(p.x) + seam.auxVal2;
    return columns > 0.0F && std::abs(row - static_cast<double>(p.y)) < kOnLinePx;
  }));
}

// A piece of a curve ends where its chord does, a plate where the stripe breaks off or turns.
bool isEnd(const TFrame& frame, const TStripe& stripe, const TSeam& seam, bool isRight) {
  const cv::Point2f end = isRight ? seam.stripePts.back() : seam.stripePts.front();
  const bool isInside = isRight ? end.x + kBorderPx < frame.image.cols : end.x > kBorderPx;
  if (!frame.trace.holds(kInPicture, isInside)) return false;
  const int onLine = countOnLine(stripe.points, seam, end, isRight);
  if (!frame.trace.passes(kGoesOn, onLine, kMostOnLine)) return false;
  const TPoints on = beyond(frame, stripe.points, end, isRight);
  if (on.size() < kLeastBeyond) return true;
  const cv::Point2f d = on.back() - on.front();
  const double deg = slopeToDeg(static_cast<double>(d.y) / guardDivisor(static_cast<double>(d.x)));
  return frame.trace.passes(kEnds, std::abs(deg - slopeToDeg(seam.auxVal1)), kLeastTurnDeg);
}

// Of a plate over its table. Only the ends that the position speaks of matter.
bool hasEnds(const TFrame& frame, const TStripe& stripe, const TSeam& seam) {
  const TWeldPosType pos = frame.params.weldPosType;
  return (pos == TWeldPosType::right || isEnd(frame, stripe, seam, false)) &&
         (pos == TWeldPosType::left || isEnd(frame, stripe, seam, true));
}

// Columns of ends that something else than the last lit column tells; NaN: nothing does.
struct TToldColumns {
  double left = NAN;
  double right = NAN;
};

// The plate's line at either end.
struct TLines {
  TSlopeLine left;
  TSlopeLine right;
};

// Carries a plate on to its end under a flare, or cuts it off there: next to the table, else in the middle of it,
// for an edge shines to both sides. The column; NaN where no flare hides the end.
double moveIntoFlare(const TFrame& frame, const TStripe& stripe, bool isRight, TSeam& seam,
                     const TSlopeLine& line) {
  TPoints& plate = seam.stripePts;
  const float endX = isRight ? plate.back().x : plate.front().x;
  const TEndOfPiece end{plate, isRight, stripe.widthPx};
  const std::optional<TFlare> flare = flareBeyond(frame, end, line);
  if (!flare) return NAN;
  std::optional<double> told;
  if (!seam.isFlush) told = endUnderFlare(frame, *flare, stripe.points, end);
  seam.isVague = seam.isVague || (!seam.isFlush && !told);
  const double x = told.value_or(flare->middleX);
  const auto isOut = [&](cv::Point2f p) {
    return isRight ? static_cast<double>(p.x) > x : static_cast<double>(p.x) < x;
  };
  const auto isNew = [&](cv::Point2f p) { return !isOut(p) && (isRight ? p.x > endX : p.x < endX); };
  plate.erase(std::remove_if(plate.begin(), plate.end(), isOut), plate.end());
  std::copy_if(stripe.points.begin(), stripe.points.end(),
               std::inserter(plate, isRight ? plate.end() : plate.begin()), isNew);
  return x;
}

TSeam findPlateWithEnds(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares,
                        const TPrevious& previous) {
  // Along a raised plate the stripe is straight too, and its light may change near the ends.
  const bool isRaised = previous.isFound && !previous.isFlush;
  TList<TLightStep> steps = isRaised ? TList<TLightStep>(frame.memory) : findLightSteps(frame, stripe);
  moveUnderFlares(flares, steps);
  const bool wasFlush = previous.isFound && previous.isFlush;
  if (steps.empty() && !wasFlush) {
    TSeam seam = findPlate(frame, stripe, previous);
    const bool isPlate = !seam.isFound || !havePlateEndsSupport(seam) || hasEnds(frame, stripe, seam);
    return isPlate ? std::move(seam) : TSeam(std::move(seam.stripePts));
  }
  std::optional<TEnds> ends = endsBetween(steps);
  if (!ends && !steps.empty()) ends = endsBeside(frame, steps, stripe);
  if (!frame.trace.holds(kTwoEnds, ends.has_value())) return TSeam(TPoints(stripe.points, frame.memory));
  TSeam seam = seamBetween(frame, stripe, *ends);
  const auto rivals = std::count_if(steps.begin(), steps.end(), [&](const TLightStep& step) {
    return std::abs(step.change) > kLeastRival * ends->change;
  });
  seam.isUnsure = ends->change > 0.0 && rivals > 2;
  return seam;
}

// The ends by the light, but for those whose column a flare or a change of the light tells.
//   plate  its left end, without what a flare hides
void readEnds(const TFrame& frame, const TEndOfPiece& plate, const TLines& lines, const TToldColumns& told,
              TSeam& seam) {
  const auto read = [&](const TEndOfPiece& end, const TSlopeLine& line, double x) {
    return std::isnan(x) ? endOfLight(frame, end, line).pos : cv::Point2d(x, line.k * x + line.b);
  };
  TEndOfPiece right = plate;
  right.isRight = true;
  TSeamEnds ends{read(plate, lines.left, told.left), read(right, lines.right, told.right)};
  const TEndColumns known = keepWidth({ends.left.x, ends.right.x}, seam.places);
  seam.isFound = frame.trace.holds(kKnown, known.areKnown);
  if (ends.left.x != known.left) ends.left = {known.left, lines.left.k * known.left + lines.left.b};
  if (ends.right.x != known.right) ends.right = {known.right, lines.right.k * known.right + lines.right.b};
  const TWeldPosType pos = frame.params.weldPosType;
  const cv::Point2d middle = 0.5 * (ends.left + ends.right);
  const double x = pos == TWeldPosType::left ? ends.left.x : pos == TWeldPosType::right ? ends.right.x : middle.x;
  seam.pos = cv::Point2f(cv::Point2d(x, middle.y));
  seam.auxVal1 = seam.auxVal3 = (ends.right.y - ends.left.y) / guardDivisor(ends.right.x - ends.left.x);
  seam.auxVal2 = seam.auxVal4 = ends.left.y - ends.left.x * seam.auxVal1;
  seam.ends = ends;
}

TSeam findWithFineEnds(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  const TList<TFlare> flares = findFlaresWithHalo(frame, stripe.points);
  const std::optional<TStripe> rest = withoutFlares(frame, stripe, flares);
  TSeam seam = findPlateWithEnds(frame, rest ? *rest : stripe, flares, previous);
  if (!seam.isFound || seam.stripePts.size() < kLeastBeyond || !havePlateEndsSupport(seam)) return seam;
  TToldColumns told = seam.ends ? TToldColumns{seam.ends->left.x, seam.ends->right.x} : TToldColumns();
  const TPoints seen(seam.stripePts, frame.memory);
  TEndOfPiece plate{seen, false, stripe.widthPx};
  plate.edgePx = std::min(kMostBlobPx, static_cast<int>(seen.size()) / 4);
  const TLines lines{lineAtEnd(frame, plate), lineAtEnd(frame, {seen, true, stripe.widthPx})};
  const double inLeftFlare = moveIntoFlare(frame, stripe, false, seam, lines.left);
  const double inRightFlare = moveIntoFlare(frame, stripe, true, seam, lines.right);
  if (!std::isnan(inLeftFlare)) told.left = inLeftFlare;
  if (!std::isnan(inRightFlare)) told.right = inRightFlare;
  if (seam.stripePts.size() < kLeastBeyond) return TSeam(TPoints(stripe.points, frame.memory));
  if (previous.places != nullptr) seam.places = *previous.places;
  readEnds(frame, plate, lines, told, seam);
  return seam;
}

}  // namespace

TSeam findOwnPlate(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  TSeam seam = findWithFineEnds(frame, stripe, previous);
  if (!seam.ends && previous.places != nullptr) seam.places = follow(*previous.places, {});
  return seam;
}

}  // namespace weld
