#include "profile/profile_engine.h"

#include "profile/layout_judge.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr std::size_t kMostRefined = 7;  // layouts of a joint: the cheapest few may not meet
constexpr double kHopeless = 30.0;       // dearer than the cheapest layout by so much,
constexpr double kLastHope = 60.0;       // where that one does not meet
constexpr double kClear = 22.0;          // by which a layout that fits beats the others
constexpr double kMostInflation = 4.0;
constexpr double kSharpU = 12.0;
constexpr double kRoundedFlat = 18.0;
constexpr double kLeastArcPx = 42.0;
constexpr double kNoLimit = 1e9;
constexpr double kNullSlack = 100.0;  // by which the search may misjudge a plate
constexpr TWeldType kRanked[] = {TWeldType::vGroove, TWeldType::singleBevel, TWeldType::uGroove,
                                 TWeldType::flareV,  TWeldType::flareBevel,  TWeldType::corner,
                                 TWeldType::lap,     TWeldType::buttGap};
constexpr double kMovesPx = 12.0;      // that tracking follows
constexpr double kMostTurnDeg = 12.0;  // of a flank from frame to frame; more is another joint, or a wrong one
constexpr double kMostGrowth = 0.25;   // of the width

// Speckle must not cut the stripe where it bends as one.
double coarseNoise(const TStripeProfile& stripe) {
  return stripe.noisePx() * std::sqrt(std::min(stripe.noiseInflation(), kMostInflation));
}

// Keeps the list by cost, and by age where the costs are equal.
void insertCheap(TList<TProfileCut>& cuts, const TProfileCut& cut) {
  const auto isCheaper = [](const TProfileCut& a, const TProfileCut& b) { return a.cost < b.cost; };
  cuts.insert(std::upper_bound(cuts.begin(), cuts.end(), cut, isCheaper), cut);
}

// Searches the forms of a joint on one table.
class TFormSearch {
public:
  TFormSearch(const TStripeProfile& stripe, const TProfileOptions& o, std::pmr::memory_resource* m)
      : options(o),
        memory(m),
        borders(cutAtoms(stripe.centres(), stripe.moments(), coarseNoise(stripe), m)),
        table(stripe.centres(), stripe.moments(), borders, stripe.noisePx(), m),
        choices(table, m),
        judge(stripe, o, m),
        nullCost(stripe.centres().count()),
        leastNull(stripe.centres().count()) {
    tryNulls();
  }

  // Layouts of all forms in the senses allowed, the cheapest first; none that is hopeless beside the cheapest of
  // them or beside a plate.
  //   most      cost of a layout of another joint that this one has to compete with
  //   hopeless  dearer than the cheapest layout by so much
  TList<TProfileCut> search(TTemplateView forms, double most, double hopeless = kHopeless) {
    TList<TProfileCut> cuts(memory);
    double least = std::min(most, leastNull + kNullSlack);
    for (const TProfileTemplate& form : forms) {
      for (const int sense : {1, -1}) {
        if (sense == -options.senses) continue;
        for (const TProfileCut& cut : searchProfile(form, sense, choices, least + hopeless, memory)) {
          insertCheap(cuts, cut);
          least = std::min(least, cut.cost);
        }
      }
    }
    while (!cuts.empty() && cuts.back().cost > least + hopeless) cuts.pop_back();
    return cuts;
  }

