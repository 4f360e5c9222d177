// A frame's trace as JSON, and what it says in a word.
#pragma once

#include "zelWeldDetect.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace tool {

// What the decisive attempt had to work on: "1200 stripe points, tracking search, edgePairs"; empty without
// attempts.
std::string searchWords(const TFrameTrace& trace);

// Why a frame is not found, and what may be done: sentence and advice.
std::string explanationOf(const TFrameTrace& trace);

// "atLeast", "above", "atMost", "below".
const char* nameOf(TLimitKind kind);

// The attempt that the outcome speaks of; null without attempts.
const TTraceAttempt* decisiveAttempt(const TFrameTrace& trace);

// The whole trace; rejected points, centres and tested points only with `withPoints`. What is not a number is
// null.
nlohmann::ordered_json traceJson(const TFrameTrace& trace, bool withPoints);

}  // namespace tool
