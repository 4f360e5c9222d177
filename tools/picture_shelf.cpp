#include "tools/picture_shelf.h"

#include <utility>

namespace tool {
namespace {

constexpr std::size_t kMinOrdinary = 24;  // frames

}  // namespace

bool TPictureShelf::wantsNext(bool isNotable) {
  current = isNotable ? &notable : &ordinary;
  return current->announced++ % current->step == 0;
}

void TPictureShelf::put(int frame, std::string text) {
  bytes += text.size();
  kept.emplace(frame, std::move(text));
  current->numbers.emplace(frame, current->announced - 1);
  while (bytes > limit && (ordinary.numbers.size() > 1 || notable.numbers.size() > 1)) {
    const bool hasOrdinary = ordinary.numbers.size() > kMinOrdinary || notable.numbers.size() <= 1;
    thinOut(hasOrdinary ? ordinary : notable);
  }
}

void TPictureShelf::thinOut(TKind& kind) {
  kind.step *= 2;
  for (auto it = kind.numbers.begin(); it != kind.numbers.end();) {
    const auto [frame, number] = *it;
    if (number % kind.step == 0) {
      ++it;
      continue;
    }
    bytes -= kept.at(frame).size();
    kept.erase(frame);
    it = kind.numbers.erase(it);
  }
}

}  // namespace tool
