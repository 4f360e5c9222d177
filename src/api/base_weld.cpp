// State of the detector object and its queries on the column status.
#include "zelWeldDetect.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kMissingStatus = 1;

bool isStrictlyBetween(int pos, int lo, int hi) {
  return lo < pos && pos < hi;
}

}  // namespace

TBaseWeld::TBaseWeld() = default;
TBaseWeld::TBaseWeld(const TBaseWeld& other) = default;
TBaseWeld& TBaseWeld::operator=(const TBaseWeld& other) = default;
TBaseWeld::~TBaseWeld() = default;

TBaseWeld::TBaseWeld(TBaseWeld&& other) noexcept
    : weldParams(other.weldParams), samplingPtsStatus(std::exchange(other.samplingPtsStatus, {})) {}

TBaseWeld& TBaseWeld::operator=(TBaseWeld&& other) noexcept {
  weldParams = other.weldParams;
  samplingPtsStatus = std::exchange(other.samplingPtsStatus, {});
  return *this;
}

void TBaseWeld::setWeldParameters(TWeldParams params) {
  weldParams = params;
}

TWeldParams TBaseWeld::getWeldParameters() const {
  return weldParams;
}

void TBaseWeld::setSamplinePointsStatus(std::vector<TWeldPointStatus> status) {
  samplingPtsStatus = std::move(status);
}

std::vector<TWeldPointStatus> TBaseWeld::getSamplinePointsStatus() const {
  return samplingPtsStatus;
}

bool TBaseWeld::isWeldPosMissingPts(cv::Point2f /*pos*/, int lo, int hi, int minCount) const {
  const auto missing = std::count_if(samplingPtsStatus.begin(), samplingPtsStatus.end(), [&](const auto& s) {
    return isStrictlyBetween(s.pos, lo, hi) && s.status == kMissingStatus;
  });
  return missing >= minCount;
}

// Deliberate: the run must exceed maxRun, while the count above only has to reach minCount; a column
// outside the range neither counts nor breaks the run.
bool TBaseWeld::isWeldPosContinueMissingPts(cv::Point2f /*pos*/, int lo, int hi, int maxRun) const {
  int run = 0;
  for (const TWeldPointStatus& s : samplingPtsStatus) {
    if (!isStrictlyBetween(s.pos, lo, hi)) continue;
    run = s.status == kMissingStatus ? run + 1 : 0;
    if (s.status == kMissingStatus && run > maxRun) return true;
  }
  return false;
}

void initWeldParameters(TWeldType type, TWeldParams& params, TWeldPosType pos) {
  params.isInit = true;
  params.weldType = type;
  params.weldPosType = pos;
}
