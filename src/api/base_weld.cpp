// State of the detector object and its queries on the column status.
#include "support/column_status.h"
#include "zelWeldDetect.h"

#include <algorithm>
#include <utility>

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
  return weld::countMissing(samplingPtsStatus, lo, hi) >= minCount;
}

// Deliberate: the run must exceed maxRun, while the count above only has to reach minCount. A negative maxRun
// still takes one missing column.
bool TBaseWeld::isWeldPosContinueMissingPts(cv::Point2f /*pos*/, int lo, int hi, int maxRun) const {
  return weld::longestMissingRun(samplingPtsStatus, lo, hi) > std::max(maxRun, 0);
}

void initWeldParameters(TWeldType type, TWeldParams& params, TWeldPosType pos) {
  params.isInit = true;
  params.weldType = type;
  params.weldPosType = pos;
}
