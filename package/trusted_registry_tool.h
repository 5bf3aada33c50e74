#pragma once

#include <memory>
#include <string>
#include <vector>

#include "package/run_report.h"
#include "platform/file_system.h"
#include "platform/forwarding_ports.h"
#include "platform/machine.h"

namespace carrovan {

// A registry tool that looks into a file right before it is imported. Two readers may take one
// archive for two packages, and the rewriting changes registry files: what lies on the disk at that
// moment is what counts.
class TrustedRegistryTool : public ForwardingRegistryTool {
 public:
  // Files may name keys of this company only (RegistryFileScan).
  TrustedRegistryTool(RegistryTool& tool, const FileReader& files, std::wstring company)
      : ForwardingRegistryTool(tool), files_(files), company_(std::move(company)) {}

  // Null, and nothing is started, for a file that names another key, that cannot be read or that is
  // not understood whole (RegistryFormScan).
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override;

 private:
  bool MayBeImported(const std::wstring& filePath) const;

  const FileReader& files_;
  const std::wstring company_;
};

// A registry tool that imports every file, of a package that the user trusts, and notes those that
// are not understood whole: the tool may make of them what a preview does not foresee and a restore
// point does not keep.
class NotingRegistryTool : public ForwardingRegistryTool {
 public:
  NotingRegistryTool(RegistryTool& tool, const FileReader& files)
      : ForwardingRegistryTool(tool), files_(files) {}

  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override;

  // One line for each: the file and what is not understood in it.
  const std::vector<std::wstring>& NotUnderstood() const { return notUnderstood_; }

 private:
  const FileReader& files_;
  std::vector<std::wstring> notUnderstood_;
};

// The one of these two that the user's trust in a package calls for.
class PackageRegistryTool {
 public:
  // The machine's tool, files and product outlive it.
  PackageRegistryTool(const Machine& machine, bool isTrusted)
      : noting_(*machine.registryTool, *machine.files),
        checking_(*machine.registryTool, *machine.files, machine.product->CompanyShortName()),
        isTrusted_(isTrusted) {}

  RegistryTool& Tool() { return isTrusted_ ? static_cast<RegistryTool&>(noting_) : checking_; }

  // Adds to the problems of the run what no preview foresees and no restore point keeps.
  void ReportUnforeseen(RunReport& report) const;

 private:
  NotingRegistryTool noting_;
  TrustedRegistryTool checking_;
  bool isTrusted_;
};

}  // namespace carrovan
