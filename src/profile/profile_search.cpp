#include "profile/profile_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr int kMostSkipped = 4;           // atoms between two elements
constexpr int kMostInFillet = 8;          // atoms of a rounded corner
constexpr double kPlatesApartDeg = 14.0;  // between the two plates
constexpr double kFlatApartDeg = 20.0;    // between a plate and a flat root
constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr std::size_t kBeginnings = 3;  // of an element, with different first plates

// A layout up to one element: the choice it ends with, and where it came from.
struct TBeginning {
  double cost = kNever;
  int from = -1;                                               // choice of the element before
  int fromRank = 0;                                            // which of its beginnings
  double plateDeg = std::numeric_limits<double>::quiet_NaN();  // of the first plate
};

struct TStage {
  TStage(const TList<TElementChoice>& list, std::pmr::memory_resource* memory)
      : choices(list), beginnings(list.size(), memory) {}
  const TList<TElementChoice>& choices;  // by their last atom
  TList<std::array<TBeginning, kBeginnings>> beginnings;
};

bool fitsPlate(const TElementRange& element, double angleDeg, double plateDeg) {
  if (element.role == TElementRole::plate) return !(std::abs(angleDeg - plateDeg) > kPlatesApartDeg);
  if (element.role == TElementRole::flat) return !(std::abs(angleDeg - plateDeg) > kFlatApartDeg);
  return true;
}

// Of beginnings with the same plate only the cheapest may win.
void keep(std::array<TBeginning, kBeginnings>& kept, const TBeginning& next) {
  std::size_t at = 0;
  while (at < kBeginnings && !(next.cost < kept[at].cost)) {
    const bool isSamePlate = kept[at].plateDeg == next.plateDeg || std::isnan(next.plateDeg);
    if (isSamePlate) return;
    ++at;
  }
  if (at == kBeginnings) return;
  std::size_t last = at;
  while (last + 1 < kBeginnings && kept[last].cost < kNever && kept[last].plateDeg != next.plateDeg) ++last;
  for (; last > at; --last) kept[last] = kept[last - 1];
  kept[at] = next;
}

class TSearch {
public:
  TSearch(const TProfileTemplate& p, int s, TElementChoices& c, double mostCost, std::pmr::memory_resource* m)
      : profile(p), sense(s), known(c), table(c.table()), most(mostCost), memory(m), stages(m) {}

  TList<TProfileCut> run() {
    stages.reserve(profile.elementCount);
    for (std::size_t e = 0; e < profile.elementCount; ++e) {
      stages.emplace_back(known.of(profile.elements[e], sense), memory);
      if (stages.back().choices.empty()) return TList<TProfileCut>(memory);
      e == 0 ? begin() : extend(e);
    }
    return bestEnds();
  }

private:
  void begin() {
    TStage& stage = stages.front();
    for (std::size_t c = 0; c < stage.choices.size(); ++c) {
      const TElementChoice& choice = stage.choices[c];
      TBeginning& first = stage.beginnings[c][0];
      first.cost = choice.cost + freeEndCost(table.centresOf(0, choice.first));
      if (profile.elements[0].role == TElementRole::plate) first.plateDeg = choice.angleDeg;
    }
  }

  void extend(std::size_t e) {
    const TStage& before = stages[e - 1];
    TStage& stage = stages[e];
    const bool isRounded = profile.junctions[e - 1].kind == TJunctionKind::fillet;
    const int skipped = isRounded ? kMostInFillet : kMostSkipped;
    for (std::size_t c = 0; c < stage.choices.size(); ++c) {
      const TElementChoice& choice = stage.choices[c];
      const auto byLast = [](const TElementChoice& a, int last) { return a.last < last; };
      auto left = std::lower_bound(before.choices.begin(), before.choices.end(), choice.first - skipped, byLast);
      for (; left != before.choices.end() && left->last <= choice.first; ++left) {
        const auto from = left - before.choices.begin();
        const auto& beginnings = before.beginnings[static_cast<std::size_t>(from)];
        const double least = beginnings[0].cost + choice.cost;
        if (!(least < std::min(most, stage.beginnings[c].back().cost))) continue;
        const std::optional<double> between = junctionCost(profile.junctions[e - 1], *left, choice, table);
        if (!between) continue;
        join({e, choice, static_cast<int>(from), *between}, beginnings, stage.beginnings[c]);
      }
    }
  }

