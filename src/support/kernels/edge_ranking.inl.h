// Finds the edges in a group of neighbouring columns, and those among them that may take part in pairs.
#pragma once

#include "support/kernels/kernel_lanes.inl.h"

namespace weld {
namespace {

// The edges of one kind in every column. An edge is its strength + 1; 0 is none.
struct TEdgesOfKind {
  v_int16 strongest[kPairedEdges];  // strongest first
  v_int16 counts;

  TEdgesOfKind() : counts(lanesOf(0)) {
    for (v_int16& edge : strongest) edge = lanesOf(0);
  }

  // Counts the edges, and returns those within the limit that five before them have not already beaten.
  v_int16 count(const v_int16& edges, const v_int16& isEdge) {
    const v_int16 isSeen = isEdge & (counts < lanesOf(kMaxEdges));
    counts = counts - isSeen;
    return edges & isSeen & (edges > strongest[kPairedEdges - 1]);
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

// Collects the edges of the rows; rise is the box difference in the first row, and in row `end` afterwards. Rows
// without an edge that can be among the strongest are left out.
inline void findEdges(const TGroup& group, const TRows& rows, v_int16& rise, TEdgeRow* buffer,
                      TGroupEdges& found) {
  const TScanArea& area = group.area;
  const v_int16 tooDark = lanesOf(area.threshold - 1);
  const int edgeLimit = kBoxPx * area.threshold;
  const v_int16 noRise = lanesOf(larger(edgeLimit, 0));  // at the threshold -1 whatever does not rise falls
  const v_int16 noFall = lanesOf(smaller(-edgeLimit, 1));
  const v_int16 one = lanesOf(1);
  const unsigned char* here = group.column + rows.first * area.step;
  for (int row = rows.first; row < rows.end; ++row, here += area.step) {
    const v_int16 grey = loadRow(here);
    const v_int16 isBright = grey > tooDark;
    const v_int16 isRising = isBright & (rise > noRise);
    const v_int16 isFalling = isBright & (rise < noFall);
    if (cv::v_check_any(isRising | isFalling)) {
      const v_int16 rising = found.rising.count(rise + one, isRising);
      const v_int16 falling = found.falling.count(one - rise, isFalling);
      const v_int16 edges = rising - falling;
      if (cv::v_check_any(edges != lanesOf(0))) {
        found.rising.insert(rising);
        found.falling.insert(falling);
        TEdgeRow& edgeRow = buffer[found.rows++];
        edgeRow.row = row;
        cv::v_store(edgeRow.edges, edges);
      }
    }
    rise = rise + (loadRow(here + kBoxPx * area.step) + loadRow(here - kBoxPx * area.step) - (grey + grey));
  }
}

inline TGroupEdges findMarkedEdges(const TGroup& group, const std::uint64_t* marks, int words, TEdgeRow* buffer) {
  const TScanArea& area = group.area;
  TGroupEdges found;
  v_int16 rise = lanesOf(0);
  int reached = 0;
  for (int word = 0; word < words; ++word) {
    for (std::uint64_t bits = marks[word]; bits != 0; bits &= bits - 1) {
      const int first = kBoxPx + kBlockRows * (word * kMarkBits + __builtin_ctzll(bits));
      const int end = smaller(first + kBlockRows, area.rows - kBoxPx);
      if (first != reached) rise = boxDifference(group.column + first * area.step, area.step);
      findEdges(group, {first, end}, rise, buffer, found);
      reached = end;
      if (found.rising.isFull() && found.falling.isFull()) return found;
    }
  }
  return found;
}

}  // namespace
}  // namespace weld
