// What makes an input a finding besides a crash and a sanitizer's report.
#pragma once

#include <opencv2/core.hpp>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

// Ends the program with the text when the promise is broken.
inline void require(bool isKept, const char* promise) {
  if (isKept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

// Runs a call that may raise cv::Exception only where its contract says so.
template <typename TCall>
void runCall(bool mayThrow, TCall call) {
  try {
    call();
  } catch (const cv::Exception&) {
    require(mayThrow, "cv::Exception only where the contract names it");
  }
}

// True for what the detectors read: two dimensions, 8 bits, and 1, 3 or 4 channels.
inline bool isReadable(const cv::Mat& image) {
  const int type = image.type();
  return image.dims == 2 && (type == CV_8UC1 || type == CV_8UC3 || type == CV_8UC4);
}

// One thread, and no text for exceptions that are expected.
inline void quietOpenCv() {
  cv::setNumThreads(1);
  cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return 0; });
}

}  // namespace fuzz
