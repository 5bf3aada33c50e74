#include "restore/journal_record.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

using nlohmann::json;

// The member that says which record it is.
constexpr char kRecord[] = "record";

constexpr std::pair<FileKind, const char*> kKinds[] = {{FileKind::kAbsent, "absent"},
                                                       {FileKind::kFile, "file"},
                                                       {FileKind::kFolder, "folder"},
                                                       {FileKind::kLink, "link"}};

std::wstring TextAt(const json& object, const char* name) {
  return FromJournalText(object.at(name).get_ref<const std::string&>());
}

std::wstring OptionalTextAt(const json& object, const char* name) {
  return object.contains(name) ? TextAt(object, name) : std::wstring();
}

void PutText(json& object, const char* name, const std::wstring& text) {
  if (!text.empty()) object[name] = ToJournalText(text);
}

json ToJson(const FileImage& image) {
  json object;
  for (const auto& [kind, name] : kKinds) {
    if (kind == image.kind) object["kind"] = name;
  }
  if (image.kind == FileKind::kFile) {
    object["sizeBytes"] = image.sizeBytes;
    object["crc32"] = image.crc32;
  }
  return object;
}

FileImage FileImageOf(const json& object) {
  const auto& name = object.at("kind").get_ref<const std::string&>();
  for (const auto& [kind, kindName] : kKinds) {
    if (name != kindName) continue;
    if (kind != FileKind::kFile) return {kind};
    return {kind, object.at("sizeBytes").get<std::uint64_t>(),
            object.at("crc32").get<std::uint32_t>()};
  }
  throw json::other_error::create(600, "no kind of file", nullptr);
}

KeyImage KeyImageOf(json& values) {
  KeyImage image;
  image.exists = !values.is_null();
  for (json& value : values) {
    RegistryData::Bytes data = std::move(value.at("data").get_binary());
    image.values.push_back(
        {TextAt(value, "name"), value.at("type").get<std::uint32_t>(), std::move(data)});
  }
  return image;
}

json KeyToJson(const char* record, RegistryHive hive, const std::wstring& keyPath) {
  return {
      {kRecord, record}, {"root", ToJournalText(RootName(hive))}, {"key", ToJournalText(keyPath)}};
}

RegistryHive HiveAt(const json& object) {
  const auto hive = HiveOfRoot(TextAt(object, "root"));
  if (!hive) throw json::other_error::create(601, "no root", nullptr);
  return *hive;
}

json ToJson(const PointBegun& point) {
  json object = {{kRecord, "point begun"}, {"format", 2}};
  PutText(object, "verb", point.verb);
  PutText(object, "version", point.version);
  PutText(object, "package", point.package);
  return object;
}

json ToJson(const FileChanging& change) {
  json object = {{kRecord, "file changing"}, {"path", ToJournalText(change.path)}};
  if (change.before) object["before"] = ToJson(*change.before);
  PutText(object, "copy", change.copy);
  PutText(object, "part", change.part);
  return object;
}

json ToJson(const FileChanged& change) {
  return {{kRecord, "file changed"},
          {"path", ToJournalText(change.path)},
          {"after", ToJson(change.after)}};
}

json ToJson(const KeyChanging& change) {
  json object = KeyToJson("key changing", change.hive, change.keyPath);
  for (const std::wstring& name : change.setting) object["setting"].push_back(ToJournalText(name));
  return object;
}

json ToJson(const KeyChanged& change) {
  return KeyToJson("key changed", change.hive, change.keyPath);
}

json ToJson(const ScratchMade& made) {
  return {{kRecord, "scratch made"}, {"path", ToJournalText(made.path)}};
}

json ToJson(const RunEnded&) { return {{kRecord, "run ended"}}; }

json ToJson(const Undone& undone) { return {{kRecord, "undone"}, {"whole", undone.whole}}; }

FileChanging FileChangingOf(const json& object) {
  FileChanging change{TextAt(object, "path"), std::nullopt, OptionalTextAt(object, "copy"),
                      OptionalTextAt(object, "part")};
  if (object.contains("before")) change.before = FileImageOf(object.at("before"));
  return change;
}

KeyChanging KeyChangingOf(json& object) {
  KeyChanging change{HiveAt(object), TextAt(object, "key"), std::nullopt, {}};
  if (object.contains("before")) change.before = KeyImageOf(object.at("before"));
  if (!object.contains("setting")) return change;
  for (const json& name : object.at("setting")) {
    change.setting.push_back(FromJournalText(name.get_ref<const std::string&>()));
  }
  return change;
}

