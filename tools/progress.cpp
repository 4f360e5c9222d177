#include "tools/progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace tool {
namespace {

constexpr int kBarWidth = 30;  // characters

std::string barOf(int done, int total) {
  const int filled = total > 0 ? std::min(kBarWidth, kBarWidth * done / total) : 0;
  return "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " + std::to_string(done) +
         "/" + std::to_string(total);
}

}  // namespace

TProgress::TProgress(std::optional<int> totalFrames)
    : isTerminal(isatty(STDERR_FILENO) == 1), total(totalFrames) {}

TProgress::~TProgress() {
  clear();
}

void TProgress::draw(int done) {
  if (isTerminal) {
    std::cerr << '\r' << (total ? barOf(done, *total) : "frame " + std::to_string(done)) << std::flush;
    isDrawn = true;
  }
}

void TProgress::clear() {
  if (isDrawn) {
    std::cerr << "\r\033[K" << std::flush;
    isDrawn = false;
  }
}

}  // namespace tool
