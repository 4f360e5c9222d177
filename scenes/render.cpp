#include "scenes/groove.h"
#include "scenes/profile.h"
#include "scenes/random.h"
#include "scenes/scene.h"
#include "scenes/speckle.h"
#include "scenes/stripe.h"
#include "scenes/surroundings.h"
#include "scenes/troubles.h"

#include <cmath>
#include <limits>

namespace scenes {
namespace {

TTruth writeTruth(const TSceneParams& params, const TProfile& profile, const std::vector<TStripeColumn>& columns) {
  TTruth truth;
  truth.hasSeam =
      profile.hasSeam && cv::Rect2d(0.0, 0.0, params.size.width, params.size.height).contains(profile.seam);
  truth.seam = profile.seam;
  truth.features = profile.features;
  truth.measures = profile.measures;
  truth.centreY.assign(params.size.width, std::numeric_limits<double>::quiet_NaN());
  truth.fwhmPx.assign(params.size.width, 0.0);
  for (const TStripeColumn& column : columns) {
    if (!std::isnan(truth.centreY[column.x])) continue;
    truth.centreY[column.x] = column.row;
    truth.fwhmPx[column.x] = column.fwhmPx;
  }
  return truth;
}

cv::Point2d featureOr(const TTruth& truth, const char* name, cv::Point2d otherwise) {
  for (const TFeature& feature : truth.features) {
    if (feature.name == name) return feature.point;
  }
  return otherwise;
}

cv::Point2d groovePoint(const TTruth& truth, TWeldPosType pos) {
  const cv::Point2d left = featureOr(truth, "leftShoulder", truth.seam);
  const cv::Point2d right = featureOr(truth, "rightShoulder", truth.seam);
  if (pos == TWeldPosType::left) return left;
  if (pos == TWeldPosType::right) return right;
  const bool hasBoth = left != truth.seam && right != truth.seam;
  return pos == TWeldPosType::upper && hasBoth ? (left + right) * 0.5 : truth.seam;
}

}  // namespace

TScene renderScene(const TSceneParams& params) {
  const TProfile profile = buildProfile(params.joint, params.geometry, params.size);
  const std::vector<TStripeColumn> columns = layOutStripe(params, profile);
  const TTruth truth = writeTruth(params, profile, columns);
  const TSpeckle speckle(params.look.speckle, params.look.speckleGrainPx,
                         TRandom(params.seed, TStream::speckle, params.frame));
  cv::Mat1f light = lightSurroundings(params);
  addRoomLight(params, light);
  drawStripe(params, profile, columns, speckle, light);
  addTroubles(params, profile, columns, speckle, light);
  addBlobs(params, truth.centreY, speckle, light);
  addArc(params, profile.seam, light);
  return {exposeFrame(params, light), truth};
}

cv::Point2d seamPoint(TJoint joint, const TTruth& truth, TWeldPosType pos) {
  if (isGroove(joint)) return groovePoint(truth, pos);
  const bool isLeft = pos == TWeldPosType::left;
  if (joint == TJoint::lap && pos == TWeldPosType::upper) return featureOr(truth, "upperCorner", truth.seam);
  if (joint == TJoint::lap && pos == TWeldPosType::lower) return featureOr(truth, "lowerCorner", truth.seam);
  if (!isLeft && pos != TWeldPosType::right) return truth.seam;
  // Gap and plate keep the row of the seam at both of their ends.
  if (joint == TJoint::buttGap)
    return {featureOr(truth, isLeft ? "gapLeft" : "gapRight", truth.seam).x, truth.seam.y};
  if (joint == TJoint::plate) {
    return {featureOr(truth, isLeft ? "plateLeft" : "plateRight", truth.seam).x, truth.seam.y};
  }
  return truth.seam;
}

}  // namespace scenes
