// Writes the files that fuzzing starts from, one folder per fuzz target: make_seeds FOLDER
#include "fuzz/input.h"
#include "fuzz/seed.h"
#include "fuzz/verdict.h"
#include "scenes/joints.h"
#include "scenes/plate.h"
#include "tools/param_json.h"

#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using fuzz::TSeed;
using fuzz::TStroke;
using scenes::TJoint;

const cv::Size kSceneSize{240, 128};
const cv::Size kPictureSize{48, 32};  // of image files, where the picture does not matter
const cv::Size kStrokeSize{320, 240};
constexpr int kPointsPerRun = 100;
constexpr int kToolkitPoints = 5000;  // as in toolkit.cpp

class TFolder {
public:
  explicit TFolder(const fs::path& folder) : path(folder) { fs::create_directories(folder); }

  void add(const std::vector<std::uint8_t>& bytes) {
    std::ofstream file(path / ("seed_" + std::to_string(count++)), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    fuzz::require(file.good(), "a folder that takes the seeds");
  }
  void add(const std::string& text) { add(std::vector<std::uint8_t>(text.begin(), text.end())); }

private:
  fs::path path;
  int count = 0;
};

// A seed that reads as something else than was put would be worthless without anybody noticing.
void checkSeed(const TSeed& seed, const TWeldParams& params, const cv::Mat& image) {
  const std::vector<std::uint8_t> bytes = seed.bytes();
  fuzz::TInput input(bytes.data(), bytes.size());
  input.takeBelow(fuzz::kWays);
  const TWeldParams read = fuzz::takeParams(input);
  bool isSame = read.weldType == params.weldType && read.weldPosType == params.weldPosType;
  for (const TWeldParameter& field : fuzz::readFields())
    isSame &= field.value.get(read) == field.value.get(params);
  isSame &= !fuzz::takeResult(input, 1).isFound && !input.takeFlag();
  const fuzz::TFrame frame = fuzz::takeFrame(input);
  isSame &= frame.image.size() == image.size() && cv::norm(frame.image, image, cv::NORM_INF) == 0.0;
  fuzz::require(isSame, "seeds that read as they were put");
}

// The same frame four times.
template <typename TPutFrame>
TSeed makeSequence(int way, const TWeldParams& params, TPutFrame putFrame) {
  TSeed seed;
  seed.putBelow(way, fuzz::kWays);
  fuzz::putParams(seed, params);
  fuzz::putNoResult(seed);
  seed.putFlag(false);
  putFrame(seed);
  seed.putBelow(fuzz::kMaxFrames - 1, fuzz::kMaxFrames);
  return seed;
}

void addScenes(TFolder& folder) {
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    const cv::Mat image = scenes::renderScene(randomScene(joint, scenes::TLevel::clean, 1, kSceneSize)).image;
    const TWeldParams params = scenes::weldParamsFor(joint);
    for (const int way : {fuzz::kEntryPointWay, fuzz::kMeasuringWay}) {
      const TSeed seed = makeSequence(way, params, [&](TSeed& s) { fuzz::putFrame(s, image); });
      checkSeed(seed, params, image);
      folder.add(seed.bytes());
    }
  }
}

// Each drawing of a joint in fewer bytes, for every joint: those that it does not show look for theirs in it.
void addStrokes(TFolder& folder) {
  const std::vector<TStroke> drawings[] = {
      {{{10, 120}, {140, 120}}, {{175, 120}, {310, 120}}},
      {{{10, 90}, {155, 90}}, {{158, 130}, {310, 130}}},
      {{{20, 70}, {160, 140}}, {{160, 140}, {300, 70}}},
      {{{5, 170}, {80, 170}}, {{80, 110}, {240, 110}}, {{240, 170}, {315, 170}}},
      {{{10, 80}, {110, 80}}, {{110, 80}, {160, 160}}, {{160, 160}, {210, 80}}, {{210, 80}, {310, 80}}},
      {{{10, 100}, {310, 140}}}};
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    for (const std::vector<TStroke>& strokes : drawings) {
      for (const bool usesRidges : {false, true}) {
        TWeldParams params = scenes::weldParamsFor(joint);
        params.flagPara1 = params.flagPara2 = usesRidges;
        const auto putFrame = [&](TSeed& s) { fuzz::putStrokes(s, kStrokeSize, strokes); };
        folder.add(makeSequence(fuzz::kEntryPointWay, params, putFrame).bytes());
      }
    }
  }
}

