#include "tools/shared_options.h"

#include "tools/cli_error.h"
#include "tools/input_list.h"
#include "tools/names.h"
#include "tools/number_checks.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace tool {

void addFrameOptions(CLI::App& command, TFrameOptions& options) {
  command.add_option("INPUT", options.inputs, "Image files, folders, patterns (frame_%03d.png), video files")
      ->required();
  command.add_option("--frames", options.range, "Only these of all frames, first:last, counted from 0");
  addPreparationOptions(command, options);
  command.add_option("--max-megapixels", options.maxMegapixels, "Refuse larger images, millions of pixels")
      ->check(aboveZero())
      ->capture_default_str();
}

void addPreparationOptions(CLI::App& command, TFrameOptions& options) {
  command.add_option("--roi", options.region, "Cut the stored image to x,y,width,height first");
  command.add_option("--rotate", options.rotation, "Then turn it clockwise, degrees: 0, 90, 180, 270");
  command.add_option("--channel", options.channel,
                     "Then take a channel, usually grey: grey, red, green, blue, red-excess");
}

void addParamOptions(CLI::App& command, TParamSource& source) {
  command.add_option("--type", source.type, "Joint, by name or number: " + detectorTypeNames());
  command.add_option("--position", source.position, "Welding position: " + positionNames());
  command.add_option("--preset", source.preset, "Angles of a corner: " + presetNames());
  command.add_option("--job,--params", source.file, "Job or parameter file, as params writes them");
  command.add_option("--set", source.values, "One parameter as name=value; may be repeated")
      ->allow_extra_args(false);
}

TPreparation preparationOf(const TFrameOptions& options, const TPreparation& base) {
  TPreparation preparation = base;
  if (!options.channel.empty()) {
    preparation.channel = parseChannel(options.channel);
  }
  if (!options.rotation.empty()) {
    preparation.rotationDeg = parseRotation(options.rotation);
  }
  if (!options.region.empty()) {
    preparation.region = parseRegion(options.region);
  }
  return preparation;
}

TFrameSource framesOf(const TFrameOptions& options) {
  TFrameRange range;
  if (!options.range.empty()) {
    constexpr double kMostFrames = 1e9;
    const std::vector<double> ends = parseNumbers(options.range, ':', 2);
    const bool isRange = ends.size() == 2 && ends[0] >= 0.0 && ends[0] <= ends[1] && ends[1] < kMostFrames &&
                         ends[0] == std::trunc(ends[0]) && ends[1] == std::trunc(ends[1]);
    if (!isRange) {
      throw usageError("--frames: '" + options.range + "' is no range; write first:last, for example 800:830");
    }
    range = {static_cast<int>(ends[0]), static_cast<int>(ends[1])};
  }
  return TFrameSource(listInputs(options.inputs), range, options.maxMegapixels);
}

}  // namespace tool
