#include "support/heap.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

std::atomic<long> requestCount{0};
std::atomic<long> liveCount{0};
std::atomic<long> firstFailing{kNever};  // in requests
std::atomic<long> lastFailing{kNever};

// Counts a request and says whether it may be met.
bool isMet() {
  const long number = ++requestCount;
  return number < firstFailing || number > lastFailing;
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZER_OWNS_MALLOC
#elif defined(__has_feature)  // clang
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SANITIZER_OWNS_MALLOC
#endif
#endif

#ifdef SANITIZER_OWNS_MALLOC

void* operator new(std::size_t size) {
  if (isMet()) {
    if (void* const memory = std::malloc(size)) return memory;
  }
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return isMet() ? std::malloc(size) : nullptr;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

#else

// Names of the GNU C library for its own functions behind the ones replaced here.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

void* counted(void* memory) {
  if (memory != nullptr) {
    ++liveCount;
  } else {
    errno = ENOMEM;
  }
  return memory;
}

}  // namespace

#define REPLACES_LIBC extern "C" __attribute__((visibility("default")))

REPLACES_LIBC void* malloc(std::size_t size) noexcept {
  return counted(isMet() ? __libc_malloc(size) : nullptr);
}
REPLACES_LIBC void* calloc(std::size_t count, std::size_t size) noexcept {
  return counted(isMet() ? __libc_calloc(count, size) : nullptr);
}
REPLACES_LIBC void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return counted(isMet() ? __libc_memalign(alignment, size) : nullptr);
}
REPLACES_LIBC void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return memalign(alignment, size);
}
REPLACES_LIBC int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
  void* const block = memalign(alignment, size);
  if (block == nullptr) return ENOMEM;
  *memory = block;
  return 0;
}
REPLACES_LIBC void free(void* memory) noexcept {
  if (memory != nullptr) --liveCount;
  __libc_free(memory);
}
REPLACES_LIBC void* realloc(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return malloc(size);
  if (size == 0) {
    free(memory);
    return nullptr;
  }
  return isMet() ? __libc_realloc(memory, size) : nullptr;
}

#endif

namespace heap {

long requests() {
  return requestCount;
}
long liveBlocks() {
  return liveCount;
}

TFailingRequests::TFailingRequests(long n, TOutage outage) : first(requestCount + n) {
  lastFailing = outage == TOutage::oneRequest ? first : kNever;
  firstFailing = first;
}
TFailingRequests::~TFailingRequests() {
  firstFailing = kNever;
}
bool TFailingRequests::hasStruck() const {
  return requestCount >= first;
}

}  // namespace heap
