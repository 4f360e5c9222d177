// The heap of the whole program, watched: how often it is asked for memory, what is still out, and requests that
// fail on demand. A program that compiles heap.cpp gets its own malloc and its kin, which hand on to the C
// library; operator new, cv::Mat and every other library ask there. Under a sanitizer, which brings a malloc of
// its own, it gets an operator new instead, and the pixels of a cv::Mat are not seen.
#pragma once

namespace heap {

// Requests so far, of all threads.
long requests();

// Blocks handed out and not yet given back. Always 0 under a sanitizer, which looks for leaks itself.
long liveBlocks();

enum class TOutage { oneRequest, allFromThere };

// While it lives, a request fails: the n-th from now on (n from 1), or every one from the n-th on.
class TFailingRequests {
public:
  TFailingRequests(long n, TOutage outage);
  ~TFailingRequests();
  TFailingRequests(const TFailingRequests&) = delete;
  TFailingRequests& operator=(const TFailingRequests&) = delete;

  // Whether so many requests came.
  bool hasStruck() const;

private:
  const long first;
};

}  // namespace heap
