// Joints that users describe, as forms for the engine.
#pragma once

#include "profile/builtin_profiles.h"
#include "profile/own_structure.h"

#include <string>
#include <vector>

namespace weld {

// What the elements and gaps of a form are in its template, by index.
struct TFormSource {
  bool isMirrored = false;
  std::array<std::size_t, kMostElements> elementOf{};
  std::array<std::size_t, kMostElements - 1> gapOf{};  // kNoGap: none
};

struct TOwnProfiles {
  TJointTemplate joint;
  std::vector<TProfileTemplate> forms;
  std::vector<TFormSource> sources;  // of the forms

  TTemplateView view() const { return {forms.data(), forms.size()}; }
};

// The forms allow a little more than the template: what just fails is to be told from what is not there at all.
//   joint  without a problem
TOwnProfiles makeProfiles(const TJointTemplate& joint);

}  // namespace weld
