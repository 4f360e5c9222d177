// The scan of a search region in vector code: lanes are image columns, 32 of which form a strip.
//
// A column of a strip is searched for edges in rows 5 .. rows - 6 of the region. Blocks of 8 such rows that
// cannot hold any edge are left out first; see docs/algorithms.md for the rules of an edge and of a pair.
#pragma once

#include <cstddef>
#include <cstdint>

namespace weld {

inline constexpr int kStripColumns = 32;
inline constexpr int kBlockRows = 8;
inline constexpr int kMarkBits = 64;         // blocks in one word of marks
inline constexpr int kBoxPx = 5;             // an edge is the difference of the sums of as many grey values
inline constexpr int kMaxEdges = 99;         // of one kind in a column; later ones are not seen
inline constexpr int kPairedEdges = 5;       // the strongest of one kind, which take part in pairing
inline constexpr int kMinPairPx = 2;         // exclusive
inline constexpr int kMaxPairPx = 100;       // exclusive
inline constexpr int kMaxGroupColumns = 16;  // columns of one vector of 16-bit lanes, at most

// A search region of 8-bit pixels.
struct TScanArea {
  const unsigned char* pixels = nullptr;  // first row and column
  std::size_t step = 0;                   // bytes from row to row
  int rows = 0;
  int strips = 0;
  std::ptrdiff_t lastStrip = 0;  // column of the last strip; before its place where the image ends
  int threshold = 0;             // -1 .. 255
};

// What the columns of a strip hold: up to 5 pairs of a rising and a falling edge each, top to bottom.
struct TStripPairs {
  std::int16_t hasBothEdges[kStripColumns];  // 0: no rising or no falling edge
  std::int32_t count[kStripColumns];
  std::int32_t low[kPairedEdges][kStripColumns];  // rows of the rising and falling edges
  std::int32_t high[kPairedEdges][kStripColumns];
  std::int32_t centre[kPairedEdges][kStripColumns];  // grey-weighted row from low to high - 1, rounded, ties to
                                                     // even; -1 where all is black
};

// The edges in one row of neighbouring columns: strength + 1, negative for falling edges, 0 for none.
struct TEdgeRow {
  std::int32_t row;
  std::int16_t edges[kMaxGroupColumns];
};

// The blocks of an area that may hold an edge: bit b of a strip's words stands for its rows 5 + 8 b .. 12 + 8 b.
struct TBlockMarks {
  std::uint64_t* words = nullptr;  // of all strips
  int wordsPerStrip = 0;
};

struct TEdgeKernels {
  // Sets the bit of every block that may hold an edge. All bits must be 0.
  void (*markBlocks)(const TScanArea& area, const TBlockMarks& marks);
  // Edges and pairs in the marked blocks of a strip. The buffer must have room for all rows of the area.
  void (*pairStripeEdges)(const TScanArea& area, const TBlockMarks& marks, int strip, TEdgeRow* buffer,
                          TStripPairs& pairs);
};

}  // namespace weld
