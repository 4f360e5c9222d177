#include "support/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

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

// Lists beyond the block share chunks; those that fill one on their own come and go by themselves.
TEST(Arena, keepsListsApartBeyondItsBlock) {
  TArena arena;
  std::vector<std::pmr::vector<int>> lists;
  for (int i = 0; i < 400; ++i) lists.emplace_back(i % 7 == 0 ? 20000 : 40 * i, i, &arena);
  for (int i = 0; i < 400; i += 3) lists[i] = std::pmr::vector<int>(30 * i, -i, &arena);
  for (int i = 0; i < 400; ++i) {
    const int expected = i % 3 == 0 ? -i : i;
    EXPECT_TRUE(std::all_of(lists[i].begin(), lists[i].end(), [=](int e) { return e == expected; })) << i;
  }
  lists.clear();
  arena.restart();
  void* const whole = arena.allocate(1 << 20, 64);
  arena.deallocate(whole, 1 << 20, 64);
  EXPECT_EQ(arena.allocate(1, 1), whole);
}

}  // namespace
}  // namespace weld
