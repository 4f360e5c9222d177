// The two families of oblique strips that cover every direction: steep ones and flat ones.
#pragma once

#include "contrast/strips.h"
#include "zelContrast.h"

#include <vector>

namespace weld {

// What one family searches.
struct TFamily {
  TGreyView view;
  bool isFlat = false;
  TFieldBand band;
  TShears shears;
};

// Angle between two undirected directions, degrees, 0..90.
double angleBetween(double deg, double other);

// Those that have strips in the directions that are asked for; in a band the one that lies along it.
//   search  in range.
TList<TFamily> familiesOf(const cv::Mat& grey, const TContrastSearch& search, TMemory* memory);

}  // namespace weld
