#include "cli/command_line_view.h"
#include "cli/verbs.h"
#include "package/package_opening.h"
#include "package/package_refusal.h"
#include "platform/path_text.h"

namespace carrovan {

ExitStatus RunExtractVerb(const Session& session, const ExtractOptions& options) {
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  CommandLineView view(session, {});
  const ExtractReport report =
      ExtractArchive(files->Archives(), files->Files(), view, options.package,
                     WithTrailingBackslash(options.folder));
  if (!report.opened) return session.Fail(DescribeNoPackage(files->Files(), options.package));
  if (report.extracted == 0 && report.failed == 0) {
    return session.Fail(options.package + L" is empty");
  }
  session.Print(std::to_wstring(report.extracted) + L" files extracted to " + options.folder);
  if (report.failed == 0) return ExitStatus::kDone;
  return report.extracted == 0 ? ExitStatus::kFailed : ExitStatus::kPartly;
}

}  // namespace carrovan
