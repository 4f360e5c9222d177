// The lists that a frame works with, in its own memory.
#pragma once

#include "support/view.h"

#include <opencv2/core.hpp>

#include <memory_resource>
#include <vector>

namespace weld {

using TMemory = std::pmr::memory_resource;

inline TMemory* heapMemory() {
  return std::pmr::new_delete_resource();
}

// Copies go to the heap, and so does what is moved into a list of other memory: hand lists on by moving them into
// new ones.
template <typename T>
using TList = std::pmr::vector<T>;

// A list of the heap.
template <typename T>
std::vector<T> toVector(const TList<T>& list) {
  return {list.begin(), list.end()};
}

using TPoints = TList<cv::Point2f>;
using TPointView = TView<cv::Point2f>;
using TIntPointView = TView<cv::Point>;

}  // namespace weld
