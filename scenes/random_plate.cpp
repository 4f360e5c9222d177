#include "scenes/plate.h"
#include "scenes/random.h"

namespace scenes {
namespace {

constexpr double kDesignWidthPx = 1280.0;  // lengths below are meant for frames this wide

// How much worse than clean.
double troubleOf(TLevel level) {
  return level == TLevel::clean ? 0.0 : level == TLevel::noisy ? 0.5 : 1.0;
}

TSeamCourse placeCourse(TPlateSeam seam, double trouble, cv::Size size, TRandom& random) {
  const double scale = size.width / kDesignWidthPx;
  TSeamCourse course;
  course.centre = {size.width * random.uniform(0.3, 0.7), size.height * random.uniform(0.3, 0.7)};
  course.directionDeg = random.uniform(-90.0, 90.0);
  course.halfLengthPx = 600.0 * scale;
  course.bowPx = random.chance(0.5) ? random.uniform(-70.0, 70.0) * scale : 0.0;
  // Where it begins within the frame, one plate has a slit.
  if (random.chance(0.15 + 0.15 * trouble) && seam != TPlateSeam::step)
    course.beginPx = -random.uniform(120.0, 320.0) * scale;
  switch (seam) {
    case TPlateSeam::gap:
      course.widthPx = random.uniform(3.0, 20.0);
      course.depth = random.uniform(0.55, 0.95) - 0.25 * trouble;
      course.chamferPx = random.chance(0.6) ? random.uniform(1.0, 5.0) : 0.0;
      course.chamferGain = random.uniform(0.1, 0.5);
      course.edgeJitterPx = random.uniform(0.0, 0.3 + 0.7 * trouble);
      break;
    case TPlateSeam::tight:
      course.widthPx = random.uniform(1.0, 3.0);
      course.depth = random.uniform(0.4, 0.8) - 0.22 * trouble;
      course.edgeJitterPx = random.uniform(0.0, 0.15 + 0.2 * trouble);
      break;
    case TPlateSeam::step:
      course.depth = random.uniform(0.2, 0.5) - 0.08 * trouble;
      break;
    default:
      course.widthPx = random.uniform(1.0, 3.0);
      course.depth = random.uniform(0.35, 0.8) - 0.15 * trouble;
      course.edgeJitterPx = random.uniform(0.0, 0.15 + 0.2 * trouble);
      break;
  }
  return course;
}

// What does not belong to the seam, by the level.
void soil(TPlateSeam seam, double trouble, TRandom& random, TPlateLook& look) {
  const auto some = [&](double share, int most) {
    return random.chance(share * trouble) ? random.integer(1, most) : 0;
  };
  look.scratches = random.integer(0, 3 + static_cast<int>(16.0 * trouble));
  look.oxideSpots = some(0.8, 5);
  look.oilSpots = some(0.5, 3);
  look.tint = random.chance(0.7 * trouble) ? random.uniform(0.03, 0.15) : 0.0;
  look.shadow = random.chance(0.7 * trouble) ? random.uniform(0.15, 0.5) : 0.0;
  look.penumbraPx = random.uniform(8.0, 60.0);
  look.tacks = seam == TPlateSeam::none ? some(0.4, 2) : some(0.9, 3);
  look.glow = trouble > 0.5 && random.chance(0.6) ? random.uniform(80.0, 300.0) : 0.0;
  look.spatter = some(0.9, 25);
}

}  // namespace

TPlateParams randomPlate(TPlateSeam seam, TLevel level, std::uint64_t seed, cv::Size size) {
  const double trouble = troubleOf(level);
  TRandom random(seed, TStream::plate, 100 + static_cast<std::uint64_t>(seam));
  TPlateParams params;
  params.seam = seam;
  params.size = size;
  params.seed = mixBits(seed * 8 + static_cast<std::uint64_t>(seam));
  params.course = placeCourse(seam, trouble, size, random);
  TPlateLook& look = params.look;
  look.level = random.uniform(90.0, 180.0) - 40.0 * trouble;
  const double uneven = 0.1 + 0.6 * trouble;
  look.slope = {random.uniform(-uneven, uneven), random.uniform(-uneven, uneven)};
  look.vignette = random.uniform(0.0, 0.1 + 0.3 * trouble);
  const bool isSlit = params.course.beginPx > -params.course.halfLengthPx;
  const bool isUnequal =
      seam != TPlateSeam::step && seam != TPlateSeam::none && !isSlit && random.chance(0.5 * trouble);
  look.ratio = isUnequal ? random.uniform(0.8, 1.25) : 1.0;
  look.patches = random.uniform(0.01, 0.03 + 0.07 * trouble);
  look.grain = random.uniform(0.005, 0.02 + 0.05 * trouble);
  look.brushed = random.chance(0.8) ? random.uniform(0.02, 0.06 + 0.1 * trouble) : 0.0;
  look.brushedDeg = random.uniform(-90.0, 90.0);
  if (random.chance(0.3)) look.brushedDeg = params.course.directionDeg + random.uniform(-3.0, 3.0);
  if (random.chance(0.3)) look.brushedBendPx = random.uniform(400.0, 1500.0) * (random.chance(0.5) ? 1.0 : -1.0);
  soil(seam, trouble, random, look);
  look.blurPx = random.uniform(0.5, 0.8 + 1.0 * trouble);
  look.noise = random.uniform(0.8, 1.5 + 5.0 * trouble);
  return params;
}

}  // namespace scenes
