// What the search by contrast finds on rendered plates, cell by cell.
#pragma once

#include "scenes/plate.h"
#include "zelContrast.h"

#include <cstdint>
#include <string>
#include <vector>

namespace accuracy {

// How a plate is searched.
enum class TAskedSeam { own, automatic, near };

// A figure's share of frames that is wanted, and the worst that is let pass where that is known not to be reached.
struct TWantedShare {
  double percent = 0.0;
  double knownPercent = 0.0;
};

// One cell of the table: plates of some kinds at one level, asked for in one way.
struct TContrastCell {
  std::string name;
  std::vector<scenes::TPlateSeam> seams;
  TAskedSeam asked = TAskedSeam::own;
  TSeamPolarity polarity = TSeamPolarity::dark;  // of plates without a seam
  scenes::TLevel level = scenes::TLevel::clean;
  TWantedShare found = {};  // at least; of plates without a seam unused
  TWantedShare wrong = {};  // at most
  double medianPx = 0.0;
};

struct TContrastFigures {
  int plates = 0;
  int found = 0;                 // with confidence 0.5 and the seam within 5 px at the median, most of it covered
  int part = 0;                  // right, but less than 70 % of the visible seam
  int wrong = 0;                 // with confidence 0.5 and elsewhere
  std::vector<double> errorsPx;  // median distance of each found line

  // Lines of every confidence, in ten bins.
  int lines[10] = {};
  int right[10] = {};
  double confidence[10] = {};
};

const std::vector<TContrastCell>& contrastCells();

// The figures of every cell, over so many plates of each kind from that seed on.
std::vector<TContrastFigures> measureContrast(int plates, std::uint64_t seed, int threads);

// Prints the table of the real frames below that folder. True when its bounds are held.
bool printContrastFrames(const std::string& framesFolder);

}  // namespace accuracy
