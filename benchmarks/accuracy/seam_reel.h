// One rendered scene or sequence, and what every tracker that it is shown to makes of it.
#pragma once

#include "scenes/joints.h"
#include "scenes/random_decoy.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace accuracy {

// A joint, or a frame without one.
struct TSubject {
  scenes::TJoint joint = scenes::TJoint::blank;
  std::optional<scenes::TDecoy> decoy;
};
std::string nameOf(const TSubject& subject);

enum class TShow {
  scene,     // seen once
  sequence,  // drifts and jitters
  flash      // a short sequence that an arc flash interrupts, in which a scrap of the stripe remains
};

struct TReel {
  TSubject subject;
  scenes::TLevel level = scenes::TLevel::clean;
  std::uint64_t seed = 0;
  TShow show = TShow::scene;
  int frames = 1;
};

inline constexpr int kFlashAtFrame = 8;
inline constexpr int kFlashFrames = 2;
inline constexpr int kFramesOfFlash = 24;

// A tracker that the reel is shown to.
struct TQuestion {
  scenes::TJoint asked = scenes::TJoint::blank;
  bool isExact = false;  // with the plain rules' options
};

struct TPointAnswer {
  double errorPx = 0.0;
  double sigmaPx = 0.0;  // as claimed
  bool isMain = false;   // the point that the joint is followed by
};

struct TAnswer {
  bool isFound = false;                                          // in this frame: a held seam is not
  double errorPx = 0.0;                                          // of the main point
  double confidence = std::numeric_limits<double>::quiet_NaN();  // without a measurement: none
  std::vector<TPointAnswer> points;                              // those that are measured and known
};

struct TAsked {
  TQuestion question;
  std::vector<TAnswer> frames;
};

struct TReelAnswers {
  std::vector<TAsked> asked;
  std::vector<TWeldType> recognised;  // in a scene seen once, best first
};

// Asks for the reel's own joint under the default options and, where there are plain rules, under theirs; then for
// every joint that the reel does not show, in the first third of a joint's sequence. A flash is shown to the
// default tracker of its own joint alone. A pure function of the reel.
TReelAnswers playReel(const TReel& reel);

// The grooves are ours alone: there are no plain rules for them.
bool isGroove(scenes::TJoint joint);

}  // namespace accuracy
