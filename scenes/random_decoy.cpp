#include "scenes/random_decoy.h"

#include "scenes/random.h"

namespace scenes {
namespace {

bool hasStripe(TDecoy decoy, std::uint64_t seed) {
  return decoy == TDecoy::straight || decoy == TDecoy::curve || (decoy == TDecoy::glare && seed % 2 == 1);
}

void addGlare(TRandom& random, TSceneParams& params) {
  params.look.arcGlow = random.uniform(80.0, 220.0);
  if (params.joint == TJoint::blank) {
    params.troubles.torchLevel = random.uniform(60.0, 130.0);
    return;
  }
  params.look.flare = random.uniform(0.3, 1.0);
  params.look.blobs = random.integer(3, 8);
}

}  // namespace

const std::vector<TDecoy>& allDecoys() {
  static const std::vector<TDecoy> decoys = {TDecoy::straight, TDecoy::curve, TDecoy::blank,  TDecoy::texture,
                                             TDecoy::glare,    TDecoy::noise, TDecoy::spatter};
  return decoys;
}

const char* nameOf(TDecoy decoy) {
  switch (decoy) {
    case TDecoy::straight:
      return "straight";
    case TDecoy::curve:
      return "curve";
    case TDecoy::blank:
      return "blank";
    case TDecoy::texture:
      return "texture";
    case TDecoy::glare:
      return "glare";
    case TDecoy::noise:
      return "noise";
    case TDecoy::spatter:
      return "spatter";
  }
  return "unknown";
}

TSceneParams randomDecoy(TDecoy decoy, TLevel level, std::uint64_t seed) {
  TSceneParams params = randomScene(hasStripe(decoy, seed) ? TJoint::plain : TJoint::blank, level, seed);
  TRandom random(seed, TStream::decoy, static_cast<std::uint64_t>(decoy));
  TLook& look = params.look;
  switch (decoy) {
    case TDecoy::curve:
      params.geometry.bowPx = random.uniform(20.0, 150.0) * (random.chance(0.5) ? 1.0 : -1.0);
      break;
    case TDecoy::texture:
      look.background = random.uniform(50.0, 120.0);
      look.texture = random.uniform(0.6, 1.0) * look.background;
      break;
    case TDecoy::glare:
      addGlare(random, params);
      break;
    case TDecoy::noise:
      look.noiseSigma = random.uniform(8.0, 30.0);
      break;
    case TDecoy::spatter:
      look.spatter = random.integer(10, 40);
      look.arcGlow = random.chance(0.5) ? random.uniform(20.0, 140.0) : 0.0;
      break;
    default:
      break;
  }
  return params;
}

}  // namespace scenes
