#include "cli/ribbon_json.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "merge/ribbon_codec.h"
#include "text/text.h"

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

constexpr char kNarrow[] = "narrow";

// Reads the records of one document.
class JsonReading {
 public:
  explicit JsonReading(const CodePage& codePage) : codePage_(codePage) {}

  bool ReadRecord(const nlohmann::json& json, sRibbonElement& record, int level) const {
    if (level > kRibbonLevels || !json.is_object()) return false;
    for (const auto& [name, value] : json.items()) {
      if (!ReadField(name, value, record, level)) return false;
    }
    return true;
  }

 private:
  bool ReadField(const std::string& name, const nlohmann::json& value, sRibbonElement& record,
                 int level) const {
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

  bool ReadChildren(const nlohmann::json& value, sRibbonElement& record, int level) const {
    if (!value.is_array()) return false;
    for (const nlohmann::json& child : value) {
      if (!ReadRecord(child, record.children.emplace_back(), level + 1)) return false;
    }
    return true;
  }

  bool ReadText(const nlohmann::json& value, RibbonText& target) const {
    if (value.is_string()) {
      target = FromJsonLibrary(value.get_ref<const std::string&>());
      return true;
    }
    if (!value.is_object() || value.size() != 1 || !value.contains(kNarrow)) return false;
    const nlohmann::json& narrow = value[kNarrow];
    if (!narrow.is_string()) return false;
    target = codePage_.Encode(ToUtf16(FromJsonLibrary(narrow.get_ref<const std::string&>())));
    return true;
  }

  const CodePage& codePage_;
};

nlohmann::json TextToJson(const RibbonText& text, const CodePage& codePage) {
  if (const std::string* const narrow = std::get_if<std::string>(&text)) {
    return {{kNarrow, ToJsonLibrary(FromUtf16(codePage.Decode(*narrow)))}};
  }
  return ToJsonLibrary(std::get<std::wstring>(text));
}

nlohmann::json RecordToJson(const sRibbonElement& record, const CodePage& codePage) {
  nlohmann::json children = nlohmann::json::array();
  for (const sRibbonElement& child : record.children) {
    children.push_back(RecordToJson(child, codePage));
  }
  nlohmann::json json = {{"kind", record.kind},
                         {"id", record.id},
                         {"value2", record.value2},
                         {"value3", record.value3}};
  json["text1"] = TextToJson(record.text1, codePage);
  json["text2"] = TextToJson(record.text2, codePage);
  json["text3"] = TextToJson(record.text3, codePage);
  json["text4"] = TextToJson(record.text4, codePage);
  json["children"] = std::move(children);
  return json;
}

}  // namespace

std::wstring RibbonToJson(const sRibbonElement& record, const CodePage& codePage) {
  return PrintedJson(RecordToJson(record, codePage).dump(2));
}

bool RibbonFromJson(std::string_view json, const CodePage& codePage, sRibbonElement& record) {
  const auto parsed = nlohmann::json::parse(ReadableJson(json), nullptr, false);
  sRibbonElement read;
  if (parsed.is_discarded() || !JsonReading(codePage).ReadRecord(parsed, read, 1)) return false;
  record = std::move(read);
  return true;
}

}  // namespace carrovan
