#include "seam_figures.h"

#include <cmath>
#include <cstdio>

namespace accuracy {

double roundedFor(TUnit unit, double value) {
  const double steps = unit == TUnit::percent ? 10.0 : 100.0;
  return std::isfinite(value) ? std::round(value * steps) / steps : value;
}

std::string textOf(TUnit unit, double value) {
  if (std::isnan(value)) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", unit == TUnit::percent ? 1 : 2, value);
  return text;
}

std::string keyOf(const TTable& table, const TRow& row) {
  std::string key = table.name;
  for (const std::string& label : row.labels) key += " " + label;
  return key;
}

}  // namespace accuracy
