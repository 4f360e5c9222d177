#include "contrast/course.h"

#include <algorithm>

namespace weld {

namespace {

constexpr int kSmoothed = 2;  // strips on either side

// Straight fit through the neighbours of a station, which holds at the ends too.
void fitAround(const TList<float>& raw, int i, float& place, float& slope) {
  const int last = static_cast<int>(raw.size()) - 1;
  const int reach = std::min({kSmoothed, std::max(i, last - i)});
  const int begin = std::max(0, i - std::max(reach, 1));
  const int end = std::min(last, i + std::max(reach, 1));
  const float middle = 0.5F * static_cast<float>(begin + end);
  float sum = 0.0F;
  float moment = 0.0F;
  float spread = 0.0F;
  for (int k = begin; k <= end; ++k) {
    const float t = static_cast<float>(k) - middle;
    sum += raw[k];
    moment += t * raw[k];
    spread += t * t;
  }
  const float perStation = spread > 0.0F ? moment / spread : 0.0F;
  place = sum / static_cast<float>(end - begin + 1) + perStation * (static_cast<float>(i) - middle);
  slope = perStation / kStationPx;
}

}  // namespace

TCourse courseOf(const TSeamPath& path, const TLogField& field, TMemory* memory) {
  TCourse course(memory);
  const int count = static_cast<int>(path.columns.size());
  // A field pixel 2 n of the image has its middle at 2 n + 0.5.
  course.firstAlong = field.begin + kStationPx * path.firstStrip + (kStripRows - 1) + 0.5;
  TList<float> raw(memory);
  raw.reserve(path.columns.size());
  for (int i = 0; i < count; ++i) {
    const int row = (path.firstStrip + i) * kStripStep + kStripRows / 2;
    const int start = field.starts[row - 1] + field.starts[row];
    raw.push_back(static_cast<float>(start + 2 * path.columns[i]) + 0.5F);
  }
  course.across.resize(path.columns.size());
  course.slope.resize(path.columns.size());
  for (int i = 0; i < count; ++i) fitAround(raw, i, course.across[i], course.slope[i]);
  return course;
}

}  // namespace weld
