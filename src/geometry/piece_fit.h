// The line of one straight piece of the stripe.
#pragma once

#include "zelWeldDetect.h"

#include "support/scratch.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

inline constexpr float kPieceFitTolPx = 3.0F;  // distance tolerance of every piece fit

// A piece through the points: robust line, inliers within fitTolPx, residuals, ends rounded to whole pixels.
// Fewer than 10 points, or no line: a piece that holds the points and nothing else.
TLent<TStripePiece> fitPiece(TLentList<cv::Point2f> points, float fitTolPx, TScratch* scratch = nullptr);

// Adds points to a piece in two steps. The first leaves an outline, what a merge asks of a piece: its ends and
// that it is fitted, where that is sure without the fit, otherwise the points alone. Either way the second
// completes it.
void absorbPiece(const std::vector<cv::Point2f>& points, float fitTolPx, TStripePiece& piece,
                 TScratch* scratch = nullptr);
void completePiece(float fitTolPx, TStripePiece& piece, TScratch* scratch = nullptr);

// Distance between the two ends of a piece, px.
double pieceLength(const TStripePiece& piece);

// Angle of a piece, degrees: taken in single precision and widened.
double pieceAngleDeg(const TStripePiece& piece);

// The points of one piece followed by those of the other.
TLentList<cv::Point2f> joinPoints(const std::vector<cv::Point2f>& first, const std::vector<cv::Point2f>& second,
                                  TScratch* scratch = nullptr);

// Removes a piece from the list; its memory goes back.
void removePiece(std::vector<TStripePiece>& pieces, std::size_t index, TScratch* scratch);

}  // namespace weld
