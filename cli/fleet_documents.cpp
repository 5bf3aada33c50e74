#include "cli/fleet_documents.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "report/page_markup.h"
#include "text/text.h"

namespace carrovan {
namespace {

using nlohmann::json;

// Goes through a document before it is kept in memory, so that nothing grows with what it claims.
class DocumentMeter : public nlohmann::json_sax<json> {
 public:
  explicit DocumentMeter(const FleetLimits& limits) : limits_(limits) {}

  const std::wstring& Problem() const { return problem_; }

  bool null() override { return Count(); }
  bool boolean(bool) override { return Count(); }
  bool number_integer(number_integer_t) override { return Count(); }
  bool number_unsigned(number_unsigned_t) override { return Count(); }
  bool number_float(number_float_t, const string_t&) override { return Count(); }
  bool string(string_t&) override { return Count(); }
  bool binary(binary_t&) override { return Count(); }
  bool start_object(std::size_t) override { return Enter(); }
  bool key(string_t&) override { return Count(); }
  bool end_object() override { return Leave(); }
  bool start_array(std::size_t) override { return Enter(); }
  bool end_array() override { return Leave(); }
  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::detail::exception&) override {
    return Stop(L"it is not whole JSON (at byte " + std::to_wstring(position) + L")");
  }

 private:
  bool Stop(const std::wstring& problem) {
    if (problem_.empty()) problem_ = problem;
    return false;
  }

  bool Count() {
    if (++values_ <= limits_.values) return true;
    return Stop(L"it holds more than " + std::to_wstring(limits_.values) + L" values");
  }

  bool Enter() {
    if (++depth_ <= limits_.depth) return Count();
    return Stop(L"it nests deeper than " + std::to_wstring(limits_.depth) + L" levels");
  }

  bool Leave() {
    --depth_;
    return true;
  }

  const FleetLimits& limits_;
  std::size_t depth_ = 0;
  std::size_t values_ = 0;
  std::wstring problem_;
};

// An object, or nothing with the reason.
std::optional<json> ParseObject(const std::string& bytes, const FleetLimits& limits,
                                std::wstring& reason) {
  DocumentMeter meter(limits);
  if (!json::sax_parse(bytes, &meter)) {
    reason = meter.Problem();
    return std::nullopt;
  }
  json document = json::parse(bytes, nullptr, false);
  if (document.is_object()) return document;
  reason = L"it is no object";
  return std::nullopt;
}

// Reads members, which may be missing, keeps what the limits allow, and notes the first one that
// has another type than carrovan-cli gives it.
class MemberReader {
 public:
  MemberReader(const FleetLimits& limits, std::size_t& omitted)
      : limits_(limits), omitted_(omitted) {}

  // Empty while all have their types.
  const std::string& Wrong() const { return wrong_; }

  // Null for one that is missing or null.
  static const json* Find(const json& object, const char* member) {
    const auto found = object.find(member);
    return found == object.end() || found->is_null() ? nullptr : &*found;
  }

  // Null also for one that is not of the type, which is noted.
  const json* FindOf(json::value_t type, const json& object, const char* member) {
    const json* const found = Find(object, member);
    return found != nullptr && IsOf(type, *found, member) ? found : nullptr;
  }

  std::wstring Text(const json& object, const char* member) {
    const json* const found = FindOf(json::value_t::string, object, member);
    return found == nullptr ? std::wstring() : Kept(*found);
  }

  std::vector<std::wstring> Texts(const json& object, const char* member) {
    std::vector<std::wstring> texts;
    ForEach(json::value_t::string, object, member, texts,
            [&](const json& item) { texts.push_back(Kept(item)); });
    return texts;
  }

  // Hands each object of a list on until so many are kept.
  template <typename Kept, typename Take>
  void Objects(const json& object, const char* member, const std::vector<Kept>& kept,
               const Take& take) {
    ForEach(json::value_t::object, object, member, kept, take);
  }

 private:
  bool IsOf(json::value_t type, const json& value, const char* member) {
    if (value.type() == type) return true;
    if (wrong_.empty()) wrong_ = member;
    return false;
  }

  template <typename Kept, typename Take>
  void ForEach(json::value_t type, const json& object, const char* member,
               const std::vector<Kept>& kept, const Take& take) {
    const json* const list = FindOf(json::value_t::array, object, member);
    if (list == nullptr) return;
    for (const json& item : *list) {
      if (!IsOf(type, item, member)) return;
      if (kept.size() < limits_.items) {
        take(item);
      } else {
        ++omitted_;
      }
    }
  }

  std::wstring Kept(const json& text) const {
    return CutText(FromUtf8(text.get_ref<const std::string&>()), limits_.characters);
  }

  const FleetLimits& limits_;
  std::size_t& omitted_;
  std::string wrong_;
};

class DocumentReader {
 public:
  explicit DocumentReader(const FleetLimits& limits) : members_(limits, document_.omitted) {}

  // Nothing, with the reason, when a member has a type that it cannot have.
  std::optional<FleetDocument> Read(const json& object, std::wstring& reason) {
    ReadMembers(object);
    if (members_.Wrong().empty()) return std::move(document_);
    reason =
        L"its member \"" + FromUtf8(members_.Wrong()) + L"\" is not of the type that it should be";
    return std::nullopt;
  }

