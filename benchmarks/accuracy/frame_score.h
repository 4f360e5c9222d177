// What a tracker gives on a folder of real frames.
#pragma once

#include "frame_families.h"

namespace accuracy {

struct TPointScore {
  int right = 0;                 // found within the tolerance of a label
  int wrong = 0;                 // found elsewhere, or where there is no such joint
  int refused = 0;               // not found, although labelled
  int empty = 0;                 // rightly not found
  std::vector<double> errorsPx;  // of the found ones, to the nearest label
};

struct TRunScore {
  int frames = 0;
  int found = 0;
  int named = 0;                       // not found, with a groove in the sentence that says why
  std::vector<double> columnPercents;  // of the weak line, within 3 px, frame by frame
  int quietSteps = 0;                  // neighbours whose weak line stays where it is, both found
  int jumpedToes = 0;                  // of them with a shoulder that moves by more than 5 px
};

TPointScore scorePoints(const std::filesystem::path& root, const TPointRow& row, const TTrackerOptions& options);
TRunScore scoreRun(const std::filesystem::path& root, const TRunRow& row, const TTrackerOptions& options);

// NaN without a value.
double medianOf(std::vector<double> values);

}  // namespace accuracy
