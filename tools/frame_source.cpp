#include "tools/frame_source.h"

#include "tools/cli_error.h"
#include "tools/image_file.h"
#include "tools/stop_signal.h"

#include <algorithm>
#include <utility>

namespace tool {
namespace {

// Container headers give the number of frames, or an estimate from length and rate that may be off by this
// share; a video that ends earlier than that is cut off.
constexpr double kFrameCountSlack = 0.05;

// Readers of files only: left to itself, OpenCV also looks for cameras when a file is no video.
constexpr cv::VideoCaptureAPIs kVideoReaders[] = {cv::CAP_FFMPEG, cv::CAP_OPENCV_MJPEG};

void openVideo(cv::VideoCapture& video, const std::filesystem::path& path) {
  const TDecoderSilence silence;
  for (const cv::VideoCaptureAPIs reader : kVideoReaders) {
    try {
      if (video.open(path.string(), reader)) {
        return;
      }
    } catch (const cv::Exception&) {
      continue;  // the next reader may know the file
    }
  }
  throw inputError(path.string() + ": no video that can be read");
}

bool endsEarly(const cv::VideoCapture& video, int framesRead) {
  const double declared = video.get(cv::CAP_PROP_FRAME_COUNT);
  return framesRead == 0 || framesRead + std::max(1.0, declared * kFrameCountSlack) < declared;
}

}  // namespace

TFrameSource::TFrameSource(std::vector<TInputFile> inputFiles, TFrameRange range)
    : files(std::move(inputFiles)), wanted(range) {}

std::optional<TFrame> TFrameSource::next() {
  while (fileIndex < files.size() && frameIndex <= wanted.last && !isStopRequested()) {
    const TInputFile& file = files[fileIndex];
    if (!file.isVideo) {
      ++fileIndex;
      const int index = frameIndex++;
      if (index < wanted.first) {
        continue;
      }
      const cv::Mat image = readImage(file.path);
      return TFrame{index, file.path.string(), image, image.size(), file.startsSequence || index == wanted.first};
    }
    if (auto frame = nextOfVideo(file)) {
      if (frame->index < wanted.first) {
        continue;
      }
      frame->startsSequence = frame->startsSequence || frame->index == wanted.first;
      return frame;
    }
    ++fileIndex;
  }
  if (wanted.first > 0 && frameIndex <= wanted.first && !isStopRequested()) {
    throw inputError("--frames: begins with frame " + std::to_string(wanted.first) + ", and the inputs hold " +
                     std::to_string(frameIndex));
  }
  return std::nullopt;
}

std::optional<TFrame> TFrameSource::nextOfVideo(const TInputFile& file) {
  if (!video.isOpened()) {
    openVideo(video, file.path);
    videoFrame = 0;
  }
  cv::Mat image;
  {
    const TDecoderSilence silence;
    video.read(image);
  }
  if (!image.empty()) {
    const int number = videoFrame++;
    return TFrame{frameIndex++, file.path.string() + "#" + std::to_string(number), image.clone(), image.size(),
                  number == 0};
  }
  if (endsEarly(video, videoFrame)) {
    throw inputError(file.path.string() + ": the video is cut off after " + std::to_string(videoFrame) +
                     " frames");
  }
  video.release();
  return std::nullopt;
}

std::optional<int> TFrameSource::frameCount() const {
  const bool hasVideo =
      std::any_of(files.begin(), files.end(), [](const TInputFile& file) { return file.isVideo; });
  const int end = static_cast<int>(std::min<std::size_t>(files.size(), static_cast<std::size_t>(wanted.last) + 1));
  return hasVideo ? std::nullopt : std::make_optional(std::max(0, end - wanted.first));
}

}  // namespace tool
