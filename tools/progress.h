// A progress bar on standard error, on a terminal only.
#pragma once

#include <optional>

namespace tool {

class TProgress {
public:
  // Without a total it counts only.
  explicit TProgress(std::optional<int> totalFrames);
  ~TProgress();
  TProgress(const TProgress&) = delete;
  TProgress& operator=(const TProgress&) = delete;

  void draw(int done);

  // Takes the bar away so that other text may be written.
  void clear();

private:
  bool isTerminal;
  std::optional<int> total;
  bool isDrawn = false;
};

}  // namespace tool
