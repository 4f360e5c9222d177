// The library's side of zelFunctions.h: where texts go out and switches are read.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zel {

inline constexpr std::uint32_t G_appshowMsg_defaultColor = 0x000000;

// Hands a line of debugging text to the application; nothing happens when it did not plug in a sink.
void outPutDebugString(const std::string& text);

// Shows the operator a message.
void APPshowMessage(const std::string& text, std::uint32_t colour);

// Reads an application switch; false when the application did not plug in a source.
bool APPgetParamBool(const std::string& name);

// Millisecond timer.
class TZELTime {
public:
  void start() { begin = std::chrono::steady_clock::now(); }
  int getTimeMs() const {
    const auto elapsed = std::chrono::steady_clock::now() - begin;
    return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
  }

private:
  std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

}  // namespace zel
