// Measurement of a seam before tracking, and what it changes in the parameters.
#include "api/image_check.h"
#include "support/zel_functions.h"
#include "zelWeldJoint.h"

#include <string>

namespace {

constexpr float kConfidentScore = 30.0F;

// In the GBK code page: the name of the report, and a full-width comma behind its first value.
constexpr char kReportFormat[] =
    "\xBA\xB8\xB7\xEC\xB2\xCE\xCA\xFD"
    ":leftAg:%.3f"
    "\xA3\xAC"
    "rightAg:%.3f, intersecAg:%.3f, haveGap:%d, center:%.3f, %.3f, score:%.3f, costTime:%d";

std::string formatReport(const TWeldFeatures& features, int elapsedMs) {
  // Deliberate: centre and score are reported as zero, whatever the record holds.
  return cv::format(kReportFormat, static_cast<double>(features.leftAg), static_cast<double>(features.rightAg),
                    static_cast<double>(features.intersecAg), static_cast<int>(features.haveGap), 0.0, 0.0, 0.0,
                    elapsedMs);
}

}  // namespace

TWeldFeatures calcWeldFeatures(cv::Mat img, TWeldParams /*params*/) {
  const TWeldFeatures features;
  if (!weld::prepareGreyImage(img)) return features;
  zel::TZELTime timer;
  timer.start();
  zel::outPutDebugString(formatReport(features, timer.getTimeMs()));
  return features;
}

TWeldParams updateWeldParamByWeldFeature(TWeldFeatures features, TWeldParams params) {
  if (features.score > kConfidentScore) params.haveGap = features.haveGap;
  return params;
}
