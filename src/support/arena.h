// Memory for lists that all die together.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <optional>
#include <utility>

namespace weld {

// Hands out memory and takes it back all at once. Keeps one block, so that later rounds need no heap.
class TArena {
public:
  // Makes the block as large as this where it is smaller, and touches it. Ends the round before, whose lists must
  // be gone.
  void reserve(std::size_t bytes) {
    round.reset();
    if (bytes <= blockBytes) return;
    blockBytes = 0;
    block.reset();
    block = std::make_unique<std::byte[]>(bytes);
    blockBytes = bytes;
  }

  // Ends the round before, whose lists must be gone. The memory holds until the next call. What a round takes from
  // the heap beyond the block is added to the block of the next one.
  std::pmr::memory_resource* beginRound() {
    reserve(blockBytes + std::exchange(overflow.bytes, 0));
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
