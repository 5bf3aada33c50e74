#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "package/run_report.h"

namespace carrovan {
namespace {

struct VersionFacts {
  ProductContext context;  // prepared for the version
  bool isRunning = false;
  bool hasBeenRun = false;
};

std::vector<VersionFacts> CollectFacts(const ProductContext& product, const Machine& machine) {
  std::vector<VersionFacts> facts;
  for (const InstalledVersion& version : product.installedVersions) {
    VersionFacts fact{product, version.internalVersion == product.productVersion, false};
    if (fact.isRunning) {
      SelectRunningVersion(fact.context);
    } else {
      SelectVersion(fact.context, YearForm(version.internalVersion));
    }
    PrepareVersionFolders(fact.context, machine);
    fact.hasBeenRun = HasBeenRun(fact.context, *machine.registry);
    facts.push_back(std::move(fact));
  }
  return facts;
}

nlohmann::json ToJson(const VersionFacts& fact) {
  const ProductContext& context = fact.context;
  return {{"internalVersion", ToUtf8(context.productVersion)},
          {"releaseVersion", ToUtf8(context.humanReadableVersion)},
          {"running", fact.isRunning},
          {"hasBeenRun", fact.hasBeenRun},
          {"localFolder", ToUtf8(context.localRoot)},
          {"roamingFolder", ToUtf8(context.roamingRoot)},
          {"draftFolder", ToUtf8(context.localFolder)},
          {"registryKey", ToUtf8(context.registryRoot)}};
}

void PrintJson(const Session& session, const std::vector<VersionFacts>& facts) {
  nlohmann::json versions = nlohmann::json::array();
  for (const VersionFacts& fact : facts) versions.push_back(ToJson(fact));
  PrintJsonText(session, {{"versions", versions}});
}

void PrintText(const Session& session, const VersionFacts& fact) {
  const ProductContext& context = fact.context;
  session.Print(context.productName + L" " + context.humanReadableVersion + L" (" +
                context.productVersion + L")" + (fact.isRunning ? L", this installation" : L"") +
                (fact.hasBeenRun ? L"" : L", never run by this user"));
  session.Print(L"  registry  " + context.registryRoot);
  session.Print(L"  roaming   " + context.roamingRoot);
  session.Print(L"  local     " + context.localRoot);
  session.Print(L"  2D        " + context.localFolder);
}

}  // namespace

ExitStatus RunVersionsVerb(const Session& session, const VersionsOptions& options) {
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  ProductContext product;
  if (!LoadProductContext(product, machine)) {
    return session.Fail(TextOf(RunRefusal::kUnknownProduct));
  }
  EnumerateInstalledVersions(product, *machine.registry);

  const auto facts = CollectFacts(product, machine);
  if (options.json) {
    PrintJson(session, facts);
  } else {
    for (const VersionFacts& fact : facts) PrintText(session, fact);
  }
  return ExitStatus::kDone;
}

}  // namespace carrovan
