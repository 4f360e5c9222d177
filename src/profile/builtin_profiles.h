// The joints that the library knows, as templates.
#pragma once

#include "profile/profile_template.h"
#include "support/view.h"

namespace weld {

using TTemplateView = TView<TProfileTemplate>;

// Forms of a joint, the plainest first. Empty for types without a profile.
//   weldType  0 gap, 1 lap, 2 corner, 4 plate, 5 U, 6 V, 7 single bevel, 8 flare V, 9 flare bevel
TTemplateView profilesOf(TWeldType weldType);

// What a stripe without a joint looks like: a plate, a curved plate.
TTemplateView nullProfiles();

}  // namespace weld
