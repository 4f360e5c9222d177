// Bounds of numbers on the command line, with messages that people can read.
#pragma once

#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <string>

namespace tool {

// A number that is at least so much; infinity is.
inline CLI::Validator atLeast(double least) {
  const auto check = [least](const std::string& text) {
    double value = 0.0;
    const bool isRight = parseNumber(text, value) && value >= least;
    return isRight ? std::string() : "'" + text + "' is no number from " + plain(least) + " upwards";
  };
  return {check, "", "at least"};
}

// A number above 0; infinity is.
inline CLI::Validator aboveZero() {
  const auto check = [](const std::string& text) {
    double value = 0.0;
    const bool isRight = parseNumber(text, value) && value > 0.0;
    return isRight ? std::string() : "'" + text + "' is no number above 0";
  };
  return {check, "", "above 0"};
}

}  // namespace tool
