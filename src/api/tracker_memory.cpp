#include "api/tracker_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace weld {
namespace {

constexpr std::uint64_t kVersion = 4;  // of the order of the fields below
constexpr std::size_t kMostPoints = 1U << 20U;

class TByteWriter {
public:
  template <typename TNumber>
  void value(TNumber& number) {
    static_assert(std::is_arithmetic_v<TNumber> || std::is_enum_v<TNumber>);
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
  }

  std::string bytes;
};

// Stops at the end of the bytes.
class TByteReader {
public:
  explicit TByteReader(std::string_view from) : rest(from) {}

  template <typename TNumber>
  void value(TNumber& number) {
    isGood = isGood && rest.size() >= sizeof number;
    if (!isGood) return;
    std::memcpy(&number, rest.data(), sizeof number);
    rest.remove_prefix(sizeof number);
  }

  std::string_view rest;
  bool isGood = true;
};

template <typename TBytes, typename... TNumbers>
void visitAll(TBytes& bytes, TNumbers&... numbers) {
  (bytes.value(numbers), ...);
}

template <typename TBytes, typename TNumber>
void visit(TBytes& bytes, cv::Point_<TNumber>& point) {
  visitAll(bytes, point.x, point.y);
}

template <typename TBytes>
void visit(TBytes& bytes, TWeldLineRes& line) {
  visitAll(bytes, line.isFound, line.auxVal1, line.auxVal2, line.auxVal3, line.auxVal4, line.trackVal);
  visit(bytes, line.weldPos);
  std::uint64_t count = line.stripePts.size();
  bytes.value(count);
  line.stripePts.resize(std::min<std::size_t>(count, kMostPoints));
  for (cv::Point2f& point : line.stripePts) visit(bytes, point);
}

template <typename TBytes>
void visit(TBytes& bytes, TJumpMemory& jumps) {
  static_assert(sizeof(TJumpMemory) == 48, "a new field belongs here, too");
  visitAll(bytes, jumps.hasSeam, jumps.pendingFrames, jumps.shoulders.areFound, jumps.isPendingFlush);
  visit(bytes, jumps.seam);
  visit(bytes, jumps.pending);
  visit(bytes, jumps.shoulders.left);
  visit(bytes, jumps.shoulders.right);
}

template <typename TBytes>
void visit(TBytes& bytes, TBreakPlaces& places) {
  bytes.value(places.count);
  places.count = std::clamp(places.count, 0, static_cast<int>(TBreakPlaces::kMost));
  for (TBreakPlace& place : places.all) visitAll(bytes, place.x, place.widthPx, place.score);
}

template <typename TBytes>
void visit(TBytes& bytes, TKnownShapes& shapes) {
  bytes.value(shapes.count);
  shapes.count = std::clamp(shapes.count, 0, static_cast<int>(TKnownShapes::kMost));
  for (TShape& shape : shapes.all) {
    for (cv::Point2f& point : shape) visit(bytes, point);
  }
}

template <typename TBytes>
void visit(TBytes& bytes, TProfileFit& fit) {
  visitAll(bytes, fit.outcome, fit.sense, fit.confidence, fit.score, fit.noisePx);
  for (TMeasuredPoint& point : fit.features) {
    visitAll(bytes, point.isFound, point.sigmaPx);
    visit(bytes, point.pos);
  }
  TJointMeasures& m = fit.measures;
  visitAll(bytes, m.widthPx, m.depthPx, m.gapPx, m.mismatchPx, m.areaPx2, m.leftAngleDeg, m.rightAngleDeg);
  visitAll(bytes, m.includedAngleDeg, m.baseAngleDeg, m.leftRadiusPx, m.rightRadiusPx);
  visitAll(bytes, fit.leastDepthPx, fit.platesApartDeg, fit.worstShare, fit.elementCount);
  for (TProfileElement& element : fit.elements) {
    visitAll(bytes, element.kind, element.role, element.radiusPx, element.noisePx, element.inlierShare);
    visit(bytes, element.left);
    visit(bytes, element.right);
    visit(bytes, element.centre);
  }
  for (TGapMeasure& gap : fit.gaps) visitAll(bytes, gap.widthPx, gap.stepPx);
}

// A profile that is none of the forms is followed no more.
template <typename TBytes>
void visit(TBytes& bytes, std::optional<TProfileFit>& profile, TTemplateView forms) {
  std::int64_t form = -1;
  if (profile && profile->profile >= forms.begin() && profile->profile < forms.end())
    form = profile->profile - forms.begin();
  bytes.value(form);
  const bool isForm = form >= 0 && form < forms.end() - forms.begin();
  if (!isForm) {
    profile.reset();
    return;
  }
  if (!profile) profile.emplace();
  profile->profile = forms.begin() + form;
  visit(bytes, *profile);
}

template <typename TBytes>
void visit(TBytes& bytes, TTrackerMemory& memory, TTemplateView forms) {
  visit(bytes, memory.last);
  visit(bytes, memory.profile, forms);
  visitAll(bytes, memory.wasFlush, memory.bestColumns, memory.edgePairColumns, memory.heldFrames);
  visit(bytes, memory.places);
  visit(bytes, memory.shapes);
  visit(bytes, memory.jumps);
}

// Fowler, Noll and Vo.
std::uint64_t checksum(std::string_view bytes) {
  std::uint64_t sum = 0xCBF29CE484222325U ^ kVersion;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
  return sum;
}

}  // namespace

std::string memoryBytes(TTrackerMemory memory, TTemplateView forms) {
  TJumpMemory& jumps = memory.jumps;
  if (!jumps.hasSeam) jumps.seam = {};
  if (!jumps.hasSeam || !jumps.shoulders.areFound) jumps.shoulders = {};
  if (jumps.pendingFrames == 0) jumps.pending = {}, jumps.isPendingFlush = false;
  TByteWriter writer;
  visit(writer, memory, forms);
  std::uint64_t sum = checksum(writer.bytes);
  writer.value(sum);
  return writer.bytes;
}

std::optional<TTrackerMemory> memoryOf(std::string_view bytes, TTemplateView forms) {
  std::uint64_t sum = 0;
  if (bytes.size() < sizeof sum) return std::nullopt;
  const std::string_view fields = bytes.substr(0, bytes.size() - sizeof sum);
  std::memcpy(&sum, bytes.data() + fields.size(), sizeof sum);
  if (sum != checksum(fields)) return std::nullopt;
  TByteReader reader(fields);
  TTrackerMemory memory;
  visit(reader, memory, forms);
  return reader.isGood && reader.rest.empty() ? std::make_optional(std::move(memory)) : std::nullopt;
}

}  // namespace weld
