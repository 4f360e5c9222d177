// Frames one after the other from image and video files.
#pragma once

#include "tools/input_list.h"

#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>

#include <limits>
#include <optional>
#include <string>

namespace tool {

struct TFrame {
  int index = 0;     // 0, 1, 2, ... over all inputs
  std::string name;  // the file as given; for a video "clip.avi#12" with the frame's number in it
  cv::Mat image;     // as stored, or as prepared from that
  cv::Size storedSize;
  bool startsSequence = false;
};

// Numbers of frames, both ends included.
struct TFrameRange {
  int first = 0;
  int last = std::numeric_limits<int>::max();
};

class TFrameSource {
public:
  // Images before the range are left unread.
  explicit TFrameSource(std::vector<TInputFile> inputFiles, TFrameRange range = {});

  // The next frame, or nothing at the end and after a stop was requested. Throws an input error for a file that
  // cannot be read.
  std::optional<TFrame> next();

  // Number of frames, where no input is a video.
  std::optional<int> frameCount() const;

private:
  std::optional<TFrame> nextOfVideo(const TInputFile& file);

  std::vector<TInputFile> files;
  std::size_t fileIndex = 0;
  TFrameRange wanted;
  int frameIndex = 0;
  cv::VideoCapture video;
  int videoFrame = 0;
};

}  // namespace tool
