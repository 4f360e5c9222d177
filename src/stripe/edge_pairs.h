// Rising and falling grey-level edges of one image column, and their pairing across the stripe.
#pragma once

#include <vector>

namespace weld {

enum class TEdgeKind : int { rising = 0, falling = 1 };  // as the row number grows

struct TStripeEdge {
  int position = -1;  // row within the region
  int strength = 0;   // absolute difference of the two 5-pixel box sums
  TEdgeKind kind = TEdgeKind::rising;
};

struct TStripePair {
  int low = 0;     // position of the rising edge
  int high = 0;    // position of the falling edge
  int centre = 0;  // grey-weighted centre to the nearest row, ties to even
};

// Codes of TWeldPointStatus.
enum TColumnStatus : int { kCentreFound = 0, kEdgeMissing = 1, kNoPair = 2 };

// Grey-weighted centre of the positions lo .. hi - 1 of a line of grey values, the last value of the line
// excepted. -1 when they are all 0.
double stripeCentroid(const unsigned char* line, int length, int lo, int hi);

// Pairs every rising edge with the falling edge next to it when they are more than 2 and less than 100 px
// apart. Of either kind only the 5 strongest edges take part, the earlier ones of equal strength.
TColumnStatus pairStripeEdges(const unsigned char* line, int length, std::vector<TStripeEdge> rising,
                              std::vector<TStripeEdge> falling, std::vector<TStripePair>& pairs);

}  // namespace weld
