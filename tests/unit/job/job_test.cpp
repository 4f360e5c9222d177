// Jobs as texts: what is written comes back, and what is wrong is named with its line.
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

TJointTemplate hookedJoint() {
  TJointTemplate j;
  j.name = "J groove";
  j.elements = {TJointElement::plate(), TJointElement::flank(40, 85).optionally(),
                TJointElement::arc(20, 150).smoothly(), TJointElement::stepUp(30), TJointElement::plate()};
  j.elements[2].isHollow = true;
  j.elements[4].lengthPx.max = 900.5;
  j.points = {{TFeature::leftShoulder, TJointPlace::start, 1},
              {TFeature::root, TJointPlace::middle, 3},
              {TFeature::rightShoulder, TJointPlace::start, 4}};
  j.tracked = TFeature::rightShoulder;
  j.mayBeMirrored = true;
  j.lineTolerancePx = 3.25;
  return j;
}

// Nothing at its default.
TWeldJob changedJob() {
  TWeldJob job;
  TTrackerOptions& t = job.tracker;
  t.guideMarginPx = 7;
  t.extraction = TStripeExtraction::ridge;
  t.rejectImpossiblePoints = t.searchWholeOnLoss = false;
  t.maxJumpPx = TJointRange::kAny;
  t.acceptAfterFrames = 4;
  t.holdFrames = 0;
  t.keepTrace = t.giveAdvice = true;
  t.source = TSeamSource::both;
  t.lookAtPx = 12.5F;
  t.contrast = {TSeamPolarity::edge, 5.5F, 30.0F, {3.0F, 4.0F}, 20.0F, 200.0F, 1.0F, 9.0F, 50.0F, 0.625F};
  job.preparation = {cv::Rect(3, 4, 50, 60), 270, TImageChannel::redExcess};
  return job;
}

TJobReading read(const std::string& members) {
  return parseWeldJob("{\"zelWeldJob\": 1,\n" + members + "}");
}

}  // namespace

// Each field under a name of its own: all change together, and the text of what was read is the text that was
// read.
TEST(Job, EveryFieldComesBackForEveryJoint) {
  for (const TWeldJoint& joint : weldJoints()) {
    TWeldJob job = changedJob();
    initWeldParameters(joint.type, job.params, joint.positions.back());
    double step = 0.0;
    for (const TWeldParameter& parameter : joint.parameters) {
      step += 1.0;
      parameter.value.set(job.params, parameter.limits.min + (parameter.limits.max > 50.0 ? step : step / 32.0));
    }
    const std::string text = writeWeldJob(job);
    const TJobReading reading = parseWeldJob(text);
    EXPECT_EQ(reading.problem, "") << text;
    EXPECT_EQ(writeWeldJob(reading.job), text) << joint.name;
    EXPECT_EQ(reading.job.params.weldPosType, joint.positions.back());
    for (const TWeldParameter& parameter : joint.parameters)
      EXPECT_EQ(parameter.value.get(reading.job.params), parameter.value.get(job.params)) << parameter.name;
    EXPECT_EQ(reading.job.preparation.region, job.preparation.region);
    EXPECT_EQ(reading.job.preparation.channel, TImageChannel::redExcess);
    EXPECT_EQ(reading.job.tracker.maxJumpPx, TJointRange::kAny);
    EXPECT_EQ(reading.job.tracker.extraction, TStripeExtraction::ridge);
  }
}

TEST(Job, OwnJointsComeBackWithTheirElementsAndPoints) {
  TWeldJob job = changedJob();
  job.ownJoint = hookedJoint();
  ASSERT_EQ(findTemplateProblem(*job.ownJoint), "");
  const std::string text = writeWeldJob(job);
  const TJobReading reading = parseWeldJob(text);
  ASSERT_EQ(reading.problem, "") << text;
  ASSERT_TRUE(reading.job.ownJoint);
  EXPECT_EQ(writeWeldJob(reading.job), text);
  const TJointTemplate& joint = *reading.job.ownJoint;
  EXPECT_EQ(joint.elements[1].angleDeg.max, 85.0);
  EXPECT_EQ(joint.elements[3].stepPx.max, -30.0);
  EXPECT_EQ(joint.elements[3].stepPx.min, -TJointRange::kAny);
  EXPECT_EQ(joint.elements[4].lengthPx.max, 900.5);
  EXPECT_TRUE(joint.elements[1].isOptional && joint.mayBeMirrored);
  EXPECT_EQ(joint.tracked, TFeature::rightShoulder);
}

