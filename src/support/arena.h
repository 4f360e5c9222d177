// Memory for the lists of a frame, which all die with it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <type_traits>
#include <utility>

namespace weld {

// Bytes that are handed out in turn. What was handed out last can be given back.
class TByteRow {
public:
  TByteRow() = default;
  TByteRow(std::byte* bytes, std::size_t size) : first(bytes), count(size) {}

  std::size_t size() const { return count; }
  bool holds(const std::byte* bytes) const {
    const auto address = reinterpret_cast<std::uintptr_t>(bytes);
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    return address >= begin && address < begin + count;
  }

  // Null without room. Of an empty list too the first byte lies inside, so that its return is known for what it
  // is.
  std::byte* take(std::size_t size, std::size_t alignment) {
    const std::size_t step = size < kSmall ? alignment : kCacheLine;
    const std::size_t begin = (used + step - 1) / step * step;
    if (begin >= count || size > count - begin) return nullptr;
    used = begin + size;
    return first + begin;
  }
  void giveBack(const std::byte* bytes, std::size_t size) {
    if (bytes + size == first + used) used -= size;
  }
  void giveBackAll() { used = 0; }

private:
  static constexpr std::size_t kCacheLine = 64;  // where lists begin that vector code may run over
  static constexpr std::size_t kSmall = 256;

  std::byte* first = nullptr;
  std::size_t count = 0;
  std::size_t used = 0;
};

// Hands out the bytes of one block in turn, so that lists which die in the opposite order of their birth leave the
// same, still warm bytes to the next ones. What the block has no room for comes from the heap, small lists
// together.
class TArena : public std::pmr::memory_resource {
public:
  TArena() = default;
  // Begins with a block of the caller's, which must outlive it.
  TArena(std::byte* firstBlock, std::size_t bytes) : block(firstBlock, bytes) {}
  TArena(const TArena&) = delete;
  TArena& operator=(const TArena&) = delete;
  ~TArena() override { dropChunks(); }

  // Makes the block at least as large as this, and touches it. No list may be alive.
  void reserve(std::size_t bytes) {
    dropChunks();
    block.giveBackAll();
    if (bytes <= block.size()) return;
    block = {};
    own.reset();
    own = std::make_unique<std::byte[]>(bytes);
    block = {own.get(), bytes};
  }

  // Begins a frame. No list may be alive. What the one before took from the heap is added to the block, twice: the
  // next frame may need a little more.
  void restart() { reserve(block.size() + 2 * std::exchange(overflowBytes, 0)); }

private:
  struct TChunk {
    alignas(64) std::array<std::byte,
                           std::size_t{120} * 1024> bytes;  // not filled; below what the heap maps anew every time
    TByteRow row{bytes.data(), bytes.size()};
    std::unique_ptr<TChunk> earlier;
  };
  static constexpr std::size_t kLargest = sizeof(TChunk::bytes) / 2;  // that shares a chunk

  void* do_allocate(std::size_t size, std::size_t alignment) override {
    if (std::byte* const bytes = block.take(size, alignment)) return bytes;
    void* const bytes = size > kLargest ? std::pmr::new_delete_resource()->allocate(size, alignment)
                                        : takeFromChunk(size, alignment);
    overflowBytes += size;
    return bytes;
  }

  void* takeFromChunk(std::size_t size, std::size_t alignment) {
    if (chunks != nullptr) {
      if (std::byte* const bytes = chunks->row.take(size, alignment)) return bytes;
    }
    std::unique_ptr<TChunk> fresh(new TChunk);
    fresh->earlier = std::move(chunks);
    chunks = std::move(fresh);
    return chunks->row.take(size, alignment);
  }

  // One by one: a chain that drops itself calls itself once for each.
  void dropChunks() {
    while (chunks != nullptr) chunks = std::move(chunks->earlier);
  }

  void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
    auto* const bytes = static_cast<std::byte*>(memory);
    if (block.holds(bytes)) {
      block.giveBack(bytes, size);
    } else if (size > kLargest) {
      std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    } else {
      chunks->row.giveBack(bytes, size);
    }
  }

  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  std::unique_ptr<std::byte[]> own;
  TByteRow block;
  std::unique_ptr<TChunk> chunks;  // the newest
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
