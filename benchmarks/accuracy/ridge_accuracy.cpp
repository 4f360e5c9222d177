// Prints how well ridge centres meet the true centres of synthetic scenes and the centre lines of real frames.
//   ridge_accuracy [FOLDER OF REAL FRAMES]
#include "ridge_accuracy.h"

#include "scenes/joints.h"

#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

using ridge_accuracy::TTally;
using scenes::TJoint;
using scenes::TLook;

constexpr int kSeedsPerJoint = 5;

struct TFamily {
  const char* name;
  std::vector<TJoint> joints;
  std::function<void(TLook&)> paint;
};

// Whatever shows a stripe.
std::vector<TJoint> stripeJoints() {
  std::vector<TJoint> joints;
  for (const scenes::TDrawnJoint& row : scenes::drawnJoints()) {
    if (row.joint != TJoint::blank) joints.push_back(row.joint);
  }
  return joints;
}

const std::vector<TJoint> kJoints = stripeJoints();

const std::vector<TFamily>& sceneFamilies() {
  static const std::vector<TFamily> families{
      {"clean", kJoints, [](TLook&) {}},
      {"noise 12", kJoints,
       [](TLook& look) {
         look.noiseSigma = 12.0;
         look.background = 30.0;
       }},
      {"saturated", kJoints,
       [](TLook& look) {
         look.peak = look.rootPeak = 600.0;
         look.fwhmPx = look.rootFwhmPx = 12.0;
         look.noiseSigma = 2.0;
       }},
      {"thick 54 to thin 3, saturated",
       {TJoint::vGroove, TJoint::corner},
       [](TLook& look) {
         look.peak = look.rootPeak = 400.0;
         look.fwhmPx = 54.0;
         look.rootFwhmPx = 3.0;
         look.noiseSigma = 2.0;
       }},
      {"thin 3 to thick 54, saturated",
       {TJoint::vGroove, TJoint::corner},
       [](TLook& look) {
         look.peak = look.rootPeak = 400.0;
         look.fwhmPx = 3.0;
         look.rootFwhmPx = 54.0;
         look.noiseSigma = 2.0;
       }},
      {"dim root",
       {TJoint::vGroove, TJoint::corner},
       [](TLook& look) {
         look.peak = 500.0;
         look.fwhmPx = 16.0;
         look.rootPeak = 40.0;
         look.rootFwhmPx = 3.0;
         look.noiseSigma = 3.0;
       }},
      {"defocused", kJoints,
       [](TLook& look) {
         look.peak = look.rootPeak = 70.0;
         look.fwhmPx = look.rootFwhmPx = 35.0;
         look.background = 30.0;
         look.noiseSigma = 2.0;
       }},
      {"speckle", kJoints,
       [](TLook& look) {
         look.speckle = 0.6;
         look.noiseSigma = 3.0;
       }},
      {"ghost", kJoints,
       [](TLook& look) {
         look.ghostShare = 0.5;
         look.noiseSigma = 3.0;
       }},
      {"crossing ghost", kJoints,
       [](TLook& look) {
         look.ghostShare = 0.5;
         look.ghostOffsetPx = 0.0;
         look.ghostTiltDeg = 20.0;
         look.noiseSigma = 3.0;
       }},
      {"missing stretches, blobs, spatter", kJoints,
       [](TLook& look) {
         look.missingShare = 0.15;
         look.blobs = 4;
         look.spatter = 6;
         look.noiseSigma = 3.0;
       }},
      {"10:1 brightness, fading, texture", kJoints,
       [](TLook& look) {
         look.brightnessRatio = 10.0;
         look.fade = 0.6;
         look.background = 30.0;
         look.texture = 10.0;
         look.noiseSigma = 3.0;
       }},
      {"blank", {TJoint::blank}, [](TLook&) {}},
      {"blank, noise 12",
       {TJoint::blank},
       [](TLook& look) {
         look.background = 40.0;
         look.noiseSigma = 12.0;
       }},
      {"blank, noise 30",
       {TJoint::blank},
       [](TLook& look) {
         look.background = 90.0;
         look.noiseSigma = 30.0;
       }},
      {"blank, texture 60",
       {TJoint::blank},
       [](TLook& look) {
         look.background = 80.0;
         look.texture = 60.0;
       }},
      {"blank, texture 20, noise 6, glow",
       {TJoint::blank},
       [](TLook& look) {
         look.background = 40.0;
         look.texture = 20.0;
         look.noiseSigma = 6.0;
         look.arcGlow = 200.0;
       }},
  };
  return families;
}

ridge_accuracy::TCentreLine trueLine(const scenes::TTruth& truth) {
  ridge_accuracy::TCentreLine line;
  for (std::size_t x = 0; x < truth.centreY.size(); ++x) {
    if (!std::isnan(truth.centreY[x])) line[static_cast<int>(x)] = {truth.centreY[x]};
  }
  return line;
}

void scoreScene(const scenes::TSceneParams& params, TTally& tally) {
  const scenes::TScene scene = scenes::renderScene(params);
  const auto found = weld::extractRidgeCentres(scene.image, ridge_accuracy::kSettings, weld::heapMemory());
  ridge_accuracy::addFrame(found, trueLine(scene.truth), scene.image.cols, tally);
}

TTally scoreFamily(const TFamily& family) {
  TTally tally;
  for (const TJoint joint : family.joints) {
    for (int i = 0; i < kSeedsPerJoint; ++i) {
      scenes::TSceneParams params;
      params.joint = joint;
      params.seed = static_cast<std::uint64_t>(100 * static_cast<int>(joint) + i + 1);
      params.geometry.tiltDeg = 3.0 * (i - kSeedsPerJoint / 2);
      params.geometry.seam = {0.4 + 0.05 * i, 0.55 - 0.03 * i};
      family.paint(params.look);
      scoreScene(params, tally);
    }
  }
  return tally;
}

TTally scoreLevel(scenes::TLevel level) {
  TTally tally;
  for (const TJoint joint : kJoints) {
    for (int seed = 1; seed <= kSeedsPerJoint; ++seed) {
      scoreScene(scenes::randomScene(joint, level, static_cast<std::uint64_t>(seed)), tally);
    }
  }
  return tally;
}

void printRow(const char* name, const TTally& tally) {
  std::printf("%-44s %8d %8.2f %8.3f %8d %8.3f\n", name, tally.columns, tally.nearPercent(), tally.meanError(),
              tally.absent, tally.extraPercent());
}

}  // namespace

int main(int argc, char** argv) {
  std::printf("%-44s %8s %8s %8s %8s %8s\n", "scenes", "columns", "near %", "mean px", "absent", "false %");
  for (const TFamily& family : sceneFamilies()) printRow(family.name, scoreFamily(family));
  printRow("random scenes, clean", scoreLevel(scenes::TLevel::clean));
  printRow("random scenes, noisy", scoreLevel(scenes::TLevel::noisy));
  printRow("random scenes, harsh", scoreLevel(scenes::TLevel::harsh));
  ridge_accuracy::printFrameTable(argc > 1 ? argv[1] : DEFAULT_FRAMES);
  return 0;
}
