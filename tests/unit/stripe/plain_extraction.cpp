#include "plain_extraction.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <tuple>

namespace weld::plain {
namespace {

constexpr int kSlots = 100;

using TColumns = std::map<int, std::vector<TStripeCandidate>>;

void dropEmptySlots(std::vector<TStripeEdge>& edges) {
  edges.erase(std::remove_if(edges.begin(), edges.end(), [](const TStripeEdge& e) { return e.position == -1; }),
              edges.end());
}

void keepFiveStrongest(std::vector<TStripeEdge>& edges) {
  if (edges.size() <= 5) return;
  std::stable_sort(edges.begin(), edges.end(),
                   [](const TStripeEdge& a, const TStripeEdge& b) { return a.strength > b.strength; });
  edges.resize(5);
}

int boxSum(const cv::Mat& integral, int row, int first) {
  return integral.at<int>(row + 1, first + 5) - integral.at<int>(row, first + 5) -
         integral.at<int>(row + 1, first) + integral.at<int>(row, first);
}

void scanStripeRegion(const cv::Mat& regionImage, const cv::Rect& region, int threshold, TExtraction& result) {
  if (regionImage.empty() || region.x < 0 || region.y < 0 || regionImage.rows < 2) return;
  cv::Mat integral;
  cv::integral(regionImage, integral, CV_32S);
  for (int r = 0; r < regionImage.rows; ++r) {
    std::array<std::vector<TStripeEdge>, 2> lists;  // by kind
    lists.fill(std::vector<TStripeEdge>(kSlots));
    std::array<int, 2> written{0, 0};
    for (int c = 5; c < regionImage.cols - 5; ++c) {
      if (regionImage.at<uchar>(r, c) < threshold) continue;
      const int before = boxSum(integral, r, c - 5);
      const int after = boxSum(integral, r, c);
      const int strength = std::abs(after - before);
      if (strength <= 5 * threshold) continue;
      const int kind = before >= after ? kFalling : kRising;
      if (written[kind] < kSlots - 1) lists[kind][written[kind]++] = {c, strength, kind};
    }
    std::vector<TStripePair> pairs;
    const int status = pairStripeEdges(regionImage.row(r), lists[kRising], lists[kFalling], pairs);
    result.status.push_back({region.x + r, status});
    for (const TStripePair& pair : pairs) {
      result.candidates.push_back({region.x + r, region.y + pair.centre, std::abs(pair.high - pair.low)});
    }
  }
}

int modalWidth(const TColumns& columns) {
  std::vector<int> widths;
  for (const auto& [x, candidates] : columns) {
    if (candidates.size() == 1) widths.push_back(candidates[0].widthPx);
  }
  if (widths.empty()) {
    for (const auto& [x, candidates] : columns) {
      for (const TStripeCandidate& c : candidates) widths.push_back(c.widthPx);
    }
  }
  std::sort(widths.begin(), widths.end());
  int mode = 0;
  int longest = 0;
  int run = 0;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    run = i > 0 && widths[i] == widths[i - 1] ? run + 1 : 1;
    if (run > longest) {
      longest = run;
      mode = widths[i];
    }
  }
  return mode;
}

// Best run of the table's columns first .. end - 1 as (candidate of each column, first column).
std::pair<std::vector<TStripeCandidate>, int> longestRun(const std::vector<std::vector<TStripeCandidate>>& table,
                                                         int first, int end) {
  using TScore = std::tuple<int, long>;  // columns, less the sum of squared steps
  std::vector<std::vector<TScore>> scores(table.size());
  std::vector<std::vector<int>> previous(table.size());
  TScore best{0, 0};
  std::pair<int, int> bestEnd;
  for (int t = first; t < end; ++t) {
    for (int c = 0; c < static_cast<int>(table[t].size()); ++c) {
      TScore score{1, 0};
      int from = -1;
      for (int p = 0; t > first && p < static_cast<int>(table[t - 1].size()); ++p) {
        const long step = table[t][c].y - table[t - 1][p].y;
        if (std::labs(step) >= 50) continue;
        const TScore next{std::get<0>(scores[t - 1][p]) + 1, std::get<1>(scores[t - 1][p]) - step * step};
        if (next > score) std::tie(score, from) = std::make_tuple(next, p);
      }
      scores[t].push_back(score);
      previous[t].push_back(from);
      if (score > best) std::tie(best, bestEnd) = std::make_tuple(score, std::make_pair(t, c));
    }
  }
  std::vector<TStripeCandidate> run;
  auto [t, c] = bestEnd;
  for (int left = std::get<0>(best); left > 0; --left, c = previous[t--][c]) run.push_back(table[t][c]);
  std::reverse(run.begin(), run.end());
  return {run, bestEnd.first + 1 - static_cast<int>(run.size())};
}

void selectRuns(const std::vector<std::vector<TStripeCandidate>>& table, int first, int end,
                std::vector<cv::Point2f>& centres) {
  const auto [run, runFirst] = longestRun(table, first, end);
  const int columns = static_cast<int>(run.size());
  if (columns <= 30) return;
  selectRuns(table, first, runFirst, centres);
  for (const TStripeCandidate& c : run) centres.push_back(cv::Point(c.x, c.y));
  selectRuns(table, runFirst + columns, end, centres);
}

std::vector<cv::Point2f> filterJumps(const std::vector<cv::Point2f>& centres) {
  const int n = static_cast<int>(centres.size());
  if (n < 10) return centres;
  std::vector<int> limits{0};
  for (int i = 1; i < n; ++i) {
    if (std::abs(centres[i].y - centres[i - 1].y) > 4.0 * std::abs(centres[i].x - centres[i - 1].x)) {
      limits.push_back(i);
    }
  }
  limits.push_back(n - 1);
  std::vector<cv::Point2f> kept;
  for (std::size_t piece = 1; piece < limits.size(); ++piece) {
    const int a = limits[piece - 1];
    const int b = limits[piece];
    if (std::abs(centres[b].x - centres[a].x) <= 10.0) continue;
    const bool isLast = piece + 1 == limits.size();
    kept.insert(kept.end(), centres.begin() + a, centres.begin() + b + (isLast ? 1 : 0));
  }
  return kept;
}

}  // namespace

