// What the measurement of the grooves claims about itself, against what is true.
#pragma once

namespace accuracy {

// Prints the tables of recognition, of confidence and of sigma, over so many scenes of each groove and level.
void printConfidence(int scenes);

}  // namespace accuracy
