#include "api/own_joint.h"

#include "detectors/own_joint.h"

namespace weld {

TOwnJoint::TOwnJoint(const TJointTemplate& description) : problem(findTemplateProblem(description)) {
  if (!problem.empty()) return;
  profiles = makeProfiles(description);
  joint.info.name = joint.info.shortName = profiles.joint.name.c_str();
  joint.rules = profileRules([this](const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
    return findOwnJoint(profiles, frame, stripe, previous);
  });
}

}  // namespace weld
