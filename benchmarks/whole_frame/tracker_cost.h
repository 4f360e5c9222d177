// What the default tracker costs beside the plain rules.
#pragma once

namespace bench {

// Prints a table: both trackers on the same noisy and harsh sequences of each joint.
void reportTrackerCost();

}  // namespace bench
