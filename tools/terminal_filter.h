// Standard output on a terminal: records hold the names of files as they are, and names may hold control characters.
#pragma once

#include <ostream>
#include <streambuf>

namespace tool {

// While it lives, spaces stand for the control characters, but the ends of lines, of what goes to the stream.
class TTerminalFilter : public std::streambuf {
public:
  explicit TTerminalFilter(std::ostream& stream) : out(stream), target(stream.rdbuf(this)) {}
  ~TTerminalFilter() override { out.rdbuf(target); }
  TTerminalFilter(const TTerminalFilter&) = delete;
  TTerminalFilter& operator=(const TTerminalFilter&) = delete;

protected:
  int_type overflow(int_type c) override {
    const bool isHighControl = isAfterC2 && c >= 0x80 && c < 0xA0;  // written in UTF-8
    const bool isControl = (c < 0x20 && c != '\n') || c == 0x7F || isHighControl;
    isAfterC2 = c == 0xC2;
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : target->sputc(isControl ? ' ' : static_cast<char>(c));
  }
  int sync() override { return target->pubsync(); }

private:
  std::ostream& out;
  std::streambuf* target;
  bool isAfterC2 = false;
};

}  // namespace tool
