// The cheapest way to lay a template over the atoms of a stripe.
#pragma once

#include "profile/fit_table.h"
#include "profile/profile_template.h"

#include <array>

namespace weld {

// Elements of a template on the stripe, as ranges of atoms: element e covers first[e] <= atom < last[e].
struct TProfileCut {
  const TProfileTemplate* profile = nullptr;
  int sense = 1;  // 1: as the template says; -1: the stripe turned over
  std::array<int, kMostElements> first{};
  std::array<int, kMostElements> last{};
  double cost = 0.0;
};

// The sides of an element that its neighbours ask for, in the sense of the template.
struct TElementEnd {
  double x = 0.0;
  double y = 0.0;
  double angleDeg = 0.0;
  double dx = 1.0;  // unit vector of the angle
  double dy = 0.0;
};

struct TElementChoice {
  int first = 0;  // atoms
  int last = 0;
  double cost = 0.0;
  double lengthPx = 0.0;
  double angleDeg = 0.0;  // of a line; of an arc that of its chord
  TElementEnd left;
  TElementEnd right;
};

// Fits of an element on every stretch that its ranges allow, cheapest or not, by their last atom and then their
// first.
//   sense  -1 turns the stripe over
TList<TElementChoice> choicesOf(const TElementRange& element, int sense, TFitTable& table,
                                std::pmr::memory_resource* memory);

// The table of a stripe with the choices that were asked for: templates share many elements.
class TElementChoices {
public:
  TElementChoices(TFitTable& t, std::pmr::memory_resource* memory) : fits(t), known(memory) {
    known.reserve(kMostKnown);
  }

  TFitTable& table() { return fits; }
  const TList<TElementChoice>& of(const TElementRange& element, int sense);

private:
  struct TKnown {
    TElementRange element;
    int sense;
    TList<TElementChoice> choices;
  };
  static constexpr std::size_t kMostKnown = 128;  // more than a joint of one's own can have

  TFitTable& fits;
  TList<TKnown> known;
};

// Cost of leaving out what lies between two neighbouring elements; nothing where they cannot be neighbours.
std::optional<double> junctionCost(const TJunctionRange& junction, const TElementChoice& left,
                                   const TElementChoice& right, const TFitTable& table);

// Cost of the centres before the first and behind the last element.
double freeEndCost(int centres);

inline constexpr std::size_t kKeptCuts = 3;

// The cheapest layouts with different last elements, cheapest first; empty where the template fits nowhere.
// Dynamic programming over (element, stretch of atoms), each of which keeps its three cheapest beginnings with
// different first plates. Ties go to the earlier stretch.
//   most  layouts that cost as much or more are not looked for
TList<TProfileCut> searchProfile(const TProfileTemplate& profile, int sense, TElementChoices& choices, double most,
                                 std::pmr::memory_resource* memory);

}  // namespace weld
