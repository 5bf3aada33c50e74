#include <algorithm>
#include <stdexcept>

#include "platform/forwarding_ports.h"
#include "platform/sandbox/sandbox_machine.h"
#include "registry_text/registry_file_writer.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_links.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

constexpr char kProductIni[] = "[Product]\r\nUserName=Test User\r\n";

// Keys that cannot be opened, in front of a registry whose files know no permissions.
class KeyGuard : public ForwardingRegistry {
 public:
  using ForwardingRegistry::ForwardingRegistry;

  void Deny(RegistryHive hive, const std::wstring& keyPath) { denied_.push_back({hive, keyPath}); }

  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override {
    return !IsDenied(hive, keyPath) && ForwardingRegistry::CanOpenKey(hive, keyPath);
  }

  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override {
    if (IsDenied(hive, keyPath)) return std::nullopt;
    return ForwardingRegistry::SubkeyNames(hive, keyPath);
  }

  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override {
    if (IsDenied(hive, keyPath)) return std::nullopt;
    return ForwardingRegistry::Values(hive, keyPath);
  }

  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override {
    return IsDenied(hive, keyPath) ? kAccessDenied : ForwardingRegistry::TryOpen(hive, keyPath);
  }

  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override {
    if (IsDenied(hive, keyPath)) return std::nullopt;
    return ForwardingRegistry::ValueType(hive, keyPath, name);
  }

  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override {
    if (IsDenied(sourceHive, sourcePath)) return kAccessDenied;
    return ForwardingRegistry::CopyTree(sourceHive, sourcePath, targetHive, targetPath);
  }

  // The registry tool cannot export a key that cannot be opened.
  bool IsDeniedInFull(const std::wstring& keyPath) const {
    return std::ranges::any_of(
        denied_, [&](const Key& key) { return RootName(key.hive) + L"\\" + key.path == keyPath; });
  }

 private:
  struct Key {
    RegistryHive hive;
    std::wstring path;
  };

  bool IsDenied(RegistryHive hive, const std::wstring& keyPath) const {
    for (const Key& key : denied_) {
      if (key.hive == hive && CompareNames(key.path, keyPath) == 0) return true;
    }
    return false;
  }

  std::vector<Key> denied_;
};

class GuardedRegistryTool : public ForwardingRegistryTool {
 public:
  GuardedRegistryTool(RegistryTool& tool, const KeyGuard& guard)
      : ForwardingRegistryTool(tool), guard_(guard) {}

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& key,
                                         const std::wstring& file) override {
    if (guard_.IsDeniedInFull(key)) return std::make_unique<EndedTool>(false);
    return ForwardingRegistryTool::ExportKey(key, file);
  }

 private:
  const KeyGuard& guard_;
};

class SandboxTestMachine : public TestMachine {
 public:
  SandboxTestMachine()
      : machine_(OpenSandbox(folder_)),
        guard_(*machine_->Ports().registry),
        tool_(*machine_->Ports().registryTool, guard_) {
    product.productName = L"VANTRIC-T1";
    product.startupFolder = ScratchFolder() + L"Program Files\\Product\\Bin";
    MakeFolder(ScratchFolder());
  }

  Machine Ports() override {
    Machine ports = machine_->Ports();
    ports.registry = &guard_;
    ports.registryTool = &tool_;
    ports.product = &product;
    ports.clock = &clock;
    return ports;
  }

  HostFiles& Packages() override { return *packages_; }

  std::wstring ScratchFolder() const override { return L"C:\\Test files\\"; }

  void MakeFolder(const std::wstring& path) override { fs::create_directories(HostPath(path)); }

  void PutFile(const std::wstring& path, const std::string& bytes) override {
    PutHostFile(HostPath(path), bytes);
  }

  std::optional<std::string> FileBytes(const std::wstring& path) const override {
    return HostFileBytes(HostPath(path));
  }

  void DeletePath(const std::wstring& path) override { fs::remove_all(HostPath(path)); }

  void MakeUnreadable(const std::wstring& path) override {
    folder_.TakePermission(HostPath(path), fs::perms::owner_read);
  }

  void MakeFolderUnwritable(const std::wstring& folder) override {
    folder_.TakePermission(HostPath(folder), fs::perms::owner_write);
  }

  void MakeReadOnly(const std::wstring& path) override {
    folder_.TakePermission(HostPath(path), fs::perms::owner_write);
  }

  void MakeLink(const std::wstring& path, const std::wstring& target) {
    fs::create_directories(HostPath(path).parent_path());
    fs::create_directory_symlink(HostPath(target), HostPath(path));
  }

  void PutKey(RegistryHive hive, const std::wstring& keyPath) override {
    Change(hive, [&](RegistryKey& root) { root.Make(keyPath); });
  }

  void PutValue(RegistryHive hive, const std::wstring& keyPath,
                const RegistryValue& value) override {
    Change(hive, [&](RegistryKey& root) { root.Make(keyPath).SetValue(value); });
  }

  std::optional<RegistryValue> Value(RegistryHive hive, const std::wstring& keyPath,
                                     const std::wstring& name) const override {
    const RegistryKey* key = machine_->Registry().Find(hive, keyPath);
    const RegistryValue* value = key == nullptr ? nullptr : key->Value(name);
    return value == nullptr ? std::nullopt : std::optional(*value);
  }

  bool MakeKeyUnreadable(RegistryHive hive, const std::wstring& keyPath) override {
    guard_.Deny(hive, keyPath);
    return true;
  }

 private:
  static std::unique_ptr<SandboxMachine> OpenSandbox(const TemporaryFolder& folder) {
    PutHostFile(folder.Path() / "product.ini", kProductIni);
    MachineOrReason opened = SandboxMachine::Open(folder.Text());
    if (!opened.object) throw std::runtime_error(ToUtf8(opened.reason));
    return std::unique_ptr<SandboxMachine>(static_cast<SandboxMachine*>(opened.object.release()));
  }

  fs::path HostPath(const std::wstring& path) const {
    return machine_->Paths().ToHost(path).value();
  }

  void Change(RegistryHive hive, const std::function<void(RegistryKey&)>& change) {
    if (!machine_->Registry().Change(hive, change)) throw std::runtime_error("cannot save a hive");
  }

  TemporaryFolder folder_;
  std::unique_ptr<SandboxMachine> machine_;
  std::unique_ptr<HostFiles> packages_ = OpenSandboxFiles(folder_.Text()).object;
  KeyGuard guard_;
  GuardedRegistryTool tool_;
};

}  // namespace

bool MakeLink(TestMachine& machine, const std::wstring& path, const std::wstring& target) {
  dynamic_cast<SandboxTestMachine&>(machine).MakeLink(path, target);
  return true;
}

std::unique_ptr<TestMachine> NewTestMachine() { return std::make_unique<SandboxTestMachine>(); }

}  // namespace carrovan
