// Times of the search by contrast.
#pragma once

namespace bench {

// Prints a table: the whole image, near a rough position, and a plate without a seam in every polarity.
void reportContrast();

}  // namespace bench
