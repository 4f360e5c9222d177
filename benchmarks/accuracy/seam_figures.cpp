#include "seam_figures.h"

#include <cmath>
#include <cstdio>

namespace accuracy {

namespace {

int digitsOf(TUnit unit) {
  if (unit == TUnit::frames) return 0;
  return unit == TUnit::percent ? 1 : 2;
}

}  // namespace

double roundedFor(TUnit unit, double value) {
  const double steps = std::pow(10.0, digitsOf(unit));
  return std::isfinite(value) ? std::round(value * steps) / steps : value;
}

std::string textOf(TUnit unit, double value) {
  if (std::isnan(value)) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digitsOf(unit), value);
  return text;
}

std::string keyOf(const TTable& table, const TRow& row) {
  std::string key = table.name;
  for (const std::string& label : row.labels) key += " " + label;
  return key;
}

}  // namespace accuracy