  // The layout that explains the stripe best after the refinement.
  TProfileFit best(const TList<TProfileCut>& cuts, std::size_t mostRefined) {
    TProfileFit chosen;
    for (std::size_t c = 0; c < std::min(cuts.size(), mostRefined); ++c) {
      if (chosen.isFound() && cuts[c].cost > cuts[0].cost + kClear) break;
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
  void tryNulls() {
    TList<TProfileCut> cuts(memory);
    for (const TProfileTemplate& form : nullProfiles()) {
      for (const int sense : {1, -1}) {
        if (sense < 0 && form.elements[0].kind == TElementKind::line) continue;
        const TList<TProfileCut> found = searchProfile(form, sense, choices, kNoLimit, memory);
        if (!found.empty()) cuts.push_back(found.front());
      }
    }
    for (const TProfileCut& cut : cuts) leastNull = std::min(leastNull, cut.cost);
    for (const TProfileCut& cut : cuts) {
      if (cut.cost > leastNull + kHopeless) continue;
      TProfileLayout layout = layoutOf(cut, table);
      const std::optional<TLayoutScore> score = judge.refine(layout, 2);
      if (score) nullCost = std::min(nullCost, score->cost);
    }
  }

  const TProfileOptions& options;
  std::pmr::memory_resource* memory;
  TList<int> borders;
  TFitTable table;
  TElementChoices choices;
  TLayoutJudge judge;
  double nullCost;   // of the centres, pointwise
  double leastNull;  // of the search
};

// An end falls into a hole with the hole's share of the columns, anywhere in it.
TStripeProfile::THoles holesOf(const TCentres& centres) {
  TStripeProfile::THoles holes;
  double cubes = 0.0;
  double largest = 0.0;
  for (int i = 1; i < centres.count(); ++i) {
    const double hole = centres.holeBefore(i);
    cubes += hole * hole * hole;
    holes.secondPx = std::max(holes.secondPx, std::min(hole, largest));
    largest = std::max(largest, hole);
  }
  if (centres.count() < 2) return holes;
  const double columns = centres.at(centres.count() - 1) - centres.at(0);
  holes.unseenPx = std::sqrt(std::max(0.0, cubes - largest * largest * largest) / (3.0 * columns));
  return holes;
}

// Columns between the flanks.
double rootColumns(const TProfileFit& fit) {
  const auto isFlank = [](const TProfileElement& e) { return e.role == TElementRole::flank; };
  const auto* const end = fit.elements.begin() + fit.elementCount;
  const auto* const left = std::find_if(fit.elements.begin(), end, isFlank);
  if (left == end) return kNoLimit;
  const auto* const right = std::find_if(left + 1, end, isFlank);
  return right == end ? kNoLimit : right->left.x - left->right.x;
}

// A U without a radius is a V, and so is one whose arc is as short as a backing; a flat root between rounded
// corners is a U's, though a V's backing may lie as flat.
double roundingOf(const TProfileFit& fit) {
  const bool isRounded = !std::isnan(fit.measures.leftRadiusPx) || !std::isnan(fit.measures.rightRadiusPx);
  if (isRounded && fit.feature(TFeature::leftRoot).isFound) return kRoundedFlat;
  return isRounded && rootColumns(fit) >= kLeastArcPx ? 0.0 : -kSharpU;
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

bool isSameShape(const TProfileFit& a, const TProfileFit& b) {
  const auto isFar = [](double x, double y, double most) { return std::abs(x - y) > most; };  // not for NaN
  const TJointMeasures& m = a.measures;
  const TJointMeasures& n = b.measures;
  return !isFar(m.leftAngleDeg, n.leftAngleDeg, kMostTurnDeg) &&
         !isFar(m.rightAngleDeg, n.rightAngleDeg, kMostTurnDeg) &&
         !isFar(m.baseAngleDeg, n.baseAngleDeg, kMostTurnDeg) &&
         !isFar(m.widthPx, n.widthPx, kMostGrowth * n.widthPx);
}

// Cost of one straight line through everything.
double plateCost(TLayoutJudge& judge, const TOrientedCentres& centres, const TStripeProfile& stripe) {
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
      gaps(holesOf(kept)) {}

TProfileFit fitProfile(const TStripeProfile& stripe, TTemplateView forms, const TProfileOptions& options,
                       std::pmr::memory_resource* memory) {
  if (!stripe.isUsable()) return refused(TProfileOutcome::tooFewCentres);
  TFormSearch search(stripe, options, memory);
  const TProfileFit fit = search.best(search.search(forms, kNoLimit), kMostRefined);
  if (fit.outcome != TProfileOutcome::notMeeting) return fit;
  return search.best(search.search(forms, kNoLimit, kLastHope), kMostRefined);
}

TProfileFit trackProfile(const TStripeProfile& stripe, const TProfileFit& before, const TProfileOptions& options,
                         std::pmr::memory_resource* memory) {
  if (!stripe.isUsable()) return refused(TProfileOutcome::tooFewCentres);
  if (!before.isFound()) return refused(TProfileOutcome::noLayout);
  TLayoutJudge judge(stripe, options, memory);
  const TOrientedCentres& centres = judge.centresOf(before.sense);
  std::optional<TProfileLayout> layout = layoutAt(centres, stripe, before);
  if (!layout) return refused(TProfileOutcome::noLayout);
  const std::optional<TLayoutScore> score = judge.refine(*layout);
  if (!score) return refused(TProfileOutcome::notMeeting);
  TProfileFit fit = judge.judge(*layout, *score, plateCost(judge, judge.centresOf(1), stripe));
  if (fit.isFound() && !isSameShape(fit, before)) fit.outcome = TProfileOutcome::notMeeting;
  return fit;
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
    TProfileFit fit = search.best(cuts, kMostRefined);
    if (type == TWeldType::uGroove) fit.score += roundingOf(fit);
    if (!fit.isFound()) continue;
    const auto isBetter = [](const TRankedJoint& one, const TRankedJoint& other) {
      return one.fit.score > other.fit.score;
    };
    const TRankedJoint next{type, fit};
    ranked.insert(std::upper_bound(ranked.begin(), ranked.end(), next, isBetter), next);
  }
  return ranked;
}

}  // namespace weld
