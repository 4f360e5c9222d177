// Memory for the lists of a frame, which all die with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <type_traits>
#include <utility>

namespace weld {

// Hands out the bytes of one block in turn. What was handed out last can be given back, so that lists which die in
// the opposite order of their birth leave the same, still warm bytes to the next ones. The heap serves what the
// block has no room for.
class TArena : public std::pmr::memory_resource {
public:
  TArena() = default;
  // Begins with a block of the caller's, which must outlive it.
  TArena(std::byte* firstBlock, std::size_t bytes) : block(firstBlock), blockBytes(bytes) {}

  // Makes the block at least as large as this, and touches it. No list may be alive.
  void reserve(std::size_t bytes) {
    used = 0;
    if (bytes <= blockBytes) return;
    blockBytes = 0;
    own.reset();
    own = std::make_unique<std::byte[]>(bytes);
    block = own.get();
    blockBytes = bytes;
  }

  // Begins a frame. No list may be alive. What the one before took from the heap is added to the block, twice: the
  // next frame may need a little more.
  void restart() { reserve(blockBytes + 2 * std::exchange(overflowBytes, 0)); }

private:
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    const std::size_t step = size < kSmall ? alignment : kCacheLine;
    const std::size_t begin = (used + step - 1) / step * step;
    // Of an empty list too the first byte lies inside the block, or its return would be taken for the heap's.
    if (begin < blockBytes && begin + size <= blockBytes) {
      used = begin + size;
      return block + begin;
    }
    void* const memory = std::pmr::new_delete_resource()->allocate(size, alignment);
    overflowBytes += size;
    return memory;
  }

  void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
    auto* const bytes = static_cast<std::byte*>(memory);
    if (!isInBlock(bytes)) {
      std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    } else if (bytes + size == block + used) {
      used -= size;
    }
  }

  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  static constexpr std::size_t kCacheLine = 64;  // where lists begin that vector code may run over
  static constexpr std::size_t kSmall = 256;

  bool isInBlock(const std::byte* bytes) const {
    const auto address = reinterpret_cast<std::uintptr_t>(bytes);
    const auto begin = reinterpret_cast<std::uintptr_t>(block);
    return address >= begin && address < begin + blockBytes;
  }

  std::unique_ptr<std::byte[]> own;
  std::byte* block = nullptr;
  std::size_t blockBytes = 0;
  std::size_t used = 0;
  std::size_t overflowBytes = 0;
};

// Room for elements that are written before they are read; for whole images, where filling them would take longer
// than using them.
template <typename T>
class TBuffer {
public:
  TBuffer() = default;
  TBuffer(std::pmr::memory_resource* where, std::size_t elements)
      : memory(where), count(elements), first(static_cast<T*>(memory->allocate(count * sizeof(T), alignof(T)))) {}
  TBuffer(TBuffer&& other) noexcept
      : memory(std::exchange(other.memory, nullptr)), count(other.count), first(other.first) {}
  TBuffer& operator=(TBuffer&& other) noexcept {
    std::swap(memory, other.memory);
    std::swap(count, other.count);
    std::swap(first, other.first);
    return *this;
  }
  ~TBuffer() {
    if (memory != nullptr) memory->deallocate(first, count * sizeof(T), alignof(T));
  }

  T* data() const { return first; }
  std::size_t size() const { return count; }

private:
  static_assert(std::is_trivially_copyable_v<T>, "elements come to life by being written");

  std::pmr::memory_resource* memory = nullptr;
  std::size_t count = 0;
  T* first = nullptr;
};

}  // namespace weld