// findALine, segmentStripe and splitWeldLine2lines; see the order of members in toolkit.cpp.
void addPointLists(TFolder& folder) {
  constexpr int kMembers = 10;
  for (const int member : {0, 3, 5}) {
    TSeed seed;
    seed.putBelow(member, kMembers);
    seed.putFlag(false);
    if (member == 0) {
      for (const int index : {1024, 1024 + 80}) {  // the range 0 .. 79
        seed.putBelow(2, 3);
        seed.putBelow(index, 2048);
      }
    }
    if (member == 3) {
      for (const double limit : {10.0, 200.0, 20.0}) seed.putDouble(limit);
      seed.putFlag(true);
    }
    fuzz::putRuns(seed, {0.3, -0.3, 0.0}, kPointsPerRun, kToolkitPoints);
    folder.add(seed.bytes());
  }
}

void addExposures(TFolder& folder) {
  const cv::Mat image =
      scenes::renderScene(randomScene(TJoint::plate, scenes::TLevel::harsh, 1, kSceneSize)).image;
  for (const int call : {0, 1, 2}) {
    TSeed seed;
    seed.putBelow(call, 4);
    fuzz::putFrame(seed, image);
    folder.add(seed.bytes());
  }
}

// Whole plates, every polarity.
void addPlates(TFolder& folder) {
  const cv::Mat image =
      scenes::renderPlate(randomPlate(scenes::TPlateSeam::gap, scenes::TLevel::noisy, 1, kSceneSize)).image;
  for (const int polarity : {1, 2, 3, 4}) {
    TSeed seed;
    seed.putBelow(polarity, 6);
    seed.putFlag(false);
    seed.putDouble(0.0);
    seed.putFlag(true);
    fuzz::putFrame(seed, image);
    folder.add(seed.bytes());
  }
}

void addParamFiles(TFolder& folder) {
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    std::string parts = tool::paramsToJson(scenes::weldParamsFor(joint)).dump();
    folder.add(parts);
    for (const char* const option : {"corner", "centre", "flankTolerancePx=4", "haveGap=false"}) {
      parts += '\0';
      parts += option;
    }
    folder.add(parts);
  }
}

void addJobs(TFolder& folder) {
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    TWeldJob job;
    job.params = scenes::weldParamsFor(joint);
    job.preparation.region = cv::Rect(1, 2, 30, 40);
    folder.add(writeWeldJob(job));
  }
}

void addImageFiles(TFolder& folder) {
  cv::Mat grey = scenes::renderScene(randomScene(TJoint::buttGap, scenes::TLevel::clean, 1, {160, 160})).image;
  grey = grey(cv::Rect({0, 50}, kPictureSize)).clone();
  cv::Mat colour;
  cv::merge(std::vector<cv::Mat>{grey, grey, grey}, colour);
  const auto addAs = [&](const cv::Mat& image, std::initializer_list<const char*> endings) {
    for (const char* const ending : endings) {
      std::vector<std::uint8_t> bytes;
      cv::imencode(ending, image, bytes);
      TSeed seed;
      seed.putBytes(bytes.data(), bytes.size());
      for (const int choices : {4, 5, 2}) seed.putBelow(0, choices);  // not turned, grey, whole
      folder.add(seed.bytes());
    }
  };
  addAs(grey, {".png", ".jpg", ".bmp", ".tif", ".pgm"});
  addAs(colour, {".png", ".jpg", ".bmp", ".tif", ".ppm", ".webp"});
}

}  // namespace

int main(int argc, char** argv) {
  fuzz::require(argc == 2, "one argument, the folder of the seeds");
  const auto fill = [&](const char* target, std::initializer_list<void (*)(TFolder&)> steps) {
    TFolder folder(fs::path(argv[1]) / target);
    for (const auto step : steps) step(folder);
  };
  fill("entry_point", {addScenes, addStrokes});
  fill("toolkit", {addPointLists});
  fill("lighting", {addExposures});
  fill("job", {addJobs});
  fill("contrast", {addPlates});
  fill("param_file", {addParamFiles});
  fill("image_file", {addImageFiles});
  return 0;
}
