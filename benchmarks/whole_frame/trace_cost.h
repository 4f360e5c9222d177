// What recording a frame's trace costs.
#pragma once

namespace bench {

// Prints a table: a tracker on a frame of each joint, without a trace and with one.
void reportTraceCost();

}  // namespace bench
