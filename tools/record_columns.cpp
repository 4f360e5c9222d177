#include "tools/record_columns.h"

#include <limits>

namespace tool {
namespace {

using TSeamPoint = std::optional<cv::Point2d>;

TColumn coordinate(const char* name, TSeamPoint TFrameRecord::*point, double cv::Point2d::*axis) {
  const auto get = [point, axis](const TFrameRecord& record) {
    return record.*point ? *(record.*point).*axis : std::numeric_limits<double>::quiet_NaN();
  };
  return {name, "px", 3, get};
}

// Slopes keep six decimals.
TColumn value(const char* name, double TWeldLineRes::*field) {
  return {name, "", 6, [field](const TFrameRecord& record) { return record.tracked.line.*field; }};
}

}  // namespace

const std::vector<TColumn>& recordColumns() {
  static const std::vector<TColumn> columns = {
      coordinate("x", &TFrameRecord::seam, &cv::Point2d::x),
      coordinate("y", &TFrameRecord::seam, &cv::Point2d::y),
      coordinate("storedX", &TFrameRecord::storedSeam, &cv::Point2d::x),
      coordinate("storedY", &TFrameRecord::storedSeam, &cv::Point2d::y),
      {"points", "", 0,
       [](const TFrameRecord& r) { return static_cast<double>(r.tracked.line.stripePts.size()); }},
      value("auxVal1", &TWeldLineRes::auxVal1),
      value("auxVal2", &TWeldLineRes::auxVal2),
      value("auxVal3", &TWeldLineRes::auxVal3),
      value("auxVal4", &TWeldLineRes::auxVal4),
      value("trackVal", &TWeldLineRes::trackVal)};
  return columns;
}

}  // namespace tool
