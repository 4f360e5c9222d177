// The page of a comparison: figures, reasons, and the frames that differ side by side.
#pragma once

#include "tools/compare.h"
#include "tools/picture_shelf.h"

#include <string>

namespace tool {

// Pictures of the frames that differ, as many as fit: those that one side alone found, and those whose seams lie
// apart.
class TComparedPictures {
public:
  TComparedPictures();

  // The frame that both sides took last.
  void add(const TComparison& both, const TComparedFrame& frame);

  const TPictureShelf& shelf() const { return kept; }

private:
  TPictureShelf kept;
};

// The whole page.
std::string comparePage(const TComparison& both, const TComparedPictures& pictures);

}  // namespace tool
