// Lays profiles over the centres of a stripe.
//
//   const TStripeProfile stripe(centres.points, centres.sources, centres.widthPx, memory);
//   const TProfileFit fit = fitProfile(stripe, profilesOf(TWeldType::vGroove), memory);
//   if (fit.isFound()) use(fit.feature(TFeature::root).pos, fit.measures.depthPx);
//   const TProfileFit next = trackProfile(nextStripe, fit, memory);
#pragma once

#include "profile/builtin_profiles.h"
#include "profile/clean_runs.h"
#include "profile/flares.h"
#include "profile/profile_fit.h"
#include "profile/stripe_noise.h"
#include "stripe/stripe.h"
#include "trace/frame.h"

namespace weld {

// A stripe made ready: cleaned centres, their sums and noise. All profiles share it. Garbage gives few centres or
// none, and then no profile fits.
class TStripeProfile {
public:
  //   points   image pixels, x ascending, one per column
  //   sources  one per point, or empty: all count as sure
  //   widthPx  of the stripe; 0: not known
  //   memory   must outlive the stripe
  TStripeProfile(TPointView points, TView<TCentreSource> sources, double widthPx,
                 std::pmr::memory_resource* memory);

  const TCentres& centres() const { return kept; }
  const TMoments& moments() const { return sums; }
  double noisePx() const { return noise.sigmaPx; }
  double noiseInflation() const { return noise.inflation; }
  double widthPx() const { return width; }
  // Columns without centres. The largest hole may be a gap and does not count.
  struct THoles {
    double unseenPx = 0.0;  // root mean square of the columns by which they cut an end short
    double secondPx = 0.0;  // columns of the second largest
  };
  const THoles& holes() const { return gaps; }
  bool isUsable() const { return kept.count() >= kFewestCentres; }

  static constexpr int kFewestCentres = 24;

private:
  TCentres kept;
  TMoments sums;
  TStripeNoise noise;
  double width;
  THoles gaps;
};

inline constexpr double kMostPlatesApartDeg = 14.0;
inline constexpr double kLeastShare = 0.4;  // of the centres beside a corner that belong to its elements

struct TProfileOptions {
  double leastGain = 12.0;        // by which the profile must be cheaper than a plate or a curve
  int senses = 0;                 // 1: only grooves that open upwards in the image; -1: only downwards; 0: both
  const TFrame* frame = nullptr;  // asked where flanks end; null: geometry alone
  TView<TFlare> flares;           // that the stripe leaves out; an end beside one lies in its middle
};

// The form that explains the stripe best, in either sense, where it beats a plate and a curve.
TProfileFit fitProfile(const TStripeProfile& stripe, TTemplateView forms, const TProfileOptions& options,
                       std::pmr::memory_resource* memory);

// The form of the frame before at about the same place: no search. A fraction of the cost; not found where the
// joint has moved by more than about 12 px or looks otherwise, and then fitProfile is to be asked.
//   before  found
TProfileFit trackProfile(const TStripeProfile& stripe, const TProfileFit& before, const TProfileOptions& options,
                         std::pmr::memory_resource* memory);

struct TRankedJoint {
  TWeldType weldType = TWeldType::none;
  TProfileFit fit;
};

// Every known joint that beats a plate and a curve, the best first; ties to the earlier of V, single bevel, U,
// flare V, flare bevel, corner, lap, gap. Empty on a stripe without a joint.
TList<TRankedJoint> rankProfiles(const TStripeProfile& stripe, const TProfileOptions& options,
                                 std::pmr::memory_resource* memory);

}  // namespace weld
