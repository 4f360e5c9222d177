#include "tools/kept_frames.h"

#include "tools/cli_error.h"
#include "tools/progress.h"
#include "tools/stop_signal.h"

namespace tool {
namespace {

constexpr std::size_t kMostBytes = std::size_t{4} << 30;

}  // namespace

TKeptFrames keepFrames(const TFrameOptions& options, const TPreparation& preparation) {
  TFrameSource source = framesOf(options);
  TProgress progress(source.frameCount());
  std::vector<TFrame> frames;
  std::size_t bytes = 0;
  while (auto frame = source.next()) {
    *frame = prepared(std::move(*frame), preparation);
    if (!frame->image.isContinuous()) {
      frame->image = frame->image.clone();  // lets go of what a region was cut from
    }
    bytes += frame->image.total() * frame->image.elemSize();
    if (bytes > kMostBytes) {
      throw inputError(std::to_string(frames.size()) + " frames fill 4 GiB of memory; take fewer with --frames");
    }
    frames.push_back(std::move(*frame));
    progress.draw(static_cast<int>(frames.size()));
  }
  throwIfStopRequested();
  return {std::move(frames), source.reading()};
}

}  // namespace tool
