#include "support/arena.h"

#include <gtest/gtest.h>

namespace weld {
namespace {

TEST(Arena, handsOutAnAddressForNoBytesToo) {
  TArena arena;
  void* const beforeTheBlock = arena.allocate(0, 8);
  EXPECT_NE(beforeTheBlock, nullptr);
  arena.deallocate(beforeTheBlock, 0, 8);

  arena.reserve(64);
  void* const whole = arena.allocate(64, 8);
  void* const behindTheBlock = arena.allocate(0, 8);
  EXPECT_NE(behindTheBlock, nullptr);
  arena.deallocate(behindTheBlock, 0, 8);
  arena.deallocate(whole, 64, 8);
  EXPECT_EQ(arena.allocate(64, 8), whole);
}

}  // namespace
}  // namespace weld
