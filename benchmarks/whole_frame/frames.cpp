#include "frames.h"

#include "timing.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

constexpr double kWrongPx = 3.0;

scenes::TLook lookOf(TScenery scenery, scenes::TLook look) {
  look.fwhmPx = look.rootFwhmPx = 10.0;
  switch (scenery) {
    case TScenery::dark:
      break;
    case TScenery::bright:
      look.background = 60.0;
      look.noiseSigma = 5.0;
      break;
    case TScenery::spatter:
      look.noiseSigma = 3.0;
      look.spatter = 12;
      look.blobs = 4;
      look.arcGlow = 120.0;
      break;
    case TScenery::texture:
      look.background = 60.0;
      look.texture = 60.0;
      look.noiseSigma = 12.0;
      break;
  }
  return look;
}

}  // namespace

TFrame makeFrame(scenes::TJoint joint, TScenery scenery, cv::Size size) {
  scenes::TSceneParams params = scenes::randomScene(joint, scenes::TLevel::clean, 1, size);
  params.look = lookOf(scenery, params.look);
  TFrame frame{scenes::renderScene(params), scenes::weldParamsFor(joint), {}};
  frame.previous = detect(frame.scene.image, frame.params, {});
  return frame;
}

std::string nameOf(TScenery scenery) {
  switch (scenery) {
    case TScenery::dark:
      return "dark";
    case TScenery::bright:
      return "bright";
    case TScenery::spatter:
      return "spatter";
    default:
      return "texture";
  }
}

TWeldLineRes detect(const cv::Mat& image, TWeldParams params, const TWeldLineRes& previous) {
  return detectWeldLineViaTracking(image, params, previous);
}

TAccuracy rate(const std::vector<cv::Point2f>& centres, const scenes::TTruth& truth) {
  const auto isVisible = [](double y) { return !std::isnan(y); };
  const auto visible = static_cast<double>(std::count_if(truth.centreY.begin(), truth.centreY.end(), isVisible));
  std::vector<double> errors;
  for (const cv::Point2f c : centres) {
    const double trueY = truth.centreY[static_cast<std::size_t>(c.x)];
    if (isVisible(trueY)) errors.push_back(std::abs(static_cast<double>(c.y) - trueY));
  }
  const auto wrong = std::count_if(errors.begin(), errors.end(), [](double error) { return error > kWrongPx; });
  return {median(errors), 100.0 * static_cast<double>(errors.size()) / visible,
          100.0 * static_cast<double>(wrong) / visible};
}

}  // namespace bench
