// Writes docs/parameters.md and its drawings from the parameter table: parameter_page DOCS_FOLDER
#include "tools/cli_error.h"
#include "tools/output_file.h"
#include "tools/parameter.h"
#include "tools/parameter_page/figures.h"
#include "tools/text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::string kFigureFolder = "images/parameters";

const std::string kIntroduction = R"(# Parameters

<!-- Written by `make docs` from src/api/joint_parameters.cpp and tools/parameter_page; change those instead. -->

What each joint reads from `TWeldParams`, by name and by the field that holds it; `zelweld` takes either, and
`zelweld params --type NAME` prints the same. In the drawings the stripe is red, what a parameter sets is blue, and what
the detector measures and compares with it is grey. Stripes are rendered scenes; lengths and angles are to scale, with
every parameter at its default. Angles are those of atan(dy/dx) with y pointing down: a stripe that falls to the right
has a positive angle. Shares, counts without a place in the image, and what is true or false have no line.

[algorithms.md](algorithms.md) says in which order the detectors apply them. `zelweld sweep` shows what a value does on
frames of your own.
)";

std::string figureLink(const tool::TFigure& figure) {
  return "![" + figure.caption + "](" + kFigureFolder + "/" + figure.name + ".svg)\n";
}

std::string tableRow(const TWeldParameter& parameter) {
  const bool isFlag = tool::isFlag(parameter);
  return tool::join(
      {"| `" + std::string(parameter.name) + "` (`" + parameter.field + "`)", parameter.meaning,
       *parameter.unit == '\0' ? "-" : parameter.unit, tool::valueOf(TWeldParams(), parameter).dump(),
       weldParameterRange(parameter), (isFlag ? "`false`: " : "") + std::string(parameter.tooLow),
       (isFlag ? "`true`: " : "") + std::string(parameter.tooHigh) + " |\n"},
      " | ");
}

bool readTheSame(const TWeldJoint& a, const TWeldJoint& b) {
  const auto isSame = [](const TWeldParameter& p, const TWeldParameter& q) {
    return std::string(p.name) == q.name && std::string(p.meaning) == q.meaning;
  };
  return std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(), b.parameters.end(), isSame);
}

std::string headingOf(const std::vector<TWeldJoint>& joints) {
  std::vector<std::string> names;
  for (const TWeldJoint& joint : joints) {
    names.emplace_back(joint.name);
  }
  return "\n## " + tool::join(names, ", ") + "\n\n";
}

// Joints that read the same parameters have one section.
std::string sectionOf(const std::vector<TWeldJoint>& joints) {
  std::string text = headingOf(joints);
  for (const TWeldJoint& joint : joints) {
    for (const tool::TFigure& figure : tool::figuresOf(joint.type)) {
      text += figureLink(figure) + "\n";
    }
  }
  text += "| name | meaning | unit | default | range | too low | too high |\n|---|---|---|---|---|---|---|\n";
  for (const TWeldParameter& parameter : joints.front().parameters) {
    text += tableRow(parameter);
  }
  return text;
}

std::vector<std::vector<TWeldJoint>> sections() {
  std::vector<std::vector<TWeldJoint>> list;
  for (const TWeldJoint& joint : weldJoints()) {
    if (list.empty() || !readTheSame(list.back().front(), joint)) {
      list.emplace_back();
    }
    list.back().push_back(joint);
  }
  return list;
}

void writePage(const fs::path& docs) {
  fs::create_directories(docs / kFigureFolder);
  std::string page = kIntroduction;
  for (const std::vector<TWeldJoint>& joints : sections()) {
    for (const TWeldJoint& joint : joints) {
      for (const tool::TFigure& figure : tool::figuresOf(joint.type)) {
        tool::writeWholeFile(docs / kFigureFolder / (figure.name + ".svg"), figure.svg);
      }
    }
    page += sectionOf(joints);
  }
  tool::writeWholeFile(docs / "parameters.md", page);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: parameter_page DOCS_FOLDER" << std::endl;
    return static_cast<int>(tool::TExit::usage);
  }
  try {
    writePage(argv[1]);
    return static_cast<int>(tool::TExit::ok);
  } catch (const tool::TCliError& error) {
    std::cerr << "parameter_page: " << error.what() << std::endl;
    return static_cast<int>(error.exitCode);
  }
}
