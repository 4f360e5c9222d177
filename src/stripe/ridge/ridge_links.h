// What a link between two candidates costs. Internal to the ridge path.
#pragma once

#include "stripe/ridge/ridge_candidates.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

namespace weld {

// Gains and costs are fixed-point numbers; kGainOne is the most that one column can add.
inline constexpr int kGainOne = 1024;
inline constexpr int kBreakCost = 5 * kGainOne;  // no link costs as much
inline constexpr int kCostPerRow = 8;            // per half row of shift and column
inline constexpr int kCostPerExcessRow = 50;     // per half row beyond what a steep flank shifts
inline constexpr int kSteepRows = 6;             // half rows of shift per column on a steep flank
inline constexpr int kCostPerGapColumn = 100;

// The candidates of a column as ends of links, in lanes. Links are tried by the hundred thousand.
struct TLinkColumn {
  static constexpr int kLanes = 8;
  static_assert(TRidgeCandidates::kMax <= kLanes);

  int count = 0;
  float y[kLanes] = {};
  float widthPx[kLanes] = {};
  std::int64_t score[kLanes] = {};
};

// Scores over some base; exact as far as links can bridge the difference.
struct TLeads {
  float of[TLinkColumn::kLanes] = {};
  float most = -std::numeric_limits<float>::max();

  TLeads() = default;
  TLeads(const TLinkColumn& column, std::int64_t base) {
    for (int i = 0; i < column.count; ++i) {
      of[i] = static_cast<float>(column.score[i] - base);
      most = std::max(most, of[i]);
    }
  }
};

// Bit i is set where a link from candidate i may lead to more than leastLead, as far as can be told without a
// division.
inline unsigned findPromising(const TLinkColumn& from, const TLeads& leads, const TRidgeCandidate& to, int columns,
                              float leastLead) {
  using cv::v_float32x4;
  if (!(leads.most - static_cast<float>(kCostPerGapColumn * (columns - 1)) > leastLead)) return 0;
  const v_float32x4 zero = cv::v_setzero_f32();
  const v_float32x4 y = cv::v_setall_f32(static_cast<float>(to.y));
  const v_float32x4 widthPx = cv::v_setall_f32(static_cast<float>(to.widthPx));
  const v_float32x4 half = cv::v_setall_f32(0.5F);
  const v_float32x4 free = cv::v_setall_f32(static_cast<float>(kSteepRows * columns));
  const v_float32x4 perRow = cv::v_setall_f32(static_cast<float>(kCostPerExcessRow));
  const v_float32x4 gap = cv::v_setall_f32(static_cast<float>(kCostPerGapColumn * (columns - 1)));
  const v_float32x4 limit = cv::v_setall_f32(static_cast<float>(kBreakCost));
  const v_float32x4 least = cv::v_setall_f32(leastLead);
  unsigned bits = 0;
  for (int lane = 0; lane < TLinkColumn::kLanes; lane += v_float32x4::nlanes) {
    const v_float32x4 shift = cv::v_abs(cv::v_load(from.y + lane) - y);
    const v_float32x4 excess = shift - free - cv::v_max(cv::v_load(from.widthPx + lane), widthPx) * half;
    const v_float32x4 cost = cv::v_max(excess, zero) * perRow + gap;
    const v_float32x4 isPromising = (cost < limit) & (cv::v_load(leads.of + lane) - cost > least);
    bits |= static_cast<unsigned>(cv::v_signmask(isPromising)) << lane;
  }
  return bits & ((1U << from.count) - 1U);
}

// Of a link over so many columns; none where it costs as much as a break.
inline std::optional<int> linkCost(const TRidgeCandidate& from, const TRidgeCandidate& to, int columns) {
  const int shift = std::abs(to.y - from.y);
  const int free = kSteepRows * columns + std::max(from.widthPx, to.widthPx) / 2;
  const int cost = kCostPerExcessRow * std::max(0, shift - free) + kCostPerGapColumn * (columns - 1) +
                   kCostPerRow * shift / columns;
  if (cost >= kBreakCost) return std::nullopt;
  return cost;
}

}  // namespace weld
