#include "tools/frame_source.h"

#include "tools/cli_error.h"
#include "tools/image_file.h"
#include "tools/input_file.h"
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

TImageSize sizeOf(const cv::VideoCapture& video) {
  const auto side = [&](int property) { return static_cast<std::uint64_t>(std::max(0.0, video.get(property))); };
  return {side(cv::CAP_PROP_FRAME_WIDTH), side(cv::CAP_PROP_FRAME_HEIGHT)};
}

bool endsEarly(const cv::VideoCapture& video, int framesRead) {
  const double declared = video.get(cv::CAP_PROP_FRAME_COUNT);
  return framesRead == 0 || framesRead + std::max(1.0, declared * kFrameCountSlack) < declared;
}

}  // namespace

void TReading::add(const std::string& problem) {
  ++frames;
  if (problem.empty()) {
    return;
  }
  firstProblem = unreadable == 0 ? problem : firstProblem;
  ++unreadable;
}

void TReading::check() const {
  if (unreadable > 0) {
    throw inputError(frames == 1 ? firstProblem
                                 : std::to_string(unreadable) + " of " + std::to_string(frames) +
                                       " frames cannot be read; the first one: " + firstProblem);
  }
}

TFrameSource::TFrameSource(std::vector<TInputFile> inputFiles, TFrameRange range, double megapixels)
    : files(std::move(inputFiles)), wanted(range), maxMegapixels(megapixels) {}

std::optional<TFrame> TFrameSource::next() {
  while (fileIndex < files.size() && frameIndex <= wanted.last && !isStopRequested()) {
    std::optional<TFrame> frame = nextOf(files[fileIndex]);
    if (!frame) {
      continue;
    }
    frame->index = frameIndex++;
    if (frame->index < wanted.first) {
      continue;
    }
    frame->startsSequence = frame->startsSequence || frame->index == wanted.first;
    read.add(frame->problem);
    return frame;
  }
  if (wanted.first > 0 && frameIndex <= wanted.first && !isStopRequested()) {
    throw inputError("--frames: begins with frame " + std::to_string(wanted.first) + ", and the inputs hold " +
                     std::to_string(frameIndex));
  }
  if (!read.hasReadable()) {
    read.check();
  }
  return std::nullopt;
}

std::optional<TFrame> TFrameSource::nextReadable() {
  std::optional<TFrame> frame = next();
  while (frame && !frame->problem.empty()) {
    frame = next();
  }
  return frame;
}

// Nothing at the end of a video.
std::optional<TFrame> TFrameSource::nextOf(const TInputFile& file) {
  try {
    if (file.isVideo) {
      auto frame = nextOfVideo(file);
      fileIndex += frame ? 0 : 1;
      return frame;
    }
    const bool isWanted = frameIndex >= wanted.first;
    const cv::Mat image = isWanted ? readImage(file.path, maxMegapixels) : cv::Mat();
    ++fileIndex;
    return TFrame{0, file.path.string(), image, image.size(), file.startsSequence, {}};
  } catch (const TCliError& error) {
    const bool isWithin = video.isOpened() && videoFrame > 0;
    video.release();
    ++fileIndex;
    return TFrame{0, file.path.string(), {}, {}, file.startsSequence && !isWithin, error.what()};
  }
}

std::optional<TFrame> TFrameSource::nextOfVideo(const TInputFile& file) {
  if (!video.isOpened()) {
    requirePlainFile(file.path);
    openVideo(video, file.path);
    videoFrame = 0;
    checkPixels(file.path, sizeOf(video), maxMegapixels);
  }
  cv::Mat image;
  {
    const TDecoderSilence silence;
    video.read(image);
  }
  if (!image.empty()) {
    const int number = videoFrame++;
    return TFrame{0, file.path.string() + "#" + std::to_string(number), image.clone(), image.size(), number == 0,
                  {}};
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
