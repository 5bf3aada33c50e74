#include "tests/windows/windows_test_machine.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "platform/windows/tarvik_library.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"
#include "tests/support/test_links.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::filesystem::path DiskPath(const std::wstring& path) { return {SystemPath(path)}; }

[[noreturn]] void Fail(const std::string& what, const std::wstring& path) {
  throw std::runtime_error(what + ": " + ToUtf8(path));
}

void Require(bool done, const std::string& what, const std::wstring& path) {
  if (!done) Fail(what, path);
}

// "C:\A\B" gives "C:\A" and "C:\A\B"; "A\B" gives "A" and "A\B".
std::vector<std::wstring> OutermostFirst(const std::wstring& path) {
  std::vector<std::wstring> steps;
  for (std::size_t end = path.find(L'\\'); end != std::wstring::npos;
       end = path.find(L'\\', end + 1)) {
    if (end > 0 && path[end - 1] != L':') steps.push_back(path.substr(0, end));
  }
  if (!EndsInSeparator(path)) steps.push_back(path);
  return steps;
}

}  // namespace

std::optional<std::wstring> NotingGuidSource::NewGuid() {
  std::optional<std::wstring> guid = source_.NewGuid();
  if (guid) guids.push_back(*guid);
  return guid;
}

WindowsTestMachine::WindowsTestMachine(std::unique_ptr<TarvikLibrary> tarvik)
    : tarvik_(std::move(tarvik)), archives_(tarvik_->Functions()) {
  product.productName = traces_.Name();
  product.startupFolder = traces_.ScratchFolder() + L"Program Files\\Product\\Bin";
}

WindowsTestMachine::~WindowsTestMachine() {
  obstacles_.clear();
  for (auto path = madePaths_.rbegin(); path != madePaths_.rend(); ++path) DeleteTree(*path);
  for (auto key = madeKeys_.rbegin(); key != madeKeys_.rend(); ++key) {
    static_cast<void>(DeleteRegistryTree(key->hive, key->path));
  }
  RemoveStagingFolders();
}

// A run names its staging folder by a GUID.
void WindowsTestMachine::RemoveStagingFolders() {
  const std::wstring temp = folders_.TempPath().value_or(traces_.ScratchFolder());
  for (const std::wstring& guid : guids_.guids) {
    DeleteTree(temp + guid.substr(1, guid.size() - 2));
  }
}

Machine WindowsTestMachine::Ports() {
  return {&files_,        &registry_, &folders_, &guids_,    &profiles_,  &product,   &archives_,
          &registryTool_, &clock,     &user_,    &codePage_, &processes_, self_.get()};
}

void WindowsTestMachine::MakeFolder(const std::wstring& path) {
  for (const std::wstring& folder : OutermostFirst(path)) {
    if (files_.IsFolder(folder)) continue;
    Require(files_.CreateFolder(folder) == kSystemOk, "cannot make the folder", folder);
    if (!traces_.IsShared(folder)) madePaths_.push_back(folder);
  }
}

void WindowsTestMachine::PutFile(const std::wstring& path, const std::string& bytes) {
  MakeFolder(RemoveFileSpec(path));
  if (!files_.Exists(path)) madePaths_.push_back(path);
  std::ofstream file(DiskPath(path), std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  Require(file.good(), "cannot write the file", path);
}

std::optional<std::string> WindowsTestMachine::FileBytes(const std::wstring& path) const {
  std::ifstream file(DiskPath(path), std::ios::binary);
  if (!file) return std::nullopt;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

void WindowsTestMachine::DeletePath(const std::wstring& path) {
  DeleteTree(path);
  Require(!files_.Exists(path), "cannot delete", path);
}

void WindowsTestMachine::MakeUnreadable(const std::wstring& path) {
  obstacles_.push_back(LockFileForOthers(path));
  Require(obstacles_.back() != nullptr, "cannot lock the file", path);
}

void WindowsTestMachine::MakeFolderUnwritable(const std::wstring& folder) {
  obstacles_.push_back(DenyCreatingIn(folder));
  Require(obstacles_.back() != nullptr, "cannot deny creating in the folder", folder);
  const std::wstring probe = WithTrailingBackslash(folder) + L"probe";
  if (files_.CreateEmptyFile(probe) != kSystemOk) return;
  DeleteTree(probe);
  Fail("this user may write everywhere; run the tests as another, or through tools/test-windows",
       folder);
}

void WindowsTestMachine::MakeReadOnly(const std::wstring& path) {
  Require(SetReadOnly(path, true), "cannot make read-only", path);
}

bool WindowsTestMachine::KeepsSpelling() const { return RunsUnderWine(); }

void WindowsTestMachine::PutKey(RegistryHive hive, const std::wstring& keyPath) {
  for (const std::wstring& key : OutermostFirst(keyPath)) {
    if (registry_.CanOpenKey(hive, key)) continue;
    Require(CreateRegistryKey(hive, key) == kSystemOk, "cannot create the key", key);
    if (!traces_.IsShared(hive, key)) madeKeys_.push_back({hive, key});
  }
}

void WindowsTestMachine::PutValue(RegistryHive hive, const std::wstring& keyPath,
                                  const RegistryValue& value) {
  PutKey(hive, keyPath);
  Require(SetRegistryValue(hive, keyPath, value) == kSystemOk, "cannot set a value of", keyPath);
}

std::optional<RegistryValue> WindowsTestMachine::Value(RegistryHive hive,
                                                       const std::wstring& keyPath,
                                                       const std::wstring& name) const {
  return QueryRegistryValue(hive, keyPath, name);
}

bool WindowsTestMachine::MakeKeyUnreadable(RegistryHive hive, const std::wstring& keyPath) {
  std::unique_ptr<Obstacle> denied = DenyReadingKey(hive, keyPath);
  if (!denied) return false;
  obstacles_.push_back(std::move(denied));
  return true;
}

bool MakeLink(TestMachine& machine, const std::wstring& path, const std::wstring& target) {
  machine.MakeFolder(RemoveFileSpec(path));
  return MakeFolderLink(path, target) && machine.Ports().files->IsLink(path);
}

std::unique_ptr<TestMachine> NewTestMachine() {
  TarvikOrReason tarvik = LoadTarvik(TarvikPath());
  if (!tarvik.object) throw std::runtime_error(ToUtf8(tarvik.reason));
  return std::make_unique<WindowsTestMachine>(std::move(tarvik.object));
}

}  // namespace carrovan
