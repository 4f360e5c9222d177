// A frame during which the heap runs out at any one request: the standard exception arrives, nothing leaks, and
// the same frame right after gives the right result.
#include "support/checksum.h"
#include "support/detector_types.h"
#include "support/heap.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace {

using detector_types::frameFor;
using detector_types::paramsFor;
using heap::TOutage;

using TFrameCall = std::function<TWeldLineRes()>;

struct TSubject {
  std::string name;
  std::function<TFrameCall()> make;  // sets everything up for one frame
};

void PrintTo(const TSubject& subject, std::ostream* stream) {
  *stream << subject.name;
}

TSubject plainCall(const std::string& name, TFrameCall call) {
  return {name, [call = std::move(call)] { return call; }};
}

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& previous) {
  TWeldParams own = params;
  return detectWeldLineViaTracking(image, own, previous);
}

std::vector<TSubject> detections(const std::string& name, const TWeldParams& params, const cv::Mat& image) {
  const TWeldLineRes previous = detect(image, params, {});
  return {plainCall(name + "First", [=] { return detect(image, params, {}); }),
          plainCall(name + "Tracking", [=] { return detect(image, params, previous); })};
}

// The second frame of a tracker, in which the seam has moved.
TSubject tracked(const std::string& name, const TWeldParams& params, const TTrackerOptions& options) {
  const cv::Mat image = frameFor(params.weldType);
  const cv::Mat moved = image(cv::Rect(0, 0, image.cols - 4, image.rows - 3)).clone();
  const cv::Mat first = image(cv::Rect(4, 3, image.cols - 4, image.rows - 3)).clone();
  return {name, [=] {
            const auto tracker = std::make_shared<TWeldTracker>(params, options);
            tracker->track(first);
            return [=] { return tracker->track(moved).line; };
          }};
}

TSubject exposure() {
  cv::Mat image(240, 320, CV_8UC3, cv::Scalar::all(20));
  image(cv::Rect(100, 60, 120, 90)).setTo(cv::Scalar::all(255));
  return plainCall("exposure", [image] {
    int meanGray = 0;
    int brightPixels = 0;
    LightingAdaptation::calcExposureParam(image, meanGray, brightPixels);
    TWeldLineRes figures;
    figures.auxVal1 = meanGray;
    figures.auxVal2 = brightPixels;
    return figures;
  });
}

TSubject features() {
  const cv::Mat image = frameFor(TWeldType::corner);
  return plainCall("features", [image] {
    TWeldLineRes figures;
    figures.auxVal1 = calcWeldFeatures(image, TWeldParams()).score;
    return figures;
  });
}

std::vector<TSubject> allSubjects() {
  std::vector<TSubject> subjects{exposure(), features()};
  for (const TWeldType type : detector_types::kAll) {
    for (TSubject& subject : detections(findWeldJoint(type)->name, paramsFor(type), frameFor(type)))
      subjects.push_back(std::move(subject));
    TTrackerOptions keepTrace;
    keepTrace.keepTrace = true;
    subjects.push_back(tracked(std::string(findWeldJoint(type)->name) + "Tracker", paramsFor(type), keepTrace));
    subjects.push_back(tracked(std::string(findWeldJoint(type)->name) + "ExactTracker", paramsFor(type),
                               TTrackerOptions::exact()));
  }
  TWeldParams ridge = paramsFor(TWeldType::stripePresence);
  ridge.flagPara1 = true;
  // Ridges take long and ask often.
  const cv::Mat band = frameFor(ridge.weldType)(cv::Rect(0, 200, 640, 80)).clone();
  for (TSubject& subject : detections("ridge", ridge, band)) subjects.push_back(std::move(subject));
  return subjects;
}

struct TAttempt {
  bool hasStruck = false;  // the frame made so many requests
  bool isRefused = false;  // it ended with the standard exception
  TWeldLineRes result;     // of the frame, repeated where it was refused
};

TAttempt frameWithout(long request, TOutage outage, const TFrameCall& call) {
  TAttempt attempt;
  {
    const heap::TFailingRequests failing(request, outage);
    try {
      attempt.result = call();
    } catch (const std::bad_alloc&) {
      attempt.isRefused = true;
    } catch (const cv::Exception& error) {
      attempt.isRefused = error.code == cv::Error::StsNoMem;
    }
    attempt.hasStruck = failing.hasStruck();
  }
  if (attempt.isRefused) attempt.result = call();
  return attempt;
}

// OpenCV's own allocator asks for the pixels of a cv::Mat first and loses them when there is no memory for their
// header. This one asks the other way round, so that every block that is lost is the library's doing.
class THeaderFirstAllocator : public cv::MatAllocator {
public:
  cv::UMatData* allocate(int dims, const int* sizes, int type, void* /*data*/, std::size_t* step,
                         cv::AccessFlag /*flags*/, cv::UMatUsageFlags /*usage*/) const override {
    auto header = std::make_unique<cv::UMatData>(this);
    header->size = CV_ELEM_SIZE(type);
    for (int i = dims - 1; i >= 0; --i) {
      step[i] = header->size;
      header->size *= sizes[i];
    }
    header->data = header->origdata = static_cast<uchar*>(cv::fastMalloc(header->size));
    return header.release();
  }
  bool allocate(cv::UMatData* /*data*/, cv::AccessFlag /*flags*/, cv::UMatUsageFlags /*usage*/) const override {
    return false;
  }
  void deallocate(cv::UMatData* data) const override {
    cv::fastFree(data->origdata);
    delete data;
  }
};

class AllocationFailure : public testing::TestWithParam<TSubject> {
protected:
  // OpenCV tells about its exceptions on standard error, and sets itself up for that with the first one.
  static void SetUpTestSuite() {
    cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return 0; });
    EXPECT_THROW(CV_Error(cv::Error::StsNoMem, ""), cv::Exception);
    static THeaderFirstAllocator headerFirst;
    cv::Mat::setDefaultAllocator(&headerFirst);
  }
};

void expectSurvival(const TSubject& subject, TOutage outage) {
  const TWeldLineRes expected = subject.make()();
  bool hasStruck = true;
  for (long request = 1; hasStruck; ++request) {
    SCOPED_TRACE((outage == TOutage::oneRequest ? "request " : "from request ") + std::to_string(request));
    const long liveBefore = heap::liveBlocks();
    {
      const TAttempt attempt = frameWithout(request, outage, subject.make());
      EXPECT_EQ(checksumOf(attempt.result), checksumOf(expected));
      hasStruck = attempt.hasStruck;
    }
    ASSERT_EQ(heap::liveBlocks(), liveBefore);
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

TEST_P(AllocationFailure, frameGivesTheStandardExceptionAndTheNextOneItsResult) {
  for (const TOutage outage : {TOutage::oneRequest, TOutage::allFromThere}) expectSurvival(GetParam(), outage);
}

INSTANTIATE_TEST_SUITE_P(Frames, AllocationFailure, testing::ValuesIn(allSubjects()),
                         [](const auto& subject) { return subject.param.name; });

}  // namespace
