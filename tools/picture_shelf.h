// The frames that a report shows, as many as fit.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace tool {

// Keeps texts of frames within a limit. When they outgrow it, ordinary frames are thinned out evenly, every second
// one of those kept; only when few of them are left, notable ones are as well. Frames come in ascending order.
class TPictureShelf {
public:
  explicit TPictureShelf(std::size_t maxBytes) : limit(maxBytes) {}

  // Announces the next frame. True when its text is to be made and put; each frame is announced once.
  bool wantsNext(bool isNotable);

  // The text of the frame announced last.
  void put(int frame, std::string text);

  const std::map<int, std::string>& texts() const { return kept; }

  // Every so many frames of a kind were kept; 1: all.
  int ordinaryStep() const { return ordinary.step; }
  int notableStep() const { return notable.step; }

private:
  struct TKind {
    int step = 1;
    int announced = 0;
    std::map<int, int> numbers;  // number within the kind by frame
  };

  void thinOut(TKind& kind);

  std::size_t limit;
  std::size_t bytes = 0;
  std::map<int, std::string> kept;
  TKind ordinary;
  TKind notable;
  TKind* current = &ordinary;
};

}  // namespace tool
