#include "profile/profile_engine.h"

#include "profile/joint_features.h"
#include "profile/profile_score.h"
#include "profile/stripe_noise.h"
#include "support/exact_log.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr std::size_t kMostRefined = 7;  // layouts of a joint
constexpr std::size_t kMostRefinedOfMany = 3;
constexpr double kHopeless = 30.0;  // dearer than the cheapest layout by so much
constexpr double kNoLimit = 1e9;
constexpr double kNullSlack = 100.0;  // by which the search may misjudge a plate
constexpr TWeldType kRanked[] = {TWeldType::vGroove, TWeldType::singleBevel, TWeldType::uGroove,
                                 TWeldType::flareV,  TWeldType::flareBevel,  TWeldType::corner,
                                 TWeldType::lap,     TWeldType::buttGap};
constexpr double kPlatesApartDeg = 14.0;
constexpr double kLeastShare = 0.4;        // of the centres next to a corner that belong to the elements
constexpr double kConfidenceScale = 20.0;  // gain over a plate
constexpr double kMovesPx = 12.0;          // that tracking follows

// The stripe in one sense of the profile.
class TOriented {
public:
  TOriented(const TStripeProfile& stripe, int sense, std::pmr::memory_resource* memory)
      : turned(memory), view{stripe.centres().x, stripe.centres().y, stripe.centres().weight} {
    if (sense > 0) return;
    turned.assign(stripe.centres().y.begin(), stripe.centres().y.end());
    for (double& y : turned) y = -y;
    view.y = turned;
  }
  const TOrientedCentres& centres() const { return view; }

private:
  TList<double> turned;
  TOrientedCentres view;
};

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

bool arePlatesInLine(const TProfileLayout& layout) {
  const std::size_t last = layout.count() - 1;
  if (last == 0 || layout.range(0).role != TElementRole::plate || layout.range(last).role != TElementRole::plate)
    return true;
  const double left = angleDegOf(layout.elements[0].lines.right);
  const double right = angleDegOf(layout.elements[last].lines.left);
  return std::abs(left - right) <= kPlatesApartDeg;
}

// Refines, measures and scores layouts of one stripe.
class TJudge {
public:
  TJudge(const TStripeProfile& s, const TProfileOptions& o, std::pmr::memory_resource* memory)
      : stripe(s),
        options(o),
        upright(s, 1, memory),
        turned(s, -1, memory),
        sums(static_cast<std::size_t>(s.centres().count()) + 1, memory) {}

  const TOrientedCentres& centresOf(int sense) const { return sense > 0 ? upright.centres() : turned.centres(); }

  // Pointwise cost of a refined layout; nothing where the elements do not meet.
  std::optional<TLayoutScore> refine(TProfileLayout& layout, int rounds = 3) {
    const TRefineSettings settings{stripe.noisePx(), stripe.widthPx(), rounds};
    if (!refineLayout(centresOf(layout.sense), settings, layout, sums)) return std::nullopt;
    return scoreLayout(centresOf(layout.sense), layout, stripe.noisePx());
  }

  TProfileFit judge(const TProfileLayout& layout, const TLayoutScore& score, double nullCost) const {
    TProfileFit fit;
    fit.profile = layout.profile;
    fit.sense = layout.sense;
    fit.noisePx = stripe.noisePx();
    fit.score = nullCost - score.cost;
    fit.outcome = TProfileOutcome::found;
    if (!measureLayout(centresOf(layout.sense), layout, {stripe.noisePx(), stripe.unseenPx()}, fit)) {
      fit.outcome = TProfileOutcome::tooShallow;
    } else if (!arePlatesInLine(layout)) {
      fit.outcome = TProfileOutcome::notMeeting;
    } else if (score.worstShare < kLeastShare) {
      fit.outcome = TProfileOutcome::notSeen;
    } else if (fit.score < options.leastGain) {
      fit.outcome = TProfileOutcome::notBetter;
    }
    copyElements(layout, score, fit);
    if (layout.sense < 0) turnOver(fit);
    if (fit.isFound()) fit.confidence = (1.0 - exactExp(-fit.score / kConfidenceScale)) * score.worstShare;
    return fit;
  }

private:
  const TStripeProfile& stripe;
  const TProfileOptions& options;
  TOriented upright;
  TOriented turned;
  TWindowSums sums;
};

