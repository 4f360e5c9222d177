// Refines, scores and measures layouts of one stripe.
#pragma once

#include "profile/profile_engine.h"
#include "profile/profile_layout.h"
#include "profile/profile_score.h"

#include <optional>

namespace weld {

class TLayoutJudge {
public:
  TLayoutJudge(const TStripeProfile& stripe, const TProfileOptions& options, std::pmr::memory_resource* memory);

  // The stripe as a profile of this sense sees it.
  const TOrientedCentres& centresOf(int sense) const { return sense > 0 ? upright : turned; }

  // Pointwise cost of a layout that is refined first; nothing where the elements do not meet.
  std::optional<TLayoutScore> refine(TProfileLayout& layout, int rounds = 3);

  // The layout in the image, with its features, and whether the joint is one.
  //   nullCost  pointwise cost of what the stripe is without a joint
  TProfileFit judge(const TProfileLayout& refined, const TLayoutScore& score, double nullCost) const;

private:
  bool isLit(const TProfileLayout& layout) const;

  const TStripeProfile& stripe;
  const TProfileOptions& options;
  TList<double> turnedY;
  TOrientedCentres upright;
  TOrientedCentres turned;
};

}  // namespace weld
