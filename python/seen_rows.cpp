#include "seen_rows.h"

#include <pybind11/stl.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace py = pybind11;

namespace python {
namespace {

using TPlace = std::optional<cv::Point2d>;
using TRow = tool::TSeamFrame;
using TNeed = std::tuple<std::string, int, double>;

constexpr int kNoLimit = -1;

// One list for each field of a row.
struct TColumns {
  std::vector<bool> found;
  std::vector<bool> atStripeEnd;
  std::vector<double> confidence;
  std::vector<std::vector<double>> places;  // seam, stored seam, steady place: two numbers each, or none
  std::vector<int> limit;
  std::vector<std::string> reason;
  std::vector<std::string> sentence;
  std::vector<std::vector<TNeed>> needs;
};

// Hands every column with its name to what writes or reads it.
template <typename TVisit, typename TAll>
void visitColumns(TAll& all, TVisit visit) {
  visit("found", all.found);
  visit("at_stripe_end", all.atStripeEnd);
  visit("confidence", all.confidence);
  visit("places", all.places);
  visit("limit", all.limit);
  visit("reason", all.reason);
  visit("sentence", all.sentence);
  visit("needs", all.needs);
}

constexpr TPlace TRow::*kPlaces[] = {&TRow::seam, &TRow::storedSeam, &TRow::steady};

std::vector<double> placesOf(const TRow& row) {
  std::vector<double> numbers;
  for (int n = 0; n < 3; ++n) {
    const TPlace& place = row.*kPlaces[n];
    if (!place) continue;
    numbers.insert(numbers.end(), {static_cast<double>(n), place->x, place->y});
  }
  return numbers;
}

void setPlaces(TRow& row, const std::vector<double>& numbers) {
  for (std::size_t i = 0; i + 2 < numbers.size(); i += 3) {
    const auto n = static_cast<std::size_t>(numbers[i]);
    if (n < 3) row.*kPlaces[n] = cv::Point2d(numbers[i + 1], numbers[i + 2]);
  }
}

}  // namespace

void TSeenRows::add(const tool::TSeamFrame& seen) {
  rows.push_back(seen);
}

py::dict TSeenRows::columns() const {
  TColumns all;
  for (const TRow& row : rows) {
    all.found.push_back(row.isFound);
    all.atStripeEnd.push_back(row.isAtStripeEnd);
    all.confidence.push_back(row.confidence);
    all.places.push_back(placesOf(row));
    all.limit.push_back(row.limit ? static_cast<int>(*row.limit) : kNoLimit);
    all.reason.push_back(row.isFound ? "" : row.reason);
    all.sentence.push_back(row.isFound ? "" : row.sentence);
    all.needs.emplace_back();
    for (const TTraceNeed& need : row.needs)
      all.needs.back().emplace_back(need.parameter, static_cast<int>(need.kind), need.enough);
  }
  py::dict columns;
  visitColumns(all, [&](const char* name, const auto& column) { columns[name] = py::cast(column); });
  return columns;
}

std::vector<TRow> seenRows(const py::dict& columns) {
  TColumns all;
  visitColumns(all, [&](const char* name, auto& column) {
    if (!columns.contains(name)) throw py::value_error(std::string("rows: the column ") + name + " is missing");
    column = columns[name].cast<std::decay_t<decltype(column)>>();
  });
  std::vector<TRow> rows(all.found.size());
  visitColumns(all, [&](const char* name, const auto& column) {
    if (column.size() != rows.size()) throw py::value_error(std::string("rows: another length of ") + name);
  });
  for (std::size_t i = 0; i < rows.size(); ++i) {
    TRow& row = rows[i];
    row.isFound = all.found[i];
    row.isAtStripeEnd = all.atStripeEnd[i];
    row.confidence = all.confidence[i];
    setPlaces(row, all.places[i]);
    if (all.limit[i] != kNoLimit) row.limit = static_cast<TLimitKind>(all.limit[i]);
    row.reason = all.reason[i];
    row.sentence = all.sentence[i];
    for (const auto& [parameter, kind, enough] : all.needs[i])
      row.needs.push_back({parameter, static_cast<TLimitKind>(kind), enough});
  }
  return rows;
}

}  // namespace python
