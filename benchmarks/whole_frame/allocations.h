// Counts heap allocations of the whole program: operator new, and the pixels of every cv::Mat.
#pragma once

#include <functional>

namespace bench {

int countAllocations(const std::function<void()>& work);

}  // namespace bench
