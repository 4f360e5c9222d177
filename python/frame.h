// A camera frame that Python hands over.
#pragma once

#include <pybind11/numpy.h>

#include <opencv2/core.hpp>

namespace python {

// The pixels of a numpy array, not copied; valid while the array lives. Takes uint8 of shape (H, W), (H, W, 3)
// (BGR) or (H, W, 4) (BGRA) in C order, and slices of rows and columns of such. TypeError for what is no array,
// ValueError for other arrays, in one line that says what was expected.
cv::Mat pixelsOf(const pybind11::object& frame);

// A copy of the pixels as an array of shape (H, W) or (H, W, C).
pybind11::array pixelsTo(const cv::Mat& image);

}  // namespace python
