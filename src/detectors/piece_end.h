// What lap and plate share: their segmentation, and the corner at the end of a straight piece.
#pragma once

#include "geometry/groove.h"
#include "geometry/piece.h"
#include "geometry/segmentation.h"

#include <optional>

namespace weld {

inline constexpr TMergeLimits kPlateMergeLimits{10.0F, 200.0F, 20.0F};

// One end of a straight piece, and what its corner is found with.
struct TPieceEnd {
  const char* name = "";     // in traces
  cv::Point roughPos;        // where the piece ends
  int bandRow = 0;           // outside the middle of the image the line is refitted near the end
  TPointView pointsNearEnd;  // what it is refitted from
};

// The last points of a list, at most 100.
TPointView lastPoints(TPointView points);

// The first points of a list, at most 100 and never the last one.
TPointView firstPoints(TPointView points);

// Corner of the piece at that end: the end moved along the line to where the lit stripe stops. Nothing when the
// refit fails; the marker (-1, -1) when the line has too little support.
std::optional<cv::Point2f> refinePieceEnd(const TFrame& frame, const TPiece& piece, const TPieceEnd& end,
                                          TPointView supportPts, const TGrooveRule& rule);

}  // namespace weld
