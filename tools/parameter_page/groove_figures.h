// The drawings of the grooves, which read the same parameters.
#pragma once

#include "tools/parameter_page/figures.h"

namespace tool {

TFigure drawGrooveSizes();
TFigure drawGrooveAngles();
TFigure drawFlareSizes();

}  // namespace tool
