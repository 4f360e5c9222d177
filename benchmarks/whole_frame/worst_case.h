// How much a call can cost at most, beside what it costs as a rule.
#pragma once

namespace bench {

// Prints a table: for every joint the dearest of the worst frames and previous stripes.
void reportWorstCases();

// Prints how the cost of cutting a stripe into pieces grows with the columns, at worst.
void reportWideFrames();

}  // namespace bench