TEST(Job, WhatIsNotNamedHasItsDefault) {
  const TJobReading reading = read(R"("joint": "butt-gap", "parameters": {"dPara8": 12})");
  ASSERT_EQ(reading.problem, "");
  TWeldJob job;
  TGapSettings settings;
  settings.minGapPx = 12.0;
  job.params = settings.params();
  EXPECT_EQ(writeWeldJob(reading.job), writeWeldJob(job));
}

// The form without a version; `instead` wins over its joint, which it need not have.
TEST(Job, ParameterFilesAreReadAndTheJointCanBeReplaced) {
  const std::string text = R"({"weldType": "corner", "dPara2": 4, "minFlankPoints": 30})";
  EXPECT_EQ(TCornerSettings::of(parseWeldJob(text).job.params).minFlankPoints, 30.0);
  EXPECT_NE(parseWeldJob(text, TWeldType::buttGap).problem, "");  // reads no minFlankPoints
  const TJobReading gap = parseWeldJob(R"({"dPara2": 4})", TWeldType::buttGap);
  EXPECT_EQ(gap.problem, "");
  EXPECT_EQ(gap.job.params.weldType, TWeldType::buttGap);
  EXPECT_EQ(read(R"("joint": "lap", "parameters": {"dPara2": 4})").job.params.weldType, TWeldType::lap);
}

TEST(Job, WhatIsWrongIsNamedWithItsLineAndWhatWouldBeRight) {
  const std::pair<std::string, std::string> rows[] = {
      {R"("joint": "gab")", "line 2: unknown joint type 'gab': use buttGap, lap, "},
      {R"("joint": ["gap"])", "unknown joint type 'a list'"},
      {R"("parameters": {})", "names no joint: give joint one of buttGap"},
      {"\"joint\": \"gap\",\n\"position\": \"upper\"", "line 3: buttGap knows no position 'upper': use centre"},
      {"\"joint\": \"gap\", \"parameters\": {\n\n\"minGapPx\": 0\n}",
       "line 4: minGapPx (dPara8) must be 2 to 100000, not 0"},
      {R"("joint": "gap", "parameters": {"minGapPx": "12"})", "not \"12\""},
      {R"("joint": "gap", "parameters": {"minGapPx": null})", "not null"},
      {R"("joint": "gap", "parameters": {"minGaPx": 1})", "did you mean minGapPx (dPara8)?"},
      {R"("joint": "gap", "parameters": {"minGapPx": 5, "dPara8": 5})", "sets minGapPx (dPara8) twice"},
      {R"("joint": "gap", "parameters": 5)", "parameters must be an object, not 5"},
      {R"("joint": "gap", "Tracker": {})", "unknown key 'Tracker': did you mean tracker?"},
      {R"("joint": "gap", "colour": 1)", "unknown key 'colour': use zelWeldJob, "},
      {R"("joint": "gap", "tracker": {"holdFrames": -1})",
       "tracker.holdFrames must be a whole number from 0 upwards, not -1"},
      {R"("joint": "gap", "tracker": {"holdFrames": 2.5})", "not 2.5"},
      {R"("joint": "gap", "tracker": {"holdFrames": 1e10})", "not 1e10"},
      {R"("joint": "gap", "tracker": {"maxJumpPx": 0})", "must be a number above 0, or null for never, not 0"},
      {R"("joint": "gap", "tracker": {"extraction": "edges"})",
       "tracker.extraction must be one of edgePairs, ridge, automatic, not \"edges\""},
      {R"("joint": "gap", "tracker": {"keepTrace": 1})", "tracker.keepTrace must be true or false, not 1"},
      {R"("joint": "gap", "image": {"rotationDeg": 45})", "image.rotationDeg must be 0, 90, 180 or 270"},
      {R"("joint": "gap", "image": {"region": {"width": 0}})", "image.region.width must be a whole number from 1"},
      {R"("joint": "gap", "ownJoint": {})", "ownJoint: "},
      {R"("ownJoint": {"elements": [{"shape": "plate"}, {"shape": "bow"}]})",
       "ownJoint.elements[1].shape must be one of plate, flank, flat, arc, gap, not \"bow\""},
      {R"("ownJoint": {"elements": [{"angleDeg": [1]}]})",
       "ownJoint.elements[0].angleDeg must be [least, most], either of them null"},
      {R"("ownJoint": {"elements": [5]})", "ownJoint.elements[0] must be an object, not 5"},
      {R"("ownJoint": {"elements": [{"shape": "plate"}, {"shape": "flank", "radiusPx": [1, 2]}]})",
       "elements[1].radiusPx has no meaning for a flank"},
  };
  for (const auto& [members, problem] : rows) {
    const TJobReading reading = read(members);
    EXPECT_NE(reading.problem.find(problem), std::string::npos) << members << "\n" << reading.problem;
    EXPECT_EQ(writeWeldJob(reading.job), writeWeldJob(TWeldJob())) << "all defaults";
  }
  EXPECT_NE(parseWeldJob(R"({"zelWeldJob": 2, "joint": "gap"})").problem.find("reads version 1"),
            std::string::npos);
  for (const char* const text : {"", "{", "[1", "nul", "{\"a\" 1}", "\"\xff\""}) {
    EXPECT_EQ(parseWeldJob(text).problem.rfind("line 1: no valid JSON: ", 0), 0U) << text;
  }
}

