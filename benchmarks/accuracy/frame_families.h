// The families of real frames: what is asked of each, with the settings that a user would take from the
// documentation, and the bounds that are held.
#pragma once

#include "frame_folder.h"
#include "zelWeldDetect.h"

#include <array>
#include <optional>

namespace accuracy {

// What is looked for, and how.
struct TAsked {
  TWeldType joint;
  TWeldPosType pos = TWeldPosType::centre;
  const char* settings = "";  // as for --set, with blanks between: "minGapPx=2 lineTolerancePx=3"
  TPreparation preparation = {};
};

// A labelled point of every frame of a folder.
struct TPointRow {
  const char* folder;
  TAsked asked;
  std::vector<const char*> labels;  // any of them counts; none: the frames show no such joint
  int leastRight;
  int mostWrong;
  std::optional<TFeature> feature = std::nullopt;  // instead of the seam point
  bool isSequence = false;                         // the frames follow each other
  bool knowsAllJoints = false;                     // frames without a label show no such joint
  double toleranceFactor = 1.0;
  std::vector<const char*> files = {};  // that count; none: all
};

// A run of frames without labels, with the weak lines of its author beside it.
struct TRunRow {
  const char* folder;
  TAsked asked;
  std::array<int, 2> frames;  // numbers of the first and the last one that count
  int leastFound;
  int mostFound;
  double leastColumnsPercent;  // within 3 px of the weak lines
};

const std::vector<TPointRow>& pointRows();
const std::vector<TRunRow>& runRows();

// The parameters of a row; raises std::invalid_argument for a setting that the joint does not have.
TWeldParams paramsOf(const TAsked& asked);

}  // namespace accuracy
