// Seeds of random tests: from the test's name, the same on every machine.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace testing_support {

// FNV-1a (Fowler, Noll and Vo, 1991).
inline std::uint64_t seedOf(const std::string& name) {
  std::uint64_t hash = 0xCBF29CE484222325ULL;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
  return hash;
}

inline std::uint64_t seedOfCurrentTest() {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  return seedOf(std::string(test.test_suite_name()) + "." + test.name());
}

}  // namespace testing_support
