// Comparison of ridge centres with a known or second-opinion centre line.
#pragma once

#include "stripe/ridge/ridge.h"

#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace ridge_accuracy {

inline constexpr weld::TRidgeSettings kSettings{6.0, 30.0};
inline constexpr double kNearPx = 3.0;

// Rows of the reference line per image column; a column may hold several.
using TCentreLine = std::map<int, std::vector<double>>;

struct TTally {
  int columns = 0;  // of the reference
  int near = 0;     // of those, columns with a centre within kNearPx
  int absent = 0;   // of those, columns without a centre
  int extra = 0;    // centres in columns without reference
  int scored = 0;   // image columns looked at
  double absError = 0.0;

  double nearPercent() const { return columns > 0 ? 100.0 * near / columns : 0.0; }
  double extraPercent() const { return scored > 0 ? 100.0 * extra / scored : 0.0; }
  double meanError() const { return near > 0 ? absError / near : 0.0; }
};

inline double distanceTo(const std::vector<double>& rows, double y) {
  double best = HUGE_VAL;
  for (const double row : rows) best = std::min(best, std::abs(row - y));
  return best;
}

inline void addFrame(const weld::TRidgePoints& found, const TCentreLine& reference, int imageColumns,
                     TTally& tally) {
  tally.scored += imageColumns;
  tally.columns += static_cast<int>(reference.size());
  tally.absent += static_cast<int>(reference.size());
  for (const weld::TRidgePoint& ridge : found) {
    const auto rows = reference.find(static_cast<int>(ridge.point.x));
    if (rows == reference.end()) {
      ++tally.extra;
      continue;
    }
    --tally.absent;
    const double error = distanceTo(rows->second, static_cast<double>(ridge.point.y));
    if (error > kNearPx) continue;
    ++tally.near;
    tally.absError += error;
  }
}

// Table of the real camera frames in that folder; says so when the folder is absent.
void printFrameTable(const std::string& framesFolder);

}  // namespace ridge_accuracy
