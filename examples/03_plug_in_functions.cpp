// Plugging in the host's side: where diagnostic text goes and how application switches are answered. All of
// it is optional; without it the library is silent and every switch is off.
#include <zelFunctions.h>
#include <zelWeldDetect.h>

#include <iostream>
#include <map>

int main() {
  zel::setDebugStringSink([](const std::string& text) { std::cerr << "debug: " << text << '\n'; });
  zel::setMessageSink([](const std::string& text, std::uint32_t colour) {
    std::cerr << "operator, colour " << std::hex << colour << std::dec << ": " << text << '\n';
  });

  const std::map<std::string, bool> switches{{"NeedPrintPlateWeldInfo", true}};
  zel::setParamBoolSource([switches](const std::string& name) {
    const auto entry = switches.find(name);
    return entry != switches.end() && entry->second;
  });

  // A frame without a stripe: nothing is found, and nothing is an error.
  const cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(0));
  TWeldTracker tracker(TPlateSettings().params(TWeldPosType::left));
  const TTrackedSeam seam = tracker.track(frame);

  // An empty function takes a plug out again.
  zel::setDebugStringSink({});
  zel::setMessageSink({});
  zel::setParamBoolSource({});
  return seam.state == TSeamState::lost ? 0 : 1;
}