double stripeCentroid(const cv::Mat& row, int lo, int hi) {
  double moment = 0.0;
  double sum = 0.0;
  for (int p = std::max(lo, 0); p < std::min(hi, row.cols - 1); ++p) {
    moment += static_cast<double>(p) * row.at<uchar>(p);
    sum += row.at<uchar>(p);
  }
  return sum == 0.0 ? -1.0 : moment / sum;
}

int pairStripeEdges(const cv::Mat& row, std::vector<TStripeEdge> rising, std::vector<TStripeEdge> falling,
                    std::vector<TStripePair>& pairs) {
  dropEmptySlots(rising);
  dropEmptySlots(falling);
  if (rising.empty() || falling.empty()) return 1;
  keepFiveStrongest(rising);
  keepFiveStrongest(falling);
  std::vector<TStripeEdge> edges = rising;
  edges.insert(edges.end(), falling.begin(), falling.end());
  std::sort(edges.begin(), edges.end(),
            [](const TStripeEdge& a, const TStripeEdge& b) { return a.position < b.position; });
  for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
    if (edges[i].kind != kRising || edges[i + 1].kind != kFalling) continue;
    const double w = std::abs(edges[i + 1].position - edges[i].position);
    if (w <= 2.0 || w >= 100.0) continue;
    const int lo = std::min(edges[i].position, edges[i + 1].position);
    const int hi = std::max(edges[i].position, edges[i + 1].position);
    pairs.push_back({lo, hi, static_cast<int>(std::nearbyint(stripeCentroid(row, lo, hi)))});
  }
  return pairs.empty() ? 2 : 0;
}

void reduceStripeCandidates(TExtraction& result) {
  TColumns columns;
  for (const TStripeCandidate& c : result.candidates) columns[c.x].push_back(c);
  if (columns.size() < 10) return;
  const double mode = modalWidth(columns);
  result.modalWidthPx = mode;
  const double low = std::max(3.0, std::min(mode - 10, mode * 0.5));
  const double high = std::min(100.0, std::max(mode + 10, mode * 1.5));
  std::vector<std::vector<TStripeCandidate>> table;
  for (auto& [x, candidates] : columns) {
    candidates.erase(
        std::remove_if(candidates.begin(), candidates.end(),
                       [&](const TStripeCandidate& c) { return c.widthPx < low || c.widthPx > high; }),
        candidates.end());
    if (!candidates.empty()) table.push_back(candidates);
  }
  if (table.size() < 10) return;
  std::vector<cv::Point2f> centres;
  selectRuns(table, 0, static_cast<int>(table.size()), centres);
  result.centres = filterJumps(centres);
}

TExtraction extractStripe(const cv::Mat& grey, const std::vector<cv::Rect>& regions, int threshold) {
  TExtraction result;
  for (const cv::Rect& region : regions) {
    const cv::Rect inside = region & cv::Rect({0, 0}, grey.size());
    if (inside.empty()) continue;
    cv::Mat regionImage;
    cv::transpose(grey(inside), regionImage);
    scanStripeRegion(regionImage, region, threshold, result);
  }
  reduceStripeCandidates(result);
  return result;
}

}  // namespace weld::plain
