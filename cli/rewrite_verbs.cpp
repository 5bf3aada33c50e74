#include "cli/rewrite_verbs.h"

#include "cli/session.h"
#include "platform/posix/host_facts.h"
#include "rewrite/option_migration.h"
#include "rewrite/xml_rewrite.h"

namespace carrovan {
namespace {

// Why a verb failed, as its reason on standard error.
class ReasonLog : public LineLog {
 public:
  explicit ReasonLog(const Session& session) : session_(session) {}

  void WriteLine(std::wstring_view line) override {
    session_.Complain(line);
    complained_ = true;
  }
  bool Complained() const { return complained_; }

 private:
  const Session& session_;
  bool complained_ = false;
};

ExitStatus Rewrite(const Session& session, const RewriteOptions& options,
                   const RewritePorts& ports) {
  if (!ports.files.IsFolder(options.folder)) {
    return session.Fail(options.folder + L" is not a folder");
  }
  const bool userIsKnown = ports.user.UserName().has_value();
  if (!userIsKnown) {
    session.Complain(L"User paths are left alone: the system does not tell the user's name");
  }
  const auto failures = RewritePackageTree(options.folder, options.inputs, ports);
  for (const RewriteFailure& failure : failures) {
    session.Complain(L"Left as it is: " + failure.path + L": " + DescribeSystemCode(failure.code));
  }
  return userIsKnown && failures.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
}

}  // namespace

ExitStatus RunRewriteVerb(const Session& session, const RewriteOptions& options) {
  ConsoleLog log(session);
  if (!session.root.empty()) {
    const auto machine = session.OpenMachine();
    if (!machine) return ExitStatus::kFailed;
    const Machine ports = machine->Ports();
    return Rewrite(session, options, {*ports.files, *ports.user, *ports.codePage, log});
  }
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  return Rewrite(session, options, {files->Files(), *OpenHostUser(), *OpenHostCodePage(), log});
}

ExitStatus RunRetargetVerb(const Session& session, const RetargetOptions& options) {
  double number = 0;
  if (!ParseNumber(options.version, number)) {
    return session.Misused(L"VERSION must be a number such as 27.0");
  }
  if (options.key.empty()) return session.Misused(L"KEY must not be empty");
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  const auto codePage =
      session.root.empty() ? OpenHostCodePage() : std::make_unique<Utf8CodePage>();
  const SystemCode code =
      RetargetLegacyVersion(options.file, options.key, options.version, files->Files(), *codePage);
  if (code == kSystemOk) return ExitStatus::kDone;
  return session.Fail(options.file + L": " + DescribeSystemCode(code));
}

ExitStatus RunMigrateOptionsVerb(const Session& session, const MigrateOptions& options) {
  const auto machine = session.OpenMachine();
  if (!machine) return ExitStatus::kFailed;
  const Machine ports = machine->Ports();
  const auto dom = OpenXmlDom(*ports.files);
  ReasonLog log(session);
  const OptionMigration migration = MigrateOptionConfig(
      options.xmlPath, options.company, options.productKey, *dom, *ports.registry, log);
  if (!migration.started) {
    return log.Complained() ? ExitStatus::kFailed
                            : session.Fail(L"The XML reader could not be started");
  }
  for (const std::wstring& key : migration.failedKeys) {
    session.Complain(L"Not every value could be set in HKEY_CURRENT_USER\\" + key);
  }
  session.Print(std::to_wstring(migration.written) + L" values set");
  return migration.failedKeys.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
}

}  // namespace carrovan
