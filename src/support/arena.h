// Memory for lists that all die together.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <optional>
#include <utility>

namespace weld {

// Hands out memory and takes it back all at once. Keeps one block as large as the rounds so far needed, so that
// later ones need no heap.
class TArena {
public:
  // Ends the round before, whose lists must be gone. The memory holds until the next call.
  std::pmr::memory_resource* beginRound() {
    round.reset();
    if (overflow.bytes > 0) {
      const std::size_t needed = std::exchange(blockBytes, 0) + overflow.bytes;
      block.reset();
      block.reset(new std::byte[needed]);
      blockBytes = needed;
      overflow.bytes = 0;
    }
    return &round.emplace(block.get(), blockBytes, &overflow);
  }

private:
  // The heap, and what it was asked for in a round.
  class TOverflow : public std::pmr::memory_resource {
  public:
    std::size_t bytes = 0;

  private:
    void* do_allocate(std::size_t size, std::size_t alignment) override {
      void* const memory = std::pmr::new_delete_resource()->allocate(size, alignment);
      bytes += size;
      return memory;
    }
    void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
      std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
  };

  TOverflow overflow;
  std::size_t blockBytes = 0;
  std::unique_ptr<std::byte[]> block;
  std::optional<std::pmr::monotonic_buffer_resource> round;
};

}  // namespace weld