// Searches the forms of a joint on one table.
class TFormSearch {
public:
  TFormSearch(const TStripeProfile& stripe, const TProfileOptions& o, std::pmr::memory_resource* m)
      : options(o),
        memory(m),
        borders(cutAtoms(stripe.centres(), stripe.moments(), stripe.noisePx(), m)),
        table(stripe.centres(), stripe.moments(), borders, stripe.noisePx(), m),
        choices(table, m),
        judge(stripe, o, m),
        nullCost(stripe.centres().count()),
        leastNull(stripe.centres().count()) {
    for (const TProfileTemplate& form : nullProfiles()) tryNull(form);
  }

  // Layouts of all forms in the senses allowed, the cheapest first; none that is hopeless beside the cheapest of
  // them or beside a plate.
  //   most  cost of a layout of another joint that this one has to compete with
  TList<TProfileCut> search(TTemplateView forms, double most) {
    TList<TProfileCut> cuts(memory);
    double least = std::min(most, leastNull + kNullSlack);
    for (const TProfileTemplate& form : forms) {
      for (const int sense : {1, -1}) {
        if (sense == -options.senses) continue;
        for (const TProfileCut& cut : searchProfile(form, sense, choices, least + kHopeless, memory)) {
          cuts.push_back(cut);
          least = std::min(least, cut.cost);
        }
      }
    }
    std::stable_sort(cuts.begin(), cuts.end(),
                     [](const TProfileCut& a, const TProfileCut& b) { return a.cost < b.cost; });
    while (!cuts.empty() && cuts.back().cost > least + kHopeless) cuts.pop_back();
    return cuts;
  }

  // The layout that explains the stripe best after the refinement.
  TProfileFit best(const TList<TProfileCut>& cuts, std::size_t mostRefined) {
    TProfileFit chosen;
    for (std::size_t c = 0; c < std::min(cuts.size(), mostRefined); ++c) {
      TProfileLayout layout = layoutOf(cuts[c], table);
      const std::optional<TLayoutScore> score = judge.refine(layout);
      TProfileFit fit;
      fit.outcome = TProfileOutcome::notMeeting;
      if (score) fit = judge.judge(layout, *score, nullCost);
      const bool isBetter = fit.isFound() == chosen.isFound() ? c == 0 || fit.score > chosen.score : fit.isFound();
      if (isBetter) chosen = fit;
    }
    return chosen;
  }

private:
  void tryNull(const TProfileTemplate& form) {
    for (const int sense : {1, -1}) {
      if (sense < 0 && form.elements[0].kind == TElementKind::line) continue;
      const TList<TProfileCut> cuts = searchProfile(form, sense, choices, kNoLimit, memory);
      if (cuts.empty()) continue;
      leastNull = std::min(leastNull, cuts.front().cost);
      TProfileLayout layout = layoutOf(cuts.front(), table);
      const std::optional<TLayoutScore> score = judge.refine(layout, 2);
      if (score) nullCost = std::min(nullCost, score->cost);
    }
  }

  const TProfileOptions& options;
  std::pmr::memory_resource* memory;
  TList<int> borders;
  TFitTable table;
  TElementChoices choices;
  TJudge judge;
  double nullCost;   // of the centres, pointwise
  double leastNull;  // of the search
};

// An end falls into a hole with the hole's share of the columns, anywhere in it. The largest hole may be a gap.
double unseenAtEnds(const TCentres& centres) {
  double cubes = 0.0;
  double largest = 0.0;
  for (int i = 1; i < centres.count(); ++i) {
    const double hole = centres.holeBefore(i);
    cubes += hole * hole * hole;
    largest = std::max(largest, hole);
  }
  if (centres.count() < 2) return 0.0;
  const double columns = centres.at(centres.count() - 1) - centres.at(0);
  return std::sqrt(std::max(0.0, cubes - largest * largest * largest) / (3.0 * columns));
}

TProfileFit refused(TProfileOutcome outcome) {
  TProfileFit fit;
  fit.outcome = outcome;
  return fit;
}

// Columns of an element of the frame before, without those next to its corners, which may have moved.
TSpan innerSpan(const TOrientedCentres& centres, double leftX, double rightX) {
  const double insetPx = std::min(kMovesPx, 0.25 * std::max(0.0, rightX - leftX));
  const int first = centres.indexOf(leftX + insetPx);
  return {first, std::max(first, centres.indexOf(rightX - insetPx))};
}

