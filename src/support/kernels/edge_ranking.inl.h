// Finds the edges in a group of neighbouring columns, and those among them that may take part in pairs.
#pragma once

#include "support/kernels/kernel_lanes.inl.h"

namespace weld {
namespace {

constexpr int kRankedRows = 64;  // collected before they are ranked

// The edges of one kind in every column. An edge is its strength + 1; 0 is none.
struct TEdgesOfKind {
  v_int16 strongest[kPairedEdges];  // strongest first
  v_int16 counts;

  TEdgesOfKind() : counts(lanesOf(0)) {
    for (v_int16& edge : strongest) edge = lanesOf(0);
  }

  // Counts the edges, and returns those within the limit that five before them have not already beaten.
  v_int16 count(const v_int16& edges) {
    const v_int16 isEdge = (edges > lanesOf(0)) & (counts < lanesOf(kMaxEdges));
    counts = counts - isEdge;
    return edges & isEdge & (edges > strongest[kPairedEdges - 1]);
  }

  void insert(v_int16 edges) {
    for (v_int16& edge : strongest) {
      const v_int16 stronger = cv::v_max(edge, edges);
      edges = cv::v_min(edge, edges);
      edge = stronger;
    }
  }

  // No column takes another edge.
  bool isFull() const { return cv::v_check_all(counts >= lanesOf(kMaxEdges)); }
};

struct TGroupEdges {
  int rows = 0;  // rows in the buffer
  TEdgesOfKind rising;
  TEdgesOfKind falling;
};

// Sum of the 5 rows from here on less the sum of the 5 rows before.
inline v_int16 boxDifference(const unsigned char* here, std::size_t step) {
  v_int16 rise = lanesOf(0);
  for (int row = 0; row < kBoxPx; ++row, here += step) rise = rise + loadRow(here) - loadRow(here - kBoxPx * step);
  return rise;
}

// Neighbouring columns of an area, one per lane.
struct TGroup {
  const TScanArea& area;
  const unsigned char* column;  // the first one
};

// Rows first .. end - 1.
struct TRows {
  int first;
  int end;
};

// Writes the rows that have an edge into the buffer and returns how many; rise is the box difference in the first
// row, and in row `end` afterwards.
inline int collectEdges(const TGroup& group, const TRows& rows, v_int16& rise, TEdgeRow* buffer) {
  const TScanArea& area = group.area;
  const v_int16 threshold = lanesOf(area.threshold);
  const v_int16 edgeLimit = lanesOf(kBoxPx * area.threshold);
  const v_int16 zero = lanesOf(0);
  const v_int16 one = lanesOf(1);
  const unsigned char* here = group.column + rows.first * area.step;
  v_int16 change = rise;
  int count = 0;
  for (int row = rows.first; row < rows.end; ++row, here += area.step) {
    const v_int16 grey = loadRow(here);
    const v_int16 isEdge = (grey >= threshold) & (cv::v_max(change, zero - change) > edgeLimit);
    // Written in any case: a branch per row would be guessed wrong.
    const v_int16 isFalling = change <= zero;
    buffer[count].row = row;
    cv::v_store(buffer[count].edges, (change + ((one + isFalling) | isFalling)) & isEdge);
    count += cv::v_check_any(isEdge) ? 1 : 0;
    change = change + loadRow(here + kBoxPx * area.step) + loadRow(here - kBoxPx * area.step) - grey - grey;
  }
  rise = change;
  return count;
}

// Ranks the edges of one kind in rows that were collected, top to bottom.
// sign: 1 for rising edges, -1 for falling ones.
template <int sign>
inline void rankEdges(TEdgeRow* rows, int count, TEdgesOfKind& found) {
  const v_int16 zero = lanesOf(0);
  TEdgesOfKind kind = found;
  for (int i = 0; i < count; ++i) {
    const v_int16 both = cv::vx_load(rows[i].edges);
    const v_int16 own = cv::v_max(sign > 0 ? both : zero - both, zero);
    if (!cv::v_check_any(own > zero)) continue;
    const v_int16 kept = kind.count(own);
    const v_int16 other = sign > 0 ? cv::v_min(both, zero) : cv::v_max(both, zero);
    cv::v_store(rows[i].edges, sign > 0 ? other + kept : other - kept);
    kind.insert(kept);
  }
  found = kind;
}

// Ranks the last rows of the buffer, and drops those without an edge that can be among the strongest.
inline void rankRows(TEdgeRow* buffer, int end, TGroupEdges& found) {
  rankEdges<1>(buffer + found.rows, end - found.rows, found.rising);
  rankEdges<-1>(buffer + found.rows, end - found.rows, found.falling);
  int kept = found.rows;
  for (int i = found.rows; i < end; ++i) {
    const v_int16 edges = cv::vx_load(buffer[i].edges);
    buffer[kept].row = buffer[i].row;
    cv::v_store(buffer[kept].edges, edges);
    kept += cv::v_check_any(edges != lanesOf(0)) ? 1 : 0;
  }
  found.rows = kept;
}

inline TGroupEdges findMarkedEdges(const TGroup& group, const std::uint64_t* marks, int words, TEdgeRow* buffer) {
  const TScanArea& area = group.area;
  TGroupEdges found;
  v_int16 rise = lanesOf(0);
  int reached = 0;
  int collected = 0;
  for (int word = 0; word < words; ++word) {
    for (std::uint64_t bits = marks[word]; bits != 0; bits &= bits - 1) {
      const int first = kBoxPx + kBlockRows * (word * kMarkBits + __builtin_ctzll(bits));
      const int end = smaller(first + kBlockRows, area.rows - kBoxPx);
      if (first != reached) rise = boxDifference(group.column + first * area.step, area.step);
      collected += collectEdges(group, {first, end}, rise, buffer + collected);
      reached = end;
      if (collected - found.rows < kRankedRows) continue;
      rankRows(buffer, collected, found);
      collected = found.rows;
      if (found.rising.isFull() && found.falling.isFull()) return found;
    }
  }
  rankRows(buffer, collected, found);
  return found;
}

}  // namespace
}  // namespace weld