std::optional<JournalRecord> RecordOf(json& object) {
  const auto& name = object.at(kRecord).get_ref<const std::string&>();
  if (name == "point begun") {
    return PointBegun{OptionalTextAt(object, "verb"), OptionalTextAt(object, "version"),
                      OptionalTextAt(object, "package")};
  }
  if (name == "file changing") return FileChangingOf(object);
  if (name == "file changed") {
    return FileChanged{TextAt(object, "path"), FileImageOf(object.at("after"))};
  }
  if (name == "key changing") return KeyChangingOf(object);
  if (name == "key changed") {
    return KeyChanged{HiveAt(object), TextAt(object, "key"), KeyImageOf(object.at("after"))};
  }
  if (name == "scratch made") return ScratchMade{TextAt(object, "path")};
  if (name == "run ended") return RunEnded{};
  if (name == "undone") return Undone{object.at("whole").get<bool>()};
  return std::nullopt;
}

}  // namespace

namespace {

// The last member, so that what it is the checksum of is all that lies in front of it.
constexpr std::string_view kCheck = R"(,"check":")";
constexpr std::size_t kCheckDigits = 8;

std::string ChecksumText(std::uint32_t sum) {
  std::array<char, kCheckDigits + 1> digits = {};
  std::snprintf(digits.data(), digits.size(), "%08x", static_cast<unsigned>(sum));
  return digits.data();
}

// The text that a line's checksum belongs to; the whole line when it has none.
std::string_view CheckedPart(std::string_view line) {
  const std::size_t end = kCheck.size() + kCheckDigits + std::string_view("\"}").size();
  const bool hasCheck = line.size() > end && line.substr(line.size() - end).starts_with(kCheck);
  return hasCheck ? line.substr(0, line.size() - end) : line;
}

bool IsAsWritten(std::string_view line, std::string_view checked) {
  return line.substr(checked.size() + kCheck.size(), kCheckDigits) ==
         ChecksumText(ImageOfBytes(checked).crc32);
}

}  // namespace

namespace {

// The key that a record holds an image of, and the name of that member; none of any other record.
struct NamedImage {
  const char* name = nullptr;
  const KeyImage* image = nullptr;
};

NamedImage ImageIn(const JournalRecord& record) {
  if (const auto* const change = std::get_if<KeyChanging>(&record)) {
    return change->before ? NamedImage{"before", &*change->before} : NamedImage();
  }
  const auto* const change = std::get_if<KeyChanged>(&record);
  return change != nullptr ? NamedImage{"after", &change->after} : NamedImage();
}

// A line on its way out, in parts.
class LineParts {
 public:
  explicit LineParts(const TakeLinePart& take) : take_(take) {}

  void Add(std::string_view text) {
    part_.append(text);
    if (part_.size() >= kMostBytes) HandOn();
  }

  void Add(const KeyImage& image) {
    if (!image.exists) return Add("null");
    Add("[");
    for (const RegistryValue& value : image.values) {
      Add(&value == &image.values.front() ? R"({"data":[)" : R"(,{"data":[)");
      Add(value.data);
      const json rest = {{"name", ToJournalText(value.name)}, {"type", value.type}};
      Add("],");
      Add(std::string_view(rest.dump()).substr(1));
    }
    Add("]");
  }

  // Ends what the checksum is of, and the line.
  void Close() {
    HandOn();
    take_(std::string(kCheck) + ChecksumText(sum_.Image().crc32) + "\"}\n");
  }

 private:
  static constexpr std::size_t kMostBytes = std::size_t{1} << 16;

  void Add(const RegistryData& data) {
    bool isFirst = true;
    for (const std::uint8_t byte : data) {
      Add(isFirst ? "" : ",");
      Add(std::to_string(byte));
      isFirst = false;
    }
  }

  void HandOn() {
    sum_.Add(part_);
    take_(part_);
    part_.clear();
  }

  const TakeLinePart& take_;
  std::string part_;
  ContentSum sum_;
};

// Has lists of data read as the bytes that they are.
class DataLists {
 public:
  bool operator()(json::parse_event_t event, json& parsed) {
    const bool isAwaited = std::exchange(isAwaited_, false);
    if (event == json::parse_event_t::key) {
      isAwaited_ = parsed == "data";
    } else if (event == json::parse_event_t::array_start && isAwaited) {
      bytes_.emplace();
    } else if (event == json::parse_event_t::array_end && bytes_) {
      bytes_->shrink_to_fit();
      parsed = json::binary(std::move(*bytes_));
      bytes_.reset();
    } else if (bytes_) {
      bytes_->push_back(parsed.get<std::uint8_t>());
      return false;
    }
    return true;
  }

