// The public records of the toolkit, from those that lie in the memory of a frame.
#pragma once

#include "geometry/piece.h"
#include "zelWeldToolkit.h"

namespace weld {

inline TLinePara toLinePara(const TFittedLine& line) {
  return {line.k, line.b, line.isValid, line.inlierRatio, toVector(line.inliers)};
}

inline TStripePiece toStripePiece(const TPiece& piece) {
  TStripePiece record;
  record.pts = toVector(piece.pts);
  record.fitPts = toVector(piece.fitPts);
  record.startPt = piece.startPt;
  record.endPt = piece.endPt;
  record.lineState = piece.isFitted ? 1 : 0;
  record.k = piece.k;
  record.b = piece.b;
  record.maxDist = piece.maxDist;
  record.meanDist = piece.meanDist;
  record.isFitted = piece.isFitted;
  return record;
}

}  // namespace weld