// A layout at the place of the frame before; nothing where too little is left of an element.
std::optional<TProfileLayout> layoutAt(const TOrientedCentres& centres, const TStripeProfile& stripe,
                                       const TProfileFit& before) {
  TProfileLayout layout;
  layout.profile = before.profile;
  layout.sense = before.sense;
  for (std::size_t e = 0; e < before.elementCount; ++e) {
    const TProfileElement& old = before.elements[e];
    TFittedElement& element = layout.elements[e];
    const bool isFirst = e == 0;
    const bool isLast = e + 1 == before.elementCount;
    element.span = {isFirst ? 0 : centres.indexOf(old.left.x),
                    isLast ? centres.count() : centres.indexOf(old.right.x)};
    if (element.span.count() < 4) return std::nullopt;
    element.searched = element.span;
    element.left.x = centres.at(element.span.first).x;
    element.right.x = centres.at(element.span.last - 1).x;
    element.noise2 = std::max(old.noisePx * old.noisePx, stripe.noisePx() * stripe.noisePx());
    const TSpan inner = innerSpan(centres, element.left.x, element.right.x);
    if (old.kind == TElementKind::line) {
      TLine line = stripe.moments().lineOf(inner.count() >= 2 ? inner : element.span);
      line.y *= before.sense;
      line.dy *= before.sense;
      element.lines = {line, line, line, true};
    } else {
      element.arc.circle = {old.centre.x, before.sense * old.centre.y, old.radiusPx, 0.0, 0.0};
    }
  }
  return layout;
}

// Cost of one straight line through everything.
double plateCost(TJudge& judge, const TOrientedCentres& centres, const TStripeProfile& stripe) {
  TProfileLayout plate;
  plate.profile = &nullProfiles()[0];
  TFittedElement& all = plate.elements[0];
  all.span = all.searched = {0, centres.count()};
  all.left = centres.at(0);
  all.right = centres.at(centres.count() - 1);
  all.noise2 = stripe.noisePx() * stripe.noisePx();
  const TLine line = stripe.moments().lineOf(all.span);
  all.lines = {line, line, line, true};
  const std::optional<TLayoutScore> score = judge.refine(plate, 2);
  return score ? score->cost : centres.count();
}

}  // namespace

TStripeProfile::TStripeProfile(TPointView points, TView<TCentreSource> sources, double widthPx,
                               std::pmr::memory_resource* memory)
    : kept(cleanCentres(points, sources, memory)),
      sums(kept.x, kept.y, kept.weight, memory),
      noise(measureNoise(kept, sums, memory)),
      width(widthPx > 0.0 ? std::min(widthPx, 200.0) : 0.0),
      unseen(unseenAtEnds(kept)) {}

TProfileFit fitProfile(const TStripeProfile& stripe, TTemplateView forms, const TProfileOptions& options,
                       std::pmr::memory_resource* memory) {
  if (!stripe.isUsable()) return refused(TProfileOutcome::tooFewCentres);
  TFormSearch search(stripe, options, memory);
  return search.best(search.search(forms, kNoLimit), kMostRefined);
}

TProfileFit trackProfile(const TStripeProfile& stripe, const TProfileFit& before, const TProfileOptions& options,
                         std::pmr::memory_resource* memory) {
  if (!stripe.isUsable()) return refused(TProfileOutcome::tooFewCentres);
  if (!before.isFound()) return refused(TProfileOutcome::noLayout);
  TJudge judge(stripe, options, memory);
  const TOrientedCentres& centres = judge.centresOf(before.sense);
  std::optional<TProfileLayout> layout = layoutAt(centres, stripe, before);
  if (!layout) return refused(TProfileOutcome::noLayout);
  const std::optional<TLayoutScore> score = judge.refine(*layout);
  if (!score) return refused(TProfileOutcome::notMeeting);
  return judge.judge(*layout, *score, plateCost(judge, judge.centresOf(1), stripe));
}

TList<TRankedJoint> rankProfiles(const TStripeProfile& stripe, const TProfileOptions& options,
                                 std::pmr::memory_resource* memory) {
  TList<TRankedJoint> ranked(memory);
  if (!stripe.isUsable()) return ranked;
  TFormSearch search(stripe, options, memory);
  double least = kNoLimit;
  for (const TWeldType type : kRanked) {
    const TList<TProfileCut> cuts = search.search(profilesOf(type), least);
    if (cuts.empty()) continue;
    least = std::min(least, cuts.front().cost);
    const TProfileFit fit = search.best(cuts, kMostRefinedOfMany);
    if (fit.isFound()) ranked.push_back({type, fit});
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const TRankedJoint& a, const TRankedJoint& b) { return a.fit.score > b.fit.score; });
  return ranked;
}

}  // namespace weld
