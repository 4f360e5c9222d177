// What frames leave to the next one, as bytes that another tracker of the same joint takes over.
#pragma once

#include "api/seam_gate.h"
#include "detectors/known_shape.h"
#include "profile/builtin_profiles.h"
#include "profile/profile_fit.h"
#include "stripe/break_path.h"
#include "zelWeldTypes.h"

#include <optional>
#include <string>
#include <string_view>

namespace weld {

struct TTrackerMemory {
  TWeldLineRes last;
  std::optional<TProfileFit> profile;
  bool wasFlush = false;
  TBreakPlaces places;
  TKnownShapes shapes;
  int bestColumns = 0;
  int edgePairColumns = 0;
  TJumpMemory jumps;
  int heldFrames = 0;
};

// Equal bytes stand for memories that nothing can tell apart.
//   forms  that a profile may be of
std::string memoryBytes(TTrackerMemory memory, TTemplateView forms);

// Nothing for bytes that memoryBytes of this version has not made, or that were changed since.
std::optional<TTrackerMemory> memoryOf(std::string_view bytes, TTemplateView forms);

}  // namespace weld
