#include "tools/sweep_page.h"

#include "tools/html_page.h"
#include "tools/names.h"
#include "tools/parameter.h"
#include "tools/report_assets.h"

#include <nlohmann/json.hpp>

namespace tool {
namespace {

using nlohmann::ordered_json;

ordered_json parameterJson(const TWeldParameter& parameter) {
  return {{"name", parameter.name},       {"field", parameter.field},
          {"unit", parameter.unit},       {"default", valueOf(TWeldParams(), parameter)},
          {"meaning", parameter.meaning}, {"tooLow", parameter.tooLow},
          {"tooHigh", parameter.tooHigh}};
}

ordered_json rowJson(const TSweepRow& row) {
  return {{"value", row.point.value},
          {"foundShare", row.point.foundShare},
          {"jitterPx", row.point.jitterPx ? ordered_json(*row.point.jitterPx) : ordered_json(nullptr)},
          {"longestLoss", row.longestLoss},
          {"confidence", row.point.confidence},
          {"wrong", row.point.truth ? ordered_json(row.point.truth->wrong) : ordered_json(nullptr)},
          {"reason", row.reason},
          {"isGood", row.isGood}};
}

ordered_json goodJson(const std::optional<TGoodRange>& good) {
  if (!good) {
    return nullptr;
  }
  return {{"first", good->first}, {"last", good->last}, {"middle", good->middle}};
}

}  // namespace

std::string sweepPage(const TSweepResult& result) {
  ordered_json data = {{"version", ZELWELD_VERSION},
                       {"joint", nameOf(result.type)},
                       {"frames", result.frames},
                       {"parameter", parameterJson(findParameter(result.type, result.parameter))},
                       {"points", ordered_json::array()},
                       {"objection", result.objection},
                       {"suggestion", result.objection.empty() ? goodJson(result.good) : ordered_json(nullptr)}};
  for (const TSweepRow& row : result.rows) {
    data["points"].push_back(rowJson(row));
  }
  return htmlPage({"Parameter sweep", asset::sweepBody, asset::sweepScript}, data.dump());
}

}  // namespace tool
