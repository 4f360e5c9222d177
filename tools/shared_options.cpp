#include "tools/shared_options.h"

#include "tools/names.h"

namespace tool {

void addFrameOptions(CLI::App& command, TFrameOptions& options) {
  command.add_option("INPUT", options.inputs, "Image files, folders, patterns (frame_%03d.png), video files")
      ->required();
  command.add_option("--roi", options.region, "Cut the stored image to x,y,width,height first");
  command.add_option("--rotate", options.rotation, "Then turn it clockwise by 90, 180 or 270 degrees");
  command.add_option("--channel", options.channel, "Then take grey, red, green, blue or red-excess")
      ->capture_default_str();
}

void addParamOptions(CLI::App& command, TParamSource& source) {
  command.add_option("--type", source.type, "Joint, by name or number: " + detectorTypeNames());
  command.add_option("--position", source.position, "Welding position: " + positionNames());
  command.add_option("--preset", source.preset, "Angles of a corner: " + presetNames());
  command.add_option("--params", source.file, "Parameter file, as params --format json writes it");
  command.add_option("--set", source.values, "One parameter as name=value; may be repeated")
      ->allow_extra_args(false);
}

TPreparation preparationOf(const TFrameOptions& options) {
  TPreparation preparation;
  preparation.channel = parseChannel(options.channel);
  if (!options.rotation.empty()) {
    preparation.rotationDeg = parseRotation(options.rotation);
  }
  if (!options.region.empty()) {
    preparation.region = parseRegion(options.region);
  }
  return preparation;
}

}  // namespace tool
