// A joint that a user's template describes, as a row like those of the table.
#pragma once

#include "api/joints.h"
#include "profile/own_profiles.h"

#include <string>

namespace weld {

struct TOwnJoint {
  explicit TOwnJoint(const TJointTemplate& joint);
  TOwnJoint(const TOwnJoint&) = delete;  // its rules know where it is
  TOwnJoint& operator=(const TOwnJoint&) = delete;

  std::string problem;  // of the template; then there is no joint
  TOwnProfiles profiles;
  TJoint joint;

  const TJoint* detected() const { return problem.empty() ? &joint : nullptr; }
};

}  // namespace weld
