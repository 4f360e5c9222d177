#include "trace/trace_conclusion.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace weld {

namespace {

constexpr std::int32_t kNone = -1;
constexpr std::size_t kFewestCentres = 10;  // of an attempt that a stripe can be spoken of in

// True when the attempt ends with `next` rather than with `best`; both failed, `best` first.
bool decidesOver(const TTraceAttempt& attempt, const TTraceCheck& next, const TTraceCheck& best) {
  // Ridges in place of edge pairs: the attempt has a stripe after all.
  const bool hasStripe = attempt.centres.size() >= kFewestCentres;
  if (hasStripe && best.failure == TWeldOutcome::noStripe && next.failure != TWeldOutcome::noStripe) return true;
  if (next.piece != kNone && best.piece != kNone)
    return attempt.pieces[next.piece].points > attempt.pieces[best.piece].points;
  if (next.piece != kNone || best.piece != kNone) return best.piece != kNone;
  const bool isOtherWay = best.way[0] != '\0' && std::strcmp(next.way, best.way) != 0;
  return isOtherWay && best.stage <= next.stage;
}

std::int32_t decisiveCheck(const TTraceAttempt& attempt) {
  std::int32_t best = kNone;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(attempt.checks.size()); ++i) {
    if (attempt.checks[i].passed) continue;
    if (best == kNone || decidesOver(attempt, attempt.checks[i], attempt.checks[best])) best = i;
  }
  return best;
}

std::int32_t stageOf(const TTraceAttempt& attempt) {
  return attempt.decisive == kNone ? kNone : attempt.checks[attempt.decisive].stage;
}

// The last successful attempt, else the one that got furthest, the first one of equals.
std::int32_t decisiveAttempt(const std::vector<TTraceAttempt>& attempts) {
  const auto succeeded = [](const TTraceAttempt& a) { return a.outcome == TWeldOutcome::found; };
  const auto last = std::find_if(attempts.rbegin(), attempts.rend(), succeeded);
  if (last != attempts.rend()) return static_cast<std::int32_t>(attempts.rend() - last) - 1;
  std::int32_t best = kNone;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(attempts.size()); ++i) {
    if (best == kNone || stageOf(attempts[i]) > stageOf(attempts[best])) best = i;
  }
  return best;
}

struct TEnding {
  TWeldOutcome outcome;
  const char* reason;
  std::string sentence;
};

TEnding endingOf(const TFrameTrace& trace, const TFrameEnd& end, const TWeldJoint* joint) {
  const auto refused =
      std::find_if(trace.gate.begin(), trace.gate.end(), [](const TTraceCheck& c) { return !c.passed; });
  if (refused != trace.gate.end()) return {refused->failure, refused->reason, describeFailure(*refused, joint)};
  if (trace.decisive != kNone) {
    const TTraceAttempt& attempt = trace.attempts[trace.decisive];
    return {attempt.outcome, attempt.reason, attempt.sentence};
  }
  if (end.problem[0] != '\0') return {TWeldOutcome::settingInvalid, "template of the joint is wrong", end.problem};
  const TWeldOutcome outcome = end.hasImage ? TWeldOutcome::noDetector : TWeldOutcome::noImage;
  return {outcome, weldOutcomeText(outcome), weldOutcomeText(outcome)};
}

}  // namespace

std::string positionText(cv::Point2f p) {
  return cv::format("x %.1f, y %.1f", static_cast<double>(p.x), static_cast<double>(p.y));
}

void concludeFoundAttempt(TFrameTrace& trace, const std::string& sentence) {
  trace.attempts.back().reason = weldOutcomeText(TWeldOutcome::found);
  trace.attempts.back().sentence = sentence;
}

void concludeFailedAttempt(TFrameTrace& trace, const TWeldJoint& joint) {
  TTraceAttempt& attempt = trace.attempts.back();
  attempt.decisive = decisiveCheck(attempt);
  if (attempt.decisive == kNone) return;
  const TTraceCheck& check = attempt.checks[attempt.decisive];
  attempt.outcome = check.failure;
  attempt.reason = check.reason;
  attempt.sentence = describeFailure(check, &joint);
  const bool isPointOutside = check.failure == TWeldOutcome::seamOutside && std::isnan(check.measured);
  if (isPointOutside && !attempt.testedPoints.empty())
    attempt.sentence += ", at " + positionText(attempt.testedPoints.back());
}

void concludeFrame(TFrameTrace& trace, const TFrameEnd& end, const TWeldJoint* joint) {
  trace.decisive = decisiveAttempt(trace.attempts);
  const TEnding ending = endingOf(trace, end, joint);
  trace.outcome = end.isHeld ? TWeldOutcome::held : ending.outcome;
  trace.reason = ending.reason;
  trace.sentence =
      end.isHeld ? "repeats the seam at " + positionText(end.heldPos) + ": " + ending.sentence : ending.sentence;
}

}  // namespace weld
