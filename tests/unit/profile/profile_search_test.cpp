#include "profile/profile_search.h"
#include "profile/builtin_profiles.h"
#include "scenes/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace weld {
namespace {

std::pmr::memory_resource* const kHeap = std::pmr::get_default_resource();

// Every layout, one after the other.
class TBruteForce {
public:
  TBruteForce(const TProfileTemplate& p, int sense, TFitTable& t) : profile(p), table(t) {
    for (std::size_t e = 0; e < p.elementCount; ++e) choices.push_back(choicesOf(p.elements[e], sense, t, kHeap));
    extend(0, nullptr, 0.0, std::numeric_limits<double>::quiet_NaN());
  }
  double least = std::numeric_limits<double>::infinity();

private:
  // plateDeg: angle of the first plate
  void extend(std::size_t e, const TElementChoice* before, double cost, double plateDeg) {
    if (e == profile.elementCount) {
      least = std::min(least, cost + freeEndCost(table.centresOf(before->last, table.atoms())));
      return;
    }
    const TElementRole role = profile.elements[e].role;
    for (const TElementChoice& choice : choices[e]) {
      double next = cost + choice.cost;
      if (before == nullptr) {
        next += freeEndCost(table.centresOf(0, choice.first));
      } else {
        const int most = profile.junctions[e - 1].kind == TJunctionKind::fillet ? 8 : 4;
        if (choice.first < before->last || choice.first - before->last > most) continue;
        const auto between = junctionCost(profile.junctions[e - 1], *before, choice, table);
        if (!between) continue;
        next += *between;
      }
      const double apart = std::abs(choice.angleDeg - plateDeg);  // not a number without a plate
      if ((role == TElementRole::plate && apart > 14.0) || (role == TElementRole::flat && apart > 20.0)) continue;
      const bool isFirstPlate = role == TElementRole::plate && std::isnan(plateDeg);
      extend(e + 1, &choice, next, isFirstPlate ? choice.angleDeg : plateDeg);
    }
  }

  const TProfileTemplate& profile;
  TFitTable& table;
  std::vector<TList<TElementChoice>> choices;
};

// About thirty centres of a chain of straight pieces, 12 columns apart, so that everything is worth a cut.
std::vector<cv::Point2f> randomChain(std::uint64_t seed) {
  scenes::TRandom random(seed, scenes::TStream::layout);
  std::vector<cv::Point2f> points;
  double y = 500;
  double slope = 0;
  for (int i = 0; i < 32; ++i) {
    if (random.chance(0.2)) slope = random.chance(0.4) ? 0.0 : random.uniform(-1.8, 1.8);
    if (random.chance(0.06)) y += random.uniform(-60, 60);
    y += 11 * slope;
    points.emplace_back(static_cast<float>(11 * i), static_cast<float>(y + random.uniform(-0.6, 0.6)));
  }
  return points;
}

TEST(ProfileSearch, FindsTheCheapestOfAllLayouts) {
  int found = 0;
  int missed = 0;
  for (std::uint64_t seed = 1; seed <= 150; ++seed) {
    TCentres centres(kHeap);
    for (const cv::Point2f& p : randomChain(seed)) {
      centres.x.push_back(static_cast<double>(p.x)), centres.y.push_back(static_cast<double>(p.y));
      centres.weight.push_back(1.0), centres.isBreak.push_back(0);
    }
    const TMoments moments(centres.x, centres.y, centres.weight, kHeap);
    std::vector<int> cuts;
    for (int i = 0; i <= 32; i += 4) cuts.push_back(i);  // few, or the layouts are too many to try
    TFitTable table(centres, moments, cuts, 0.5, kHeap);
    TElementChoices choices(table, kHeap);
    for (const TWeldType type : {TWeldType::vGroove, TWeldType::singleBevel, TWeldType::uGroove, TWeldType::flareV,
                                 TWeldType::flareBevel, TWeldType::corner, TWeldType::lap}) {
      for (const TProfileTemplate& profile : profilesOf(type)) {
        for (const int sense : {1, -1}) {
          const TBruteForce all(profile, sense, table);
          const TList<TProfileCut> cut = searchProfile(profile, sense, choices, 1e9, kHeap);
          if (!std::isfinite(all.least)) {
            ASSERT_TRUE(cut.empty()) << profile.name << " seed " << seed;
            continue;
          }
          ++found;
          // The plates' common direction is not kept for every beginning.
          const double cost = cut.empty() ? 1e9 : cut.front().cost;
          EXPECT_GE(cost, all.least - 1e-9) << profile.name << " seed " << seed;
          const bool isMissed = cost > all.least + 1e-9;
          missed += isMissed ? 1 : 0;
          EXPECT_FALSE(isMissed && profile.elementCount < 3) << profile.name << " seed " << seed;
          for (std::size_t c = 1; c < cut.size(); ++c) EXPECT_GE(cut[c].cost, cut[c - 1].cost);
        }
      }
    }
  }
  EXPECT_GT(found, 300);
  EXPECT_LE(missed, found / 100);
}

TEST(ProfileTemplate, AMirroredTemplateMirroredIsItself) {
  for (const TProfileTemplate& profile : profilesOf(TWeldType::flareBevel)) {
    const TProfileTemplate twice = mirrored(mirrored(profile, ""), "");
    for (std::size_t e = 0; e < profile.elementCount; ++e) {
      EXPECT_EQ(twice.elements[e].minAngleDeg, profile.elements[e].minAngleDeg);
      EXPECT_EQ(twice.elements[e].isTouchingLeft, profile.elements[e].isTouchingLeft);
    }
  }
}

}  // namespace
}  // namespace weld
