#include "allocations.h"

#include <opencv2/core.hpp>

#include <cstdlib>
#include <new>

namespace {

int allocations = 0;  // the program has one thread

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace bench {

namespace {

// Hands every request on.
class TCountingAllocator : public cv::MatAllocator {
public:
  cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, size_t* step, cv::AccessFlag flags,
                         cv::UMatUsageFlags usage) const override {
    ++allocations;
    return standard->allocate(dims, sizes, type, data, step, flags, usage);
  }
  bool allocate(cv::UMatData* data, cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
    return standard->allocate(data, flags, usage);
  }
  void deallocate(cv::UMatData* data) const override { standard->deallocate(data); }

private:
  const cv::MatAllocator* standard = cv::Mat::getStdAllocator();
};

}  // namespace

int countAllocations(const std::function<void()>& work) {
  TCountingAllocator counting;
  cv::MatAllocator* const before = cv::Mat::getDefaultAllocator();
  cv::Mat::setDefaultAllocator(&counting);
  const int countBefore = allocations;
  work();
  const int count = allocations - countBefore;
  cv::Mat::setDefaultAllocator(before);
  return count;
}

}  // namespace bench
