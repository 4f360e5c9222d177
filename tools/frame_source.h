// Frames one after the other from image and video files.
#pragma once

#include "tools/image_file.h"
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
  cv::Mat image;     // as stored, or as prepared from that; empty when it cannot be read
  cv::Size storedSize;
  bool startsSequence = false;
  std::string problem = {};  // why it cannot be read
};

// How many frames of a run could be read.
struct TReading {
  int frames = 0;
  int unreadable = 0;
  std::string firstProblem;

  void add(const std::string& problem);
  bool hasReadable() const { return unreadable < frames; }

  // Throws an input error when any frame could not be read. A run calls it when all else is done.
  void check() const;
};

// Numbers of frames, both ends included.
struct TFrameRange {
  int first = 0;
  int last = std::numeric_limits<int>::max();
};

class TFrameSource {
public:
  // Images before the range are left unread.
  explicit TFrameSource(std::vector<TInputFile> inputFiles, TFrameRange range = {},
                        double megapixels = kMaxMegapixels);

  // The next frame, or nothing at the end and after a stop was requested. A file that cannot be read gives a frame
  // without an image. Throws an input error at the end when not one frame could be read.
  std::optional<TFrame> next();

  // The next frame that has an image.
  std::optional<TFrame> nextReadable();

  // Number of frames, where no input is a video.
  std::optional<int> frameCount() const;

  const TReading& reading() const { return read; }

private:
  std::optional<TFrame> nextOf(const TInputFile& file);
  std::optional<TFrame> nextOfVideo(const TInputFile& file);

  std::vector<TInputFile> files;
  TFrameRange wanted;
  double maxMegapixels;
  std::size_t fileIndex = 0;
  int frameIndex = 0;
  TReading read;
  cv::VideoCapture video;
  int videoFrame = 0;
};

}  // namespace tool
