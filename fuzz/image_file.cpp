// Bytes of any kind as an image file of zelweld, cut, turned and reduced to one channel as asked.
#include "tools/image_file.h"
#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "fuzz/verdict.h"
#include "tools/cli_error.h"
#include "tools/image_prep.h"

#include <string>

namespace {

using fuzz::require;

tool::TPreparation takePreparation(fuzz::TInput& input) {
  tool::TPreparation preparation;
  preparation.rotationDeg = 90 * input.takeBelow(4);
  preparation.channel = static_cast<tool::TChannel>(input.takeBelow(5));
  if (!input.takeFlag()) return preparation;
  std::string region;
  for (int i = 0; i < 4; ++i) region += (i > 0 ? "," : "") + std::to_string(input.takeInt());
  preparation.region = tool::parseRegion(region);
  return preparation;
}

void readAndPrepare(fuzz::TInput& input, fuzz::TMemoryFile& file) {
  const tool::TPreparation preparation = takePreparation(input);
  const std::vector<std::uint8_t> bytes = input.takeRest();
  file.write(bytes.data(), bytes.size());
  const cv::Mat image = tool::readImage(file.path());
  require(image.dims == 2 && !image.empty(), "an image");
  require(image.type() == CV_8UC1 || image.type() == CV_8UC3, "8-bit grey or BGR");
  const cv::Mat prepared = tool::prepareImage(image, preparation, "the image");
  require(prepared.type() == CV_8UC1 && !prepared.empty(), "an image to search");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::quietOpenCv();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::TMemoryFile file;
  fuzz::TInput input(data, size);
  try {
    readAndPrepare(input, file);
  } catch (const tool::TCliError& error) {
    require(error.exitCode == tool::TExit::usage || error.exitCode == tool::TExit::input, "a user's error");
  }
  return 0;
}
