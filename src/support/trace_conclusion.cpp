#include "support/trace_conclusion.h"

#include <algorithm>
#include <cstring>

namespace weld {

namespace {

constexpr std::int32_t kNone = -1;

bool isFurther(TWeldOutcome a, TWeldOutcome b) {
  return static_cast<std::int32_t>(a) > static_cast<std::int32_t>(b);
}

// True when the attempt ends with `next` rather than with `best`; both failed, `best` first.
bool decidesOver(const TTraceAttempt& attempt, const TTraceCheck& next, const TTraceCheck& best) {
  if (next.piece != kNone && best.piece != kNone)
    return attempt.pieces[next.piece].points > attempt.pieces[best.piece].points;
  if (next.piece != kNone || best.piece != kNone) return best.piece != kNone;
  const bool isOtherWay = best.way[0] != '\0' && std::strcmp(next.way, best.way) != 0;
  return isOtherWay && !isFurther(best.failure, next.failure);
}

std::int32_t decisiveCheck(const TTraceAttempt& attempt) {
  std::int32_t best = kNone;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(attempt.checks.size()); ++i) {
    if (attempt.checks[i].passed) continue;
    if (best == kNone || decidesOver(attempt, attempt.checks[i], attempt.checks[best])) best = i;
  }
  return best;
}

std::string at(cv::Point2f p) {
  return cv::format("x %.1f, y %.1f", static_cast<double>(p.x), static_cast<double>(p.y));
}

std::string describeFound(const TWeldLineRes& result, TWeldType type) {
  if (type != TWeldType::stripePresence) return "seam at " + at(result.weldPos);
  return cv::format("stripe with %d points", static_cast<int>(result.stripePts.size()));
}

void concludeFailed(TTraceAttempt& attempt) {
  attempt.decisive = decisiveCheck(attempt);
  if (attempt.decisive == kNone) return;
  const TTraceCheck& check = attempt.checks[attempt.decisive];
  attempt.outcome = check.failure;
  attempt.sentence = describeFailure(check);
  if (check.failure == TWeldOutcome::cornerOutside) attempt.sentence += ", at " + at(attempt.testedPoints.back());
}

// The last successful attempt, else the one that got furthest, the first one of equals.
std::int32_t decisiveAttempt(const std::vector<TTraceAttempt>& attempts) {
  const auto succeeded = [](const TTraceAttempt& a) { return a.outcome == TWeldOutcome::found; };
  const auto last = std::find_if(attempts.rbegin(), attempts.rend(), succeeded);
  if (last != attempts.rend()) return static_cast<std::int32_t>(attempts.rend() - last) - 1;
  std::int32_t best = kNone;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(attempts.size()); ++i) {
    if (best == kNone || isFurther(attempts[i].outcome, attempts[best].outcome)) best = i;
  }
  return best;
}

void concludeWith(TFrameTrace& trace, TWeldOutcome outcome, const std::string& sentence) {
  trace.outcome = outcome;
  trace.sentence = sentence;
}

}  // namespace

void concludeAttempts(TFrameTrace& trace, const TWeldLineRes& result, TWeldType type) {
  for (TTraceAttempt& attempt : trace.attempts) {
    if (!attempt.sentence.empty()) continue;  // of an earlier run
    if (result.isFound && &attempt == &trace.attempts.back()) {
      attempt.sentence = describeFound(result, type);
    } else {
      concludeFailed(attempt);
    }
  }
}

void concludeRefusedAttempt(TFrameTrace& trace) {
  concludeFailed(trace.attempts.back());
}

void concludeFrame(TFrameTrace& trace, bool hasImage, std::optional<cv::Point2f> heldSeam) {
  trace.decisive = decisiveAttempt(trace.attempts);
  const auto refused =
      std::find_if(trace.gate.begin(), trace.gate.end(), [](const TTraceCheck& c) { return !c.passed; });
  if (refused != trace.gate.end()) {
    concludeWith(trace, refused->failure, describeFailure(*refused));
  } else if (trace.decisive != kNone) {
    const TTraceAttempt& attempt = trace.attempts[trace.decisive];
    concludeWith(trace, attempt.outcome, attempt.sentence);
  } else {
    const TWeldOutcome outcome = hasImage ? TWeldOutcome::noDetector : TWeldOutcome::noImage;
    concludeWith(trace, outcome, weldOutcomeText(outcome));
  }
  if (heldSeam)
    concludeWith(trace, TWeldOutcome::held, "repeats the seam at " + at(*heldSeam) + ": " + trace.sentence);
}

}  // namespace weld
