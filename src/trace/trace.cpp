#include "trace/trace.h"

#include <limits>

namespace weld {

namespace {

TLimitKind kindOf(TRule rule) {
  switch (rule) {
    case TRule::above:
      return TLimitKind::above;
    case TRule::atMost:
    case TRule::notAbove:
      return TLimitKind::atMost;
    case TRule::below:
      return TLimitKind::below;
    default:
      return TLimitKind::atLeast;
  }
}

}  // namespace

void TTrace::beginAttempt(TSearchPath path, TStripeExtraction extraction) const {
  if (frame == nullptr) return;
  frame->attempts.emplace_back();
  attempt().path = path;
  attempt().extraction = extraction;
}

TTrace TTrace::inWay(const char* name) const {
  TTrace trace = *this;
  trace.way = name;
  return trace;
}

TTrace TTrace::ofPiece(std::size_t index) const {
  TTrace trace = *this;
  trace.piece = static_cast<std::int32_t>(index);
  return trace;
}

TTrace TTrace::atGate() const {
  TTrace trace = *this;
  trace.isGate = true;
  return trace;
}

bool TTrace::holds(const TCheck& check, bool passed) const {
  constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
  return note(check, kNoNumber, kNoNumber, passed);
}

void TTrace::addFilter(const char* name, std::size_t before, std::size_t after) const {
  if (frame == nullptr) return;
  attempt().filters.push_back({name, static_cast<std::int32_t>(before), static_cast<std::int32_t>(after)});
}

void TTrace::addLine(const TTraceLine& line) const {
  if (frame != nullptr) attempt().lines.push_back(line);
}

void TTrace::addTestedPoint(cv::Point2f point) const {
  if (frame != nullptr) attempt().testedPoints.push_back(point);
}

std::size_t TTrace::beginStage(const char* name) const {
  frame->stages.push_back({name, 0.0});
  return frame->stages.size() - 1;
}

void TTrace::addCheck(const TCheck& check, double measured, double limit, bool passed) const {
  TTraceCheck record;
  record.name = check.name;
  record.unit = check.unit;
  record.parameter = check.parameter;
  record.kind = kindOf(check.rule);
  record.measured = measured;
  record.limit = limit;
  record.isCount = check.isCount;
  record.passed = passed;
  record.element = check.failure.element;
  record.reason = check.failure.reason;
  record.failure = check.failure.outcome;
  record.stage = check.failure.stage;
  record.way = way;
  record.piece = piece;
  (isGate ? frame->gate : attempt().checks).push_back(record);
}

}  // namespace weld