 private:
  bool isAwaited_ = false;
  std::optional<RegistryData::Bytes> bytes_;  // of the list that is being read
};

json ParseLine(std::string_view line) {
  DataLists lists;
  return json::parse(line, [&lists](int, json::parse_event_t event, json& parsed) {
    return lists(event, parsed);
  });
}

}  // namespace

// The image comes first, as the names of an object's members are sorted.
void EncodeRecord(const JournalRecord& record, std::size_t flushedLines, const TakeLinePart& take) {
  json object = std::visit([](const auto& one) { return ToJson(one); }, record);
  object["flushed"] = flushedLines;
  const std::string members = object.dump();
  LineParts line(take);
  line.Add("{");
  if (const NamedImage named = ImageIn(record); named.image != nullptr) {
    line.Add("\"" + std::string(named.name) + "\":");
    line.Add(*named.image);
    line.Add(",");
  }
  line.Add(std::string_view(members).substr(1, members.size() - 2));
  line.Close();
}

std::string EncodeRecord(const JournalRecord& record, std::size_t flushedLines) {
  std::string line;
  EncodeRecord(record, flushedLines, [&line](std::string_view part) { line.append(part); });
  return line;
}

std::size_t ValueBytes(const JournalRecord& record) {
  const KeyImage* const image = ImageIn(record).image;
  std::size_t bytes = 0;
  if (image == nullptr) return bytes;
  for (const RegistryValue& value : image->values) bytes += value.data.size();
  return bytes;
}

std::optional<JournalLine> DecodeRecord(std::string_view line) {
  const std::string_view checked = CheckedPart(line);
  const bool isChecked = checked.size() < line.size();
  if (isChecked && !IsAsWritten(line, checked)) return std::nullopt;
  try {
    json object = ParseLine(line);
    auto record = RecordOf(object);
    if (!record) return std::nullopt;
    return JournalLine{*std::move(record), object.value("flushed", std::size_t{0}), isChecked};
  } catch (const json::exception&) {
    return std::nullopt;
  }
}

namespace {

constexpr std::size_t kDigits = 4;

bool IsBetween(char16_t unit, char16_t first, char16_t last) {
  return unit >= first && unit <= last;
}

void AppendEscape(std::u16string& text, char16_t unit) {
  constexpr char16_t kHexadecimal[] = u"0123456789ABCDEF";
  text.push_back(u'%');
  for (int shift = 12; shift >= 0; shift -= 4) text.push_back(kHexadecimal[(unit >> shift) & 15]);
}

int DigitValue(char16_t digit) {
  if (IsBetween(digit, u'0', u'9')) return digit - u'0';
  if (IsBetween(digit, u'A', u'F')) return digit - u'A' + 10;
  return -1;
}

// The unit that an escape at this place stands for; -1 when there is none.
int EscapedUnit(std::u16string_view text) {
  if (text.size() < 1 + kDigits || text[0] != u'%') return -1;
  int unit = 0;
  for (const char16_t digit : text.substr(1, kDigits)) {
    const int value = DigitValue(digit);
    if (value < 0) return -1;
    unit = unit * 16 + value;
  }
  return unit;
}

}  // namespace

std::string ToJournalText(std::wstring_view text) {
  const std::u16string units = ToUtf16(text);
  std::u16string escaped;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool pair = IsBetween(units[i], 0xD800, 0xDBFF) && i + 1 < units.size() &&
                      IsBetween(units[i + 1], 0xDC00, 0xDFFF);
    if (pair) {
      escaped.append(units, i++, 2);
    } else if (units[i] == u'%' || IsBetween(units[i], 0xD800, 0xDFFF)) {
      AppendEscape(escaped, units[i]);
    } else {
      escaped.push_back(units[i]);
    }
  }
  return ToUtf8(FromUtf16(escaped));
}

std::wstring FromJournalText(std::string_view utf8) {
  const std::u16string escaped = ToUtf16(FromUtf8(utf8));
  std::u16string units;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const int unit = EscapedUnit(std::u16string_view(escaped).substr(i));
    units.push_back(unit < 0 ? escaped[i] : static_cast<char16_t>(unit));
    if (unit >= 0) i += kDigits;
  }
  return FromUtf16(units);
}

}  // namespace carrovan
