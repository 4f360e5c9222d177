#include "tools/compare_page.h"

#include "tools/html_page.h"
#include "tools/picture_code.h"
#include "tools/report_assets.h"
#include "tools/stats.h"
#include "tools/text.h"

#include <nlohmann/json.hpp>

namespace tool {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kMaxPictureBytes = 20'000'000;  // of the page
constexpr int kPictureWidthPx = 800;
constexpr int kPictureQuality = 60;       // JPEG, 0 to 100
constexpr double kLeastDistancePx = 1.0;  // seams nearer than this do not differ

std::string dump(const ordered_json& json) {
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

ordered_json numberOrNull(const std::optional<double>& value) {
  return value ? ordered_json(rounded(*value)) : ordered_json(nullptr);
}

ordered_json sideJson(const TComparedSide& side) {
  const TSeamRun& run = side.run;
  return {{"name", side.name},
          {"found", run.found()},
          {"foundShare", run.foundShare()},
          {"losses", run.losses()},
          {"longestLoss", run.longestLoss()},
          {"jitterPx", numberOrNull(run.jitter().medianPx())}};
}

ordered_json pictureJson(const TSeamRun& run, const TSeamFrame& seen, const cv::Mat& image) {
  return {{"state", nameOf(run.state())},
          {"sentence", seen.sentence},
          {"picture", pictureAddress(image, run.overlay(image.cols), kPictureWidthPx, kPictureQuality)}};
}

std::string everyText(int step) {
  return step == 1 ? "all" : "one in " + std::to_string(step);
}

}  // namespace

TComparedPictures::TComparedPictures() : kept(kMaxPictureBytes) {}

void TComparedPictures::add(const TComparison& both, const TComparedFrame& frame) {
  const bool isOneSided = frame.a.isFound != frame.b.isFound;
  const bool isApart = frame.distancePx.value_or(0.0) >= kLeastDistancePx;
  if (frame.imageA.empty() || !(isOneSided || isApart) || !kept.wantsNext(isOneSided)) {
    return;
  }
  kept.put(frame.index, dump({{"frame", frame.index},
                              {"file", frame.name},
                              {"distance", numberOrNull(frame.distancePx)},
                              {"a", pictureJson(both.a.run, frame.a, frame.imageA)},
                              {"b", pictureJson(both.b.run, frame.b, frame.imageB)}}));
}

std::string comparePage(const TComparison& both, const TComparedPictures& pictures) {
  const TPictureShelf& shelf = pictures.shelf();
  ordered_json head = {
      {"version", ZELWELD_VERSION},
      {"frames", both.a.run.frames()},
      {"a", sideJson(both.a)},
      {"b", sideJson(both.b)},
      {"onlyA", both.onlyA.frames.size()},
      {"onlyB", both.onlyB.frames.size()},
      {"distance", numberOrNull(both.distancesPx.empty() ? std::nullopt
                                                         : std::make_optional(percentile(both.distancesPx, 0.5)))},
      {"selection", everyText(shelf.notableStep()) + " of the frames that one side alone found, " +
                        everyText(shelf.ordinaryStep()) + " of those with seams 1 px apart or more"},
      {"reasons", ordered_json::array()}};
  for (const TReasonRow& row : reasonsOf(both)) {
    head["reasons"].push_back({{"a", row.a}, {"b", row.b}, {"reason", row.reason}});
  }
  std::string frames;
  for (const auto& [frame, text] : shelf.texts()) {
    frames += (frames.empty() ? "" : ",\n") + text;
  }
  std::string json = dump(head);
  json.pop_back();  // the closing brace
  return htmlPage({"Comparison", asset::compareBody, asset::compareScript},
                  json + ",\n\"differing\":[" + frames + "]}");
}

}  // namespace tool
