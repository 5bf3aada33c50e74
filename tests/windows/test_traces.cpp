#include "tests/windows/test_traces.h"

#include <algorithm>
#include <regex>
#include <stdexcept>

#include "platform/windows/windows_facts.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"
#include "tests/windows/obstacles.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};
constexpr const wchar_t* kBrands[] = {L"ORMA", L"Vantric"};

// The test machine's name within the name of a folder or key; empty when there is none.
std::wstring TestNameIn(const std::wstring& text) {
  const std::wregex pattern(L"VANTRIC-T[0-9]{1,9}-[0-9]+");
  std::wsmatch match;
  return std::regex_search(text, match, pattern) ? match.str() : std::wstring();
}

bool HasNoMachine(const std::wstring& name) {
  const std::wstring testName = TestNameIn(name);
  return !testName.empty() && ClaimName(testName) != nullptr;
}

// Neither folders nor files can be removed while they are read-only.
void RemoveOne(const std::wstring& path) {
  WindowsFileSystem files;
  const auto isRemoved = [&] {
    return files.RemoveFolder(path) == kSystemOk || files.RemoveFile(path) == kSystemOk;
  };
  if (!isRemoved() && SetReadOnly(path, false)) static_cast<void>(isRemoved());
}

}  // namespace

void DeleteTree(const std::wstring& path) {
  for (const FolderEntry& entry : ListFolder(WindowsFileSystem(), path)) {
    const std::wstring child = WithTrailingBackslash(path) + entry.name;
    if (entry.isFolder && !entry.isLink) {
      DeleteTree(child);
    } else {
      RemoveOne(child);
    }
  }
  RemoveOne(path);
}

TestTraces::TestTraces() : temp_(WindowsKnownFolders().TempPath().value()) {
  const WindowsKnownFolders known;
  for (const wchar_t* brand : kBrands) {
    for (const std::wstring& root :
         {known.LocalAppData().value(), known.RoamingAppData().value()}) {
      folders_.push_back({root + L"\\" + brand});
    }
    for (const RegistryHive hive : kHives) {
      const std::wstring key = std::wstring(L"SOFTWARE\\") + brand;
      keys_.push_back({hive, key + L"\\New User Settings"});
      keys_.push_back({hive, key});
    }
  }
  RemoveNames(HasNoMachine);
  for (Folder& folder : folders_) folder.wasThere = WindowsFileSystem().Exists(folder.path);
  for (Key& key : keys_) key.wasThere = WindowsRegistry().CanOpenKey(key.hive, key.path);
  TakeName();
}

TestTraces::~TestTraces() {
  RemoveNames([this](const std::wstring& name) { return TestNameIn(name) == name_; });
  RemoveEmptyPlaces();
}

bool TestTraces::IsShared(const std::wstring& folder) const {
  return std::any_of(folders_.begin(), folders_.end(),
                     [&](const Folder& shared) { return shared.path == folder; });
}

bool TestTraces::IsShared(RegistryHive hive, const std::wstring& keyPath) const {
  return std::any_of(keys_.begin(), keys_.end(), [&](const Key& shared) {
    return shared.hive == hive && shared.path == keyPath;
  });
}

void TestTraces::TakeName() {
  const std::wstring prefix = L"VANTRIC-T" + std::to_wstring(OwnProcessId()) + L"-";
  for (int number = 1; claim_ == nullptr; ++number) {
    name_ = prefix + std::to_wstring(number);
    claim_ = ClaimName(name_);
  }
  scratch_ = temp_ + L"Carrovan test " + name_ + L"\\";
  const SystemCode code = WindowsFileSystem().CreateFolder(scratch_);
  if (code != kSystemOk) {
    throw std::runtime_error("no scratch folder: error " + std::to_string(code));
  }
}

void TestTraces::RemoveNames(const std::function<bool(const std::wstring& name)>& isTrace) const {
  std::vector<std::wstring> folders = {temp_};
  for (const Folder& folder : folders_) folders.push_back(folder.path + L"\\");
  for (const std::wstring& folder : folders) {
    for (const FolderEntry& entry : ListFolder(WindowsFileSystem(), folder)) {
      if (isTrace(entry.name)) DeleteTree(folder + entry.name);
    }
  }
  for (const Key& key : keys_) {
    const auto names = WindowsRegistry().SubkeyNames(key.hive, key.path);
    for (const std::wstring& name : names.value_or(std::vector<std::wstring>())) {
      if (isTrace(name)) static_cast<void>(DeleteRegistryTree(key.hive, key.path + L"\\" + name));
    }
  }
}

void TestTraces::RemoveEmptyPlaces() const {
  for (const Folder& folder : folders_) {
    if (!folder.wasThere) static_cast<void>(WindowsFileSystem().RemoveFolder(folder.path));
  }
  for (const Key& key : keys_) {
    const auto names = WindowsRegistry().SubkeyNames(key.hive, key.path);
    if (!key.wasThere && names && names->empty()) {
      static_cast<void>(DeleteRegistryTree(key.hive, key.path));
    }
  }
}

}  // namespace carrovan
