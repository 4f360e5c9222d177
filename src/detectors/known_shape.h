// The shape of a groove as the frames before showed it: lost stretches, ghosts and blots are new in every frame,
// the part is not.
#pragma once

#include "profile/profile_fit.h"

#include <array>
#include <cstddef>

namespace weld {

inline constexpr std::array<TFeature, 5> kShapeFeatures{TFeature::leftShoulder, TFeature::rightShoulder,
                                                        TFeature::leftRoot, TFeature::rightRoot, TFeature::root};

// Where these lay in a frame; NaN: not seen.
using TShape = std::array<cv::Point2f, kShapeFeatures.size()>;

// The last frames, the latest first.
struct TKnownShapes {
  static constexpr std::size_t kMost = 7;
  std::array<TShape, kMost> all{};
  int count = 0;
};

// Whether the latest frame shows the features that most of them show; false for a form of the joint that came up
// of late.
bool isUsual(const TKnownShapes& shapes);

// Moves a feature to where most of the last frames, three or more, showed it beside the other features, but not
// where the two latest ones show it as this frame does; then measures width, depth and gap anew. What lies
// elsewhere in every frame stays, and is as unsure as it is far from where it was.
//   shapes  of the frames before; afterwards with what this frame shows
// Returns how far the root is, px; 0 for one that is known.
double keepShape(TProfileFit& fit, TKnownShapes& shapes);

}  // namespace weld