 private:
  void ReadMembers(const json& object) {
    document_.verb = members_.Text(object, "verb");
    document_.version = members_.Text(object, "version");
    document_.package = members_.Text(object, "package");
    document_.restorePoint = members_.Text(object, "restorePoint");
    const json* const dryRun = members_.FindOf(json::value_t::boolean, object, "dryRun");
    document_.dryRun = dryRun != nullptr && dryRun->get<bool>();
    document_.problems = members_.Texts(object, "problems");
    document_.emptied = members_.Texts(object, "emptied");
    document_.kept = TextsOrNumber(object, "kept");
    ReadCategories(object);
    ReadDropped(object);
    ReadRemoved(object);
    const json* const verification = members_.FindOf(json::value_t::object, object, "verification");
    if (verification != nullptr) {
      document_.differences = members_.Texts(*verification, "differences");
    }
  }

  // What an undo kept is a list, how many restore points a prune kept is a number.
  std::vector<std::wstring> TextsOrNumber(const json& object, const char* member) {
    const json* const found = MemberReader::Find(object, member);
    if (found != nullptr && found->is_number()) return {};
    return members_.Texts(object, member);
  }

  // Those of a dry run have no outcome, and hold what would be dropped.
  void ReadCategories(const json& object) {
    members_.Objects(object, "categories", document_.categories, [this](const json& category) {
      std::wstring outcome = members_.Text(category, "outcome");
      if (document_.dryRun && outcome.empty()) outcome = L"would change";
      document_.categories.push_back({members_.Text(category, "label"), std::move(outcome)});
      ReadDropped(category);
    });
  }

  void ReadDropped(const json& object) {
    const std::size_t omittedBefore = document_.omitted;
    const std::size_t keptBefore = document_.dropped.size();
    members_.Objects(object, "dropped", document_.dropped, [this](const json& value) {
      document_.dropped.push_back({members_.Text(value, "file"), members_.Text(value, "key"),
                                   members_.Text(value, "name"), members_.Text(value, "why")});
    });
    document_.droppedCount +=
        document_.dropped.size() - keptBefore + document_.omitted - omittedBefore;
  }

  void ReadRemoved(const json& object) {
    members_.Objects(object, "removed", document_.removed, [this](const json& point) {
      document_.removed.push_back(members_.Text(point, "id"));
    });
  }

  FleetDocument document_;
  MemberReader members_;
};

constexpr std::wstring_view kRuns[] = {L"import", L"reset", L"export", L"undo", L"prune"};

bool IsRun(const std::wstring& verb) { return std::ranges::find(kRuns, verb) != std::end(kRuns); }

// The documents of verbs that change nothing name no verb, but each has a member of its own.
bool IsOtherDocument(const json& object) {
  constexpr const char* kOwn[] = {"versions", "sound", "same", "entries", "private", "paths"};
  return std::ranges::any_of(kOwn, [&](const char* own) { return object.contains(own); });
}

// Why it is none of this job; empty when it is one.
std::wstring ReasonAgainstVerb(const json& object, const std::wstring& job) {
  const json* const verb = MemberReader::Find(object, "verb");
  if (verb == nullptr) {
    return !IsRun(job) && IsOtherDocument(object) ? L"" : L"it names no verb";
  }
  if (!verb->is_string()) return L"its verb is no text";
  const std::wstring named = FromUtf8(verb->get_ref<const std::string&>());
  if (named == job || (!IsRun(job) && IsRun(named))) return {};
  return L"it is of the verb \"" + CutText(named, 40) + L"\"";
}

std::wstring ReasonAgainstStatus(const json& object, int exitStatus) {
  const json* const named = MemberReader::Find(object, "exitStatus");
  if (named == nullptr) return {};
  if (!named->is_number_integer()) return L"its exitStatus is no number";
  if (*named == exitStatus) return {};
  return L"it names the exit status " + CutText(FromUtf8(named->dump()), 40) +
         L", but the program ended with " + std::to_wstring(exitStatus);
}

}  // namespace

std::optional<FleetList> ReadFleetList(const std::string& bytes, std::wstring& reason) {
  const auto object = ParseObject(bytes, {}, reason);
  if (!object) return std::nullopt;
  FleetList list;
  const json* const job = MemberReader::Find(*object, "job");
  const json* const hosts = MemberReader::Find(*object, "hosts");
  if (job == nullptr || !job->is_string()) reason = L"its member \"job\" is no text";
  if (hosts == nullptr || !hosts->is_array()) reason = L"its member \"hosts\" is no list";
  if (!reason.empty()) return std::nullopt;
  list.job = FromUtf8(job->get_ref<const std::string&>());
  std::set<std::wstring> seen;
  std::set<std::wstring> repeated;
  for (const json& host : *hosts) {
    if (!host.is_string()) {
      reason = L"a member of \"hosts\" is no text";
      return std::nullopt;
    }
    const std::wstring name = FromUtf8(host.get_ref<const std::string&>());
    if (seen.insert(name).second) {
      list.hosts.push_back(name);
    } else if (repeated.insert(name).second) {
      list.repeated.push_back(name);
    }
  }
  return list;
}

std::optional<FleetDocument> ReadFleetDocument(const std::string& bytes, const std::wstring& job,
                                               int exitStatus, const FleetLimits& limits,
                                               std::wstring& reason) {
  const auto object = ParseObject(bytes, limits, reason);
  if (!object) return std::nullopt;
  reason = ReasonAgainstVerb(*object, job);
  if (reason.empty()) reason = ReasonAgainstStatus(*object, exitStatus);
  if (!reason.empty()) return std::nullopt;
  return DocumentReader(limits).Read(*object, reason);
}

}  // namespace carrovan