  // A choice for an element behind one for the element before.
  struct TJunction {
    std::size_t element;
    const TElementChoice& choice;
    int before;
    double cost;
  };

  void join(const TJunction& junction, const std::array<TBeginning, kBeginnings>& beginnings,
            std::array<TBeginning, kBeginnings>& kept) const {
    const TElementRange& element = profile.elements[junction.element];
    const TElementChoice& choice = junction.choice;
    for (std::size_t rank = 0; rank < kBeginnings; ++rank) {
      const TBeginning& start = beginnings[rank];
      if (start.cost == kNever || !fitsPlate(element, choice.angleDeg, start.plateDeg)) continue;
      const double cost = start.cost + junction.cost + choice.cost;
      TBeginning next{cost, junction.before, static_cast<int>(rank), start.plateDeg};
      if (std::isnan(next.plateDeg) && element.role == TElementRole::plate) next.plateDeg = choice.angleDeg;
      keep(kept, next);
    }
  }

  // The cheapest ends whose last elements start at different cuts.
  TList<TProfileCut> bestEnds() const {
    TList<TProfileCut> cuts(memory);
    const TStage& stage = stages.back();
    std::array<int, kMostAtoms + 1> bestOf{};  // choice by where the last element starts
    std::array<double, kMostAtoms + 1> costOf{};
    bestOf.fill(-1);
    costOf.fill(most);
    for (std::size_t c = 0; c < stage.choices.size(); ++c) {
      const TElementChoice& choice = stage.choices[c];
      const double cost = stage.beginnings[c][0].cost + freeEndCost(table.centresOf(choice.last, table.atoms()));
      const auto first = static_cast<std::size_t>(choice.first);
      if (!(cost < costOf[first])) continue;
      costOf[first] = cost;
      bestOf[first] = static_cast<int>(c);
    }
    while (cuts.size() < kKeptCuts) {
      const auto best = std::min_element(costOf.begin(), costOf.end());
      if (!(*best < most)) break;
      cuts.push_back(trace(bestOf[static_cast<std::size_t>(best - costOf.begin())], *best));
      *best = most;
    }
    return cuts;
  }

  TProfileCut trace(int choice, double cost) const {
    TProfileCut cut;
    cut.profile = &profile;
    cut.sense = sense;
    cut.cost = cost;
    int rank = 0;
    for (std::size_t e = profile.elementCount; e-- > 0;) {
      const auto c = static_cast<std::size_t>(choice);
      cut.first[e] = stages[e].choices[c].first;
      cut.last[e] = stages[e].choices[c].last;
      const TBeginning& beginning = stages[e].beginnings[c][static_cast<std::size_t>(rank)];
      choice = beginning.from;
      rank = beginning.fromRank;
    }
    return cut;
  }

  const TProfileTemplate& profile;
  int sense;
  TElementChoices& known;
  const TFitTable& table;
  double most;
  std::pmr::memory_resource* memory;
  TList<TStage> stages;
};

}  // namespace

TList<TProfileCut> searchProfile(const TProfileTemplate& profile, int sense, TElementChoices& choices, double most,
                                 std::pmr::memory_resource* memory) {
  if (profile.elementCount == 0 || profile.elementCount > kMostElements || choices.table().atoms() == 0) {
    return TList<TProfileCut>(memory);
  }
  return TSearch(profile, sense, choices, most, memory).run();
}

}  // namespace weld
