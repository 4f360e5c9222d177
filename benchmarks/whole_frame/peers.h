// What a user would otherwise write to find the stripe: four usual methods in straightforward OpenCV code. Each
// gives at most one centre per column, left to right; columns without enough contrast are left out.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace bench {

using TCentres = std::vector<cv::Point2f>;

// The brightest pixel of the column, then the grey-weighted centre of what is at least half as bright around it.
TCentres findByMaximum(const cv::Mat& grey);

// The same on the frame smoothed by a Gaussian of 7 x 7 px.
TCentres findByBlurredMaximum(const cv::Mat& grey);

// Half way between the steepest rise of the column (Sobel, 3 x 3) and the steepest fall below it.
TCentres findBySobel(const cv::Mat& grey);

// The ridge point of the column with the strongest curvature across: Steger, An unbiased detector of curvilinear
// structures, IEEE Transactions on Pattern Analysis and Machine Intelligence 20, 1998. Sigma 3.5 px suits stripes
// about 10 px thick.
TCentres findBySteger(const cv::Mat& grey);

}  // namespace bench
