#include "seam_limits.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace accuracy {

namespace {

const std::string kSampleMark = "# sample: ";
constexpr const char* kNoCause = "not known";

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

void readRow(const std::string& line, TLimits& limits) {
  std::istringstream fields(line);
  std::string row;
  std::string figure;
  std::string worst;
  TLimit limit;
  std::getline(fields, row, ';');
  std::getline(fields, figure, ';');
  std::getline(fields, worst, ';');
  std::getline(fields, limit.cause);
  std::size_t used = 0;
  limit.worst = std::stod(trimmed(worst), &used);
  limit.cause = trimmed(limit.cause);
  limits.rows[{trimmed(row), trimmed(figure)}] = limit;
}

// How much worse than measured a figure may get.
double slackOf(const TFigure& figure) {
  switch (figure.unit) {
    case TUnit::percent:
      return 0.5;
    case TUnit::pixels:
      return 0.02 + 0.05 * figure.value;
    case TUnit::ratio:
      return 0.03;
    case TUnit::frames:
      return 0.0;
  }
  return 0.0;
}

bool isBelow(const TFigure& figure) {
  if (std::isinf(figure.wanted.most)) return true;
  if (std::isinf(figure.wanted.least)) return false;
  return figure.value < (figure.wanted.least + figure.wanted.most) / 2.0;
}

double worstOf(const TFigure& figure) {
  const double slack = slackOf(figure);
  return roundedFor(figure.unit, isBelow(figure) ? figure.value - slack : figure.value + slack);
}

// Of a range with two ends the limit moves one; otherwise it takes the end's place, nearer or farther.
TWanted withLimit(const TWanted& wanted, double worst) {
  if (std::isinf(wanted.most)) return atLeast(worst);
  if (std::isinf(wanted.least)) return atMost(worst);
  return {std::min(wanted.least, worst), std::max(wanted.most, worst)};
}

}  // namespace

TLimits readLimits(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  TLimits limits;
  std::string line;
  while (std::getline(file, line)) {
    if (line.rfind(kSampleMark, 0) == 0) limits.sample = line.substr(kSampleMark.size());
    if (line.empty() || line.front() == '#') continue;
    try {
      readRow(line, limits);
    } catch (const std::logic_error&) {
      throw std::runtime_error(path + ": not \"row; figure; worst; cause\": " + line);
    }
  }
  return limits;
}

TVerdict verdictOn(const TLimits& limits, const std::string& row, const TFigure& figure) {
  if (std::isnan(figure.value) || figure.wanted.isAny()) return TVerdict::reached;
  const bool isReached = figure.wanted.holds(figure.value);
  const auto limit = limits.rows.find({row, figure.name});
  if (limit == limits.rows.end()) return isReached ? TVerdict::reached : TVerdict::failed;
  if (!withLimit(figure.wanted, limit->second.worst).holds(figure.value)) return TVerdict::failed;
  return isReached ? TVerdict::reached : TVerdict::knownMiss;
}

void writeLimits(const std::string& path, const TLimits& before, const std::vector<TTable>& tables, bool ofAll) {
  std::ofstream file(path);
  file << kSampleMark << before.sample << "\n# row; figure; worst; cause\n";
  for (const TTable& table : tables) {
    for (const TRow& row : table.rows) {
      for (const TFigure& figure : row.figures) {
        if (std::isnan(figure.value) || figure.wanted.isAny()) continue;
        if (!ofAll && figure.wanted.holds(figure.value)) continue;
        const auto known = before.rows.find({keyOf(table, row), figure.name});
        const std::string cause = known != before.rows.end() ? known->second.cause : kNoCause;
        file << keyOf(table, row) << "; " << figure.name << "; " << textOf(figure.unit, worstOf(figure));
        file << (ofAll ? "" : "; " + cause) << "\n";
      }
    }
  }
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace accuracy
