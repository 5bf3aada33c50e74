#include "platform/sandbox/sandbox_machine.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/file_operations.h"
#include "platform/posix/host_access.h"
#include "platform/posix/host_file_system.h"
#include "platform/sandbox/mapped_files.h"
#include "platform/system_code.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::optional<std::wstring> ProblemOfRoot(const std::wstring& rootFolder) {
  std::error_code error;
  if (std::filesystem::is_directory(HostPathFromText(rootFolder), error)) return std::nullopt;
  return L"there is no sandbox folder " + rootFolder;
}

std::optional<std::wstring> ProblemOfUserName(const std::wstring& name) {
  if (name.empty()) return L"names no user (UserName)";
  const bool oneName = name.find_first_of(L"\\/<>\"|?*") == std::wstring::npos;
  if (oneName && !RefusalOfStoredName(name)) return std::nullopt;
  return L"names a user who cannot have a folder: " + name;
}

// One line, with what it is about in front.
std::wstring Reason(const std::wstring& rootFolder, std::wstring_view item,
                    std::wstring_view problem) {
  return rootFolder + L": " + std::wstring(item) + L" " + std::wstring(problem);
}

}  // namespace

SandboxMachine::SandboxMachine(const std::filesystem::path& root, SandboxProduct product)
    : paths_(root),
      files_(paths_),
      registry_(root / "registry"),
      product_(std::move(product)),
      folders_(product_.UserName()),
      profiles_(paths_),
      archives_(paths_),
      interpreter_(registry_, paths_),
      user_(product_.UserName()) {}

MachineOrReason SandboxMachine::Open(const std::wstring& rootFolder) {
  if (auto problem = ProblemOfRoot(rootFolder)) return {nullptr, *problem};
  const std::filesystem::path root = HostPathFromText(rootFolder);
  const auto refuse = [&rootFolder](std::wstring_view item, std::wstring_view problem) {
    return MachineOrReason{nullptr, Reason(rootFolder, item, problem)};
  };

  std::vector<std::uint8_t> ini;
  const FileStatus status = ReadHostFile(root / "product.ini", ini);
  if (status == FileStatus::kMissing) return refuse(L"product.ini", L"is missing");
  if (status != FileStatus::kDone) return refuse(L"product.ini", L"cannot be read");
  SandboxProduct product(DecodeText(ini).text);
  if (auto problem = ProblemOfUserName(product.UserName())) return refuse(L"product.ini", *problem);

  std::unique_ptr<SandboxMachine> machine(new SandboxMachine(root, std::move(product)));
  if (auto problem = machine->registry_.Load()) return refuse(L"registry", *problem);
  const auto temp = machine->folders_.TempPath();
  if (!temp) return refuse(L"product.ini", L"names a user whose temporary path is too long");
  const SystemCode code = MakeFolderPath(machine->files_, WithoutTrailingBackslashes(*temp));
  if (code != kSystemOk) return refuse(*temp, DescribeSystemCode(code));
  return {std::move(machine), {}};
}

Machine SandboxMachine::Ports() {
  return {&files_,        &registry_, &folders_, &guids_,    &profiles_,  &product_,  &archives_,
          &registryTool_, &clock_,    &user_,    &codePage_, &processes_, self_.get()};
}

FilesOrReason OpenSandboxFiles(const std::wstring& rootFolder) {
  if (auto problem = ProblemOfRoot(rootFolder)) return {nullptr, *problem};
  auto paths = std::make_unique<DrivePathMapper>(HostPathFromText(rootFolder));
  return {std::make_unique<MappedFiles>(std::move(paths)), {}};
}

}  // namespace carrovan
