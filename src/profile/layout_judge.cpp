#include "profile/layout_judge.h"

#include "profile/fine_rows.h"
#include "profile/flank_bow.h"
#include "profile/joint_features.h"
#include "profile/lit_ends.h"
#include "profile/wall_end.h"
#include "support/exact_log.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kConfidenceScale = 20.0;  // gain over a plate
constexpr double kRightPx = 3.0;
// Of the joints found, however unclear, and what clarity adds; both from made joints of every level.
constexpr double kRightAtLeast = 0.3;
constexpr double kRightByClarity = 0.65;

// Image coordinates and angles of what was measured in the sense of the template.
void turnOver(TProfileFit& fit) {
  for (TMeasuredPoint& f : fit.features) f.pos.y = -f.pos.y;
  for (TProfileElement& e : fit.elements) {
    e.left.y = -e.left.y;
    e.right.y = -e.right.y;
    e.centre.y = -e.centre.y;
  }
  TJointMeasures& m = fit.measures;
  for (double* value : {&m.mismatchPx, &m.leftAngleDeg, &m.rightAngleDeg, &m.baseAngleDeg}) *value = -*value;
}

void copyElements(const TProfileLayout& layout, const TLayoutScore& score, TProfileFit& fit) {
  fit.elementCount = layout.count();
  for (std::size_t e = 0; e < layout.count(); ++e) {
    const TFittedElement& from = layout.elements[e];
    fit.elements[e] = {layout.range(e).kind,
                       layout.range(e).role,
                       from.left,
                       from.right,
                       {from.arc.circle.x, from.arc.circle.y},
                       from.arc.circle.r,
                       std::sqrt(from.noise2),
                       score.shares[e]};
  }
}

// Share of the frames like this one whose seam point is right to within three pixels.
double confidenceOf(const TProfileFit& fit, double worstShare) {
  const TMeasuredPoint& seam = fit.feature(fit.profile->tracked);
  const double sigma = std::max(seam.sigmaPx, 0.1);
  const double isExact = seam.isFound ? 1.0 - exactExp(-kRightPx * kRightPx / (sigma * sigma)) : 1.0;
  const double clarity = (1.0 - exactExp(-fit.score / kConfidenceScale)) * isExact * worstShare;
  return kRightAtLeast + kRightByClarity * clarity;
}

// Nothing where an end is no plate.
double platesApartDeg(const TProfileLayout& layout) {
  const std::size_t last = layout.count() - 1;
  const auto isPlate = [&](std::size_t e) { return layout.range(e).role == TElementRole::plate; };
  if (last == 0 || !isPlate(0) || !isPlate(last)) return kNoMeasure;
  const double left = angleDegOf(layout.elements[0].lines.right);
  const double right = angleDegOf(layout.elements[last].lines.left);
  return std::abs(left - right);
}

// Plates farther apart than the groove is deep are the two levels of a step. What is not a number is no step.
bool isStep(const TJointMeasures& m) {
  return std::abs(m.mismatchPx) > m.depthPx;
}

}  // namespace

TLayoutJudge::TLayoutJudge(const TStripeProfile& s, const TProfileOptions& o, std::pmr::memory_resource* memory)
    : stripe(s),
      options(o),
      turnedY(s.centres().y, memory),
      upright{s.centres().x, s.centres().y, s.centres().weight},
      turned(upright) {
  for (double& y : turnedY) y = -y;
  turned.y = turnedY;
}

std::optional<TLayoutScore> TLayoutJudge::refine(TProfileLayout& layout, int rounds) {
  const TRefineSettings settings{stripe.noisePx(), stripe.widthPx(), rounds};
  if (!refineLayout(centresOf(layout.sense), settings, layout)) return std::nullopt;
  return scoreLayout(centresOf(layout.sense), layout, stripe.noisePx());
}

// Without an image nothing speaks against it.
bool TLayoutJudge::isLit(const TProfileLayout& layout) const {
  return options.frame == nullptr || areFeetLit(*options.frame, layout);
}

TProfileFit TLayoutJudge::judge(const TProfileLayout& refined, const TLayoutScore& score, double nullCost) const {
  TProfileLayout layout = refined;
  const TOrientedCentres& centres = centresOf(layout.sense);
  followBows(centres, stripe.widthPx(), layout);
  if (options.frame != nullptr) moveToLight(*options.frame, centres, layout);
  meetAnew(centres, layout);
  if (options.frame != nullptr) extendToLight(*options.frame, centres, layout);
  endAtWalls({options.frame, centres, options.flares, stripe.widthPx()}, layout);
  TProfileFit fit;
  fit.profile = layout.profile;
  fit.sense = layout.sense;
  fit.noisePx = stripe.noisePx();
  fit.unseenPx = stripe.holes().unseenPx;
  fit.score = nullCost - score.cost;
  fit.platesApartDeg = platesApartDeg(layout);
  fit.worstShare = score.worstShare;
  fit.outcome = TProfileOutcome::found;
  const TStripeState state{stripe.noisePx(), stripe.noiseInflation(), stripe.holes().unseenPx,
                           stripe.holes().secondPx};
  if (!measureLayout(centres, layout, state, fit)) {
    fit.outcome = TProfileOutcome::tooShallow;
  } else if (fit.platesApartDeg > kMostPlatesApartDeg) {
    fit.outcome = TProfileOutcome::platesApart;
  } else if (isStep(fit.measures)) {
    fit.outcome = TProfileOutcome::stepped;
  } else if (!isLit(layout)) {
    fit.outcome = TProfileOutcome::darkFeet;
  } else if (score.worstShare < kLeastShare) {
    fit.outcome = TProfileOutcome::notSeen;
  } else if (fit.score < options.leastGain) {
    fit.outcome = TProfileOutcome::notBetter;
  }
  copyElements(layout, score, fit);
  if (layout.sense < 0) turnOver(fit);
  if (fit.isFound()) fit.confidence = confidenceOf(fit, score.worstShare);
  return fit;
}

}  // namespace weld
