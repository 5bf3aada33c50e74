#include "cli/ribbon_json.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "merge/ribbon_codec.h"
#include "platform/text.h"

namespace carrovan {
namespace {

template <typename Integer>
bool ReadInteger(const nlohmann::json& value, Integer& target) {
  if (!value.is_number_integer()) return false;
  // A larger unsigned number would turn negative when it is read as a signed one.
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > 0xFFFFFFFFu) return false;
  const auto number = value.get<std::int64_t>();
  using Limits = std::numeric_limits<Integer>;
  if (number < std::int64_t{Limits::min()} || number > std::int64_t{Limits::max()}) return false;
  target = static_cast<Integer>(number);
  return true;
}

bool ReadText(const nlohmann::json& value, std::wstring& target) {
  if (!value.is_string()) return false;
  target = FromUtf8(value.get_ref<const std::string&>());
  return true;
}

bool ReadRecord(const nlohmann::json& json, sRibbonElement& record, int level);

bool ReadChildren(const nlohmann::json& value, sRibbonElement& record, int level) {
  if (!value.is_array()) return false;
  for (const nlohmann::json& child : value) {
    if (!ReadRecord(child, record.children.emplace_back(), level + 1)) return false;
  }
  return true;
}

bool ReadField(const std::string& name, const nlohmann::json& value, sRibbonElement& record,
               int level) {
  if (name == "kind") return ReadInteger(value, record.kind);
  if (name == "id") return ReadInteger(value, record.id);
  if (name == "text1") return ReadText(value, record.text1);
  if (name == "value2") return ReadInteger(value, record.value2);
  if (name == "text2") return ReadText(value, record.text2);
  if (name == "children") return ReadChildren(value, record, level);
  if (name == "value3") return ReadInteger(value, record.value3);
  if (name == "text3") return ReadText(value, record.text3);
  return name == "text4" && ReadText(value, record.text4);
}

bool ReadRecord(const nlohmann::json& json, sRibbonElement& record, int level) {
  if (level > kRibbonLevels || !json.is_object()) return false;
  for (const auto& [name, value] : json.items()) {
    if (!ReadField(name, value, record, level)) return false;
  }
  return true;
}

}  // namespace

nlohmann::json RibbonToJson(const sRibbonElement& record) {
  nlohmann::json children = nlohmann::json::array();
  for (const sRibbonElement& child : record.children) children.push_back(RibbonToJson(child));
  return {{"kind", record.kind},           {"id", record.id},
          {"text1", ToUtf8(record.text1)}, {"value2", record.value2},
          {"text2", ToUtf8(record.text2)}, {"children", std::move(children)},
          {"value3", record.value3},       {"text3", ToUtf8(record.text3)},
          {"text4", ToUtf8(record.text4)}};
}

bool RibbonFromJson(const nlohmann::json& json, sRibbonElement& record) {
  sRibbonElement read;
  if (!ReadRecord(json, read, 1)) return false;
  record = std::move(read);
  return true;
}

}  // namespace carrovan
