// Enumerators as they are written in jobs.
#include "job/job_fields.h"

namespace weld {

const std::vector<TNamed<TStripeExtraction>>& extractionNames() {
  static const std::vector<TNamed<TStripeExtraction>> names = {{TStripeExtraction::edgePairs, "edgePairs"},
                                                               {TStripeExtraction::ridge, "ridge"},
                                                               {TStripeExtraction::automatic, "automatic"}};
  return names;
}

const std::vector<TNamed<TSeamSource>>& sourceNames() {
  static const std::vector<TNamed<TSeamSource>> names = {
      {TSeamSource::stripe, "stripe"}, {TSeamSource::contrast, "contrast"}, {TSeamSource::both, "both"}};
  return names;
}

const std::vector<TNamed<TSeamPolarity>>& polarityNames() {
  static const std::vector<TNamed<TSeamPolarity>> names = {{TSeamPolarity::dark, "dark"},
                                                           {TSeamPolarity::bright, "bright"},
                                                           {TSeamPolarity::edge, "edge"},
                                                           {TSeamPolarity::automatic, "automatic"}};
  return names;
}

const std::vector<TNamed<TImageChannel>>& channelNames() {
  static const std::vector<TNamed<TImageChannel>> names = {{TImageChannel::grey, "grey"},
                                                           {TImageChannel::red, "red"},
                                                           {TImageChannel::green, "green"},
                                                           {TImageChannel::blue, "blue"},
                                                           {TImageChannel::redExcess, "red-excess"}};
  return names;
}

const std::vector<TNamed<TElementShape>>& shapeNames() {
  static const std::vector<TNamed<TElementShape>> names = {{TElementShape::plate, "plate"},
                                                           {TElementShape::flank, "flank"},
                                                           {TElementShape::flat, "flat"},
                                                           {TElementShape::arc, "arc"},
                                                           {TElementShape::gap, "gap"}};
  return names;
}

const std::vector<TNamed<TElementMeeting>>& meetingNames() {
  static const std::vector<TNamed<TElementMeeting>> names = {{TElementMeeting::corner, "corner"},
                                                             {TElementMeeting::rounded, "rounded"},
                                                             {TElementMeeting::smooth, "smooth"}};
  return names;
}

const std::vector<TNamed<TJointPlace>>& placeNames() {
  static const std::vector<TNamed<TJointPlace>> names = {{TJointPlace::start, "start"},
                                                         {TJointPlace::middle, "middle"},
                                                         {TJointPlace::end, "end"},
                                                         {TJointPlace::deepest, "deepest"}};
  return names;
}

const std::vector<TNamed<TFeature>>& featureNames() {
  static const std::vector<TNamed<TFeature>> names = [] {
    std::vector<TNamed<TFeature>> rows;
    for (auto i = static_cast<std::int32_t>(TFeature::root); i <= static_cast<std::int32_t>(TFeature::rightEnd);
         ++i)
      rows.push_back({static_cast<TFeature>(i), featureText(static_cast<TFeature>(i))});
    return rows;
  }();
  return names;
}

}  // namespace weld

const char* imageChannelText(TImageChannel channel) {
  return weld::nameIn(weld::channelNames(), channel);
}

const char* extractionText(TStripeExtraction extraction) {
  return extraction == TStripeExtraction::none ? "none" : weld::nameIn(weld::extractionNames(), extraction);
}

const char* sourceText(TSeamSource source) {
  return weld::nameIn(weld::sourceNames(), source);
}

const char* polarityText(TSeamPolarity polarity) {
  return weld::nameIn(weld::polarityNames(), polarity);
}
