#include "cli/share_output.h"

#include "cli/json_text.h"
#include "cli/verbs.h"
#include "cli/visible_text.h"
#include "package/package_inspection.h"
#include "package/shared_package.h"

namespace carrovan {
namespace {

std::wstring PlaceOf(const PrivateItem& item) {
  std::wstring place = VisibleText(item.entry);
  if (!item.key.empty()) place += L": [" + VisibleText(item.key) + L"]";
  if (!item.isValue) return place;
  return place + (item.name.empty() ? L" @" : L" \"" + VisibleValue(item.name) + L"\"");
}

void PrintItems(const Session& session, const std::vector<PrivateItem>& items) {
  for (const PrivateItem& item : items) {
    session.Print(L"  " + PlaceOf(item) + L": " + item.reason);
  }
}

const char* ActionFor(const PrivateItem& item) { return item.isChanged ? "changed" : "left out"; }

const char* KindOf(const PrivateItem& item) {
  if (item.isValue) return "value";
  return item.key.empty() ? "file" : "key";
}

nlohmann::json ToJson(const PrivateItem& item) {
  return {{"kind", KindOf(item)},
          {"action", ActionFor(item)},
          {"entry", ToUtf8(item.entry)},
          {"key", item.key.empty() ? nlohmann::json() : nlohmann::json(ToUtf8(item.key))},
          {"name", item.isValue ? nlohmann::json(ToUtf8(item.name)) : nlohmann::json()},
          {"reason", ToUtf8(item.reason)}};
}

}  // namespace

void PrintLeftOut(const Session& session, const std::vector<PrivateItem>& leftOut) {
  session.Print(L"Left out or changed, since it is personal: " +
                (leftOut.empty() ? L"nothing" : std::to_wstring(leftOut.size())));
  PrintItems(session, leftOut);
}

nlohmann::json PrivateItemsJson(const std::vector<PrivateItem>& items) {
  nlohmann::json list = nlohmann::json::array();
  for (const PrivateItem& item : items) list.push_back(ToJson(item));
  return list;
}

ExitStatus RunPrivateInspection(const Session& session, const InspectOptions& options,
                                ArchiveExaminer& archive) {
  const PackageInspection inspection =
      InspectPackage(archive, IsLegacyPackageName(options.package));
  if (!inspection.contentWasRead) {
    return session.Fail(options.package + L": " + inspection.untrusted.front().reason);
  }
  const std::vector<PrivateItem> items = FindPrivateItems(archive);
  if (options.json) {
    PrintJsonText(session, {{"package", ToUtf8(options.package)},
                            {"shared", inspection.shared},
                            {"private", PrivateItemsJson(items)}});
    return ExitStatus::kDone;
  }
  session.Print(L"Shared      " + std::wstring(inspection.shared ? L"yes" : L"no"));
  session.Print(L"Private     " + (items.empty() ? L"nothing" : std::to_wstring(items.size())));
  PrintItems(session, items);
  return ExitStatus::kDone;
}

}  // namespace carrovan
