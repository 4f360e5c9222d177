// The trackers that every table is printed for.
#pragma once

#include "zelWeldDetect.h"

namespace accuracy {

struct TOptionSet {
  const char* title;
  TTrackerOptions options;
};

const TOptionSet kOptionSets[] = {{"Exact options:", TTrackerOptions::exact()},
                                  {"Default options:", TTrackerOptions()}};

}  // namespace accuracy
