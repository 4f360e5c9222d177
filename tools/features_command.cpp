// zelweld features: the report of the seam measurement for each frame.
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/gbk_text.h"
#include "tools/output.h"
#include "zelFunctions.h"
#include "zelWeldDetect.h"

#include <memory>

namespace tool {
namespace {

// Receives the library's debugging texts while it lives.
class TReportCatcher {
public:
  TReportCatcher() {
    zel::setDebugStringSink([this](const std::string& text) { report += text; });
  }
  ~TReportCatcher() { zel::setDebugStringSink({}); }
  TReportCatcher(const TReportCatcher&) = delete;
  TReportCatcher& operator=(const TReportCatcher&) = delete;

  const std::string& text() const { return report; }

private:
  std::string report;
};

std::string reportOf(const cv::Mat& image) {
  const TReportCatcher catcher;
  calcWeldFeatures(image, TWeldParams());
  return utf8FromGbk(catcher.text());
}

void run(const std::vector<std::string>& inputs) {
  TFrameSource source(listInputs(inputs));
  while (const auto frame = source.next()) {
    printLine(frame->name + ": " + reportOf(frame->image));
  }
}

}  // namespace

void addFeaturesCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("features", "Print the report of the seam measurement");
  const auto inputs = std::make_shared<std::vector<std::string>>();
  command->add_option("INPUT", *inputs, "Image files, folders, patterns (frame_%03d.png), video files")
      ->required();
  command->footer(
      "This release of the library measures nothing yet: angles, gap flag and score are reported as 0.\n"
      "Example:\n"
      "  zelweld features frames/");
  command->callback([inputs] { run(*inputs); });
}

}  // namespace tool
