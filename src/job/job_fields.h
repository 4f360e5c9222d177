// The fields of a job, each once: `visitor` is a TObjectReader or a TObjectWriter.
#pragma once

#include "job/object_reader.h"
#include "zelWeldJob.h"
#include "zelWeldSettings.h"

namespace weld {

const std::vector<TNamed<TStripeExtraction>>& extractionNames();
const std::vector<TNamed<TSeamSource>>& sourceNames();
const std::vector<TNamed<TSeamPolarity>>& polarityNames();
const std::vector<TNamed<TImageChannel>>& channelNames();
const std::vector<TNamed<TElementShape>>& shapeNames();
const std::vector<TNamed<TElementMeeting>>& meetingNames();
const std::vector<TNamed<TJointPlace>>& placeNames();
const std::vector<TNamed<TFeature>>& featureNames();

template <typename TVisitor>
void visitContrast(TVisitor& v, TContrastSearch& search) {
  v.choice("polarity", search.polarity, polarityNames());
  v.number("directionDeg", search.directionDeg, {});
  v.number("directionTolDeg", search.directionTolDeg, {0.0});
  v.object("roughPos", [&](auto& place) {
    place.number("x", search.roughPos.x, {});
    place.number("y", search.roughPos.y, {});
  });
  v.number("bandPx", search.bandPx, {0.0});
  v.number("reachPx", search.reachPx, {0.0});
  v.number("minWidthPx", search.minWidthPx, {0.0});
  v.number("maxWidthPx", search.maxWidthPx, {0.0});
  v.number("minLengthPx", search.minLengthPx, {0.0});
  v.number("minConfidence", search.minConfidence, {0.0});
}

template <typename TVisitor>
void visitTracker(TVisitor& v, TTrackerOptions& options) {
  v.count("guideMarginPx", options.guideMarginPx, 0);
  v.choice("extraction", options.extraction, extractionNames());
  v.flag("rejectImpossiblePoints", options.rejectImpossiblePoints);
  v.number("maxJumpPx", options.maxJumpPx, {0.0, true, true});
  v.count("acceptAfterFrames", options.acceptAfterFrames, 1);
  v.count("holdFrames", options.holdFrames, 0);
  v.flag("searchWholeOnLoss", options.searchWholeOnLoss);
  v.flag("keepTrace", options.keepTrace);
  v.flag("giveAdvice", options.giveAdvice);
  v.choice("source", options.source, sourceNames());
  v.object("contrast", [&](auto& contrast) { visitContrast(contrast, options.contrast); });
  v.place("lookAtPx", options.lookAtPx);
}

template <typename TVisitor>
void visitRegion(TVisitor& v, cv::Rect& region) {
  v.count("x", region.x, 0);
  v.count("y", region.y, 0);
  v.count("width", region.width, 1);
  v.count("height", region.height, 1);
}

template <typename TVisitor>
void visitElement(TVisitor& v, TJointElement& element) {
  v.choice("shape", element.shape, shapeNames());
  v.choice("meeting", element.meeting, meetingNames());
  v.flag("isOptional", element.isOptional);
  v.flag("isHollow", element.isHollow);
  v.range("angleDeg", element.angleDeg);
  v.range("lengthPx", element.lengthPx);
  v.range("radiusPx", element.radiusPx);
  v.range("turnDeg", element.turnDeg);
  v.range("widthPx", element.widthPx);
  v.range("stepPx", element.stepPx);
}

template <typename TVisitor>
void visitPoint(TVisitor& v, TJointPoint& point) {
  v.choice("feature", point.feature, featureNames());
  v.choice("place", point.place, placeNames());
  v.count("element", point.element, 0);
}

template <typename TVisitor>
void visitTemplate(TVisitor& v, TJointTemplate& joint) {
  v.text("name", joint.name);
  v.list("elements", joint.elements, [](auto& each, TJointElement& element) { visitElement(each, element); });
  v.list("points", joint.points, [](auto& each, TJointPoint& point) { visitPoint(each, point); });
  v.choice("tracked", joint.tracked, featureNames());
  v.flag("mayBeMirrored", joint.mayBeMirrored);
  v.number("lineTolerancePx", joint.lineTolerancePx, {0.0, true, false});
}

}  // namespace weld