// A dot stays on its pixel whatever way the image is cut and turned; the controller steers by the stored image.
TEST(Preparation, PointsOfThePreparedImageLeadBackToTheStoredOne) {
  const cv::Point dot(33, 21);
  for (const std::int32_t rotation : {0, 90, 180, 270}) {
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
      for (const bool isCut : {false, true}) {
        cv::Mat stored = cv::Mat::zeros(48, 64, type);
        stored(cv::Rect(dot, cv::Size(1, 1))).setTo(cv::Scalar::all(200));
        TImagePreparation preparation{std::nullopt, rotation, TImageChannel::red};
        if (isCut) preparation.region = cv::Rect(7, 5, 40, 30);
        const cv::Mat before = stored.clone();
        const cv::Mat image = prepareImage(stored, preparation);
        ASSERT_EQ(image.type(), CV_8UC1);
        EXPECT_EQ(cv::norm(stored, before, cv::NORM_INF), 0.0) << "the stored image is the caller's";
        cv::Point found;
        cv::minMaxLoc(image, nullptr, nullptr, nullptr, &found);
        EXPECT_EQ(cv::Point(toStored(found, preparation, stored.size())), dot) << rotation << isCut << type;
      }
    }
  }
}

TEST(Preparation, WhatDoesNotFitTheImageGivesNoneAndASentence) {
  const cv::Mat grey(48, 64, CV_8UC1, cv::Scalar(9));
  const std::pair<TImagePreparation, cv::Mat> rows[] = {
      {{cv::Rect(60, 0, 5, 5), 0, TImageChannel::grey}, grey},
      {{cv::Rect(-1, 0, 5, 5), 0, TImageChannel::grey}, grey},
      {{cv::Rect(1, 0, 2147483647, 5), 0, TImageChannel::grey}, grey},
      {{cv::Rect(0, 0, 0, 5), 0, TImageChannel::grey}, grey},
      {{std::nullopt, 45, TImageChannel::grey}, grey},
      {{std::nullopt, 0, TImageChannel::redExcess}, grey},
      {{}, cv::Mat(48, 64, CV_16UC1)}};
  for (const auto& [preparation, image] : rows) {
    EXPECT_NE(findPreparationProblem(preparation, image), "");
    EXPECT_TRUE(prepareImage(image, preparation).empty());
  }
  EXPECT_TRUE(prepareImage(cv::Mat(), {}).empty());
}
