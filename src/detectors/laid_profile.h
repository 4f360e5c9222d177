// What the joints of lines and arcs share: laying their forms over the stripe, and the seam that comes of it.
#pragma once

#include "detectors/seam.h"
#include "profile/profile_engine.h"

namespace weld {

inline constexpr TCheck kRoughestElement{{30, TWeldOutcome::fitTooWeak, "flank", "a flank or an arc is too rough"},
                                         "roughness of the roughest flank or arc",
                                         TRule::atMost,
                                         "px",
                                         "lineTolerancePx"};

// The form that explains the stripe best, reported with the tests of the engine. Follows the profile of the frame
// before where that is one of the forms. Nothing where none fits.
std::optional<TProfileFit> layProfile(const TFrame& frame, const TStripe& stripe, TTemplateView forms,
                                      const TPrevious& previous);

// Makes the seam of a profile: the measures as TSeamValues has them, 0 for those that the joint does not have.
void takeSeam(const TProfileFit& fit, cv::Point2f pos, TSeam& seam);

bool isFlare(const TProfileFit& fit);

// Distance of its ends, px.
double lengthOf(const TProfileElement& element);

}  // namespace weld
