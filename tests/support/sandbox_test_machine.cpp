#include <stdexcept>

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
class KeyGuard : public RegistryReader, public RegistryEditor, public CommandInterpreter {
 public:
  explicit KeyGuard(Machine behind) : behind_(behind) {}

  void Deny(RegistryHive hive, const std::wstring& keyPath) { denied_.push_back({hive, keyPath}); }

  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override {
    return !IsDenied(hive, keyPath) && behind_.registry.CanOpenKey(hive, keyPath);
  }

  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override {
    if (IsDenied(hive, keyPath)) return std::nullopt;
    return behind_.registry.SubkeyNames(hive, keyPath);
  }

  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override {
    if (IsDenied(hive, keyPath)) return std::nullopt;
    return behind_.registry.Values(hive, keyPath);
  }

  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override {
    return IsDenied(hive, keyPath) ? kAccessDenied : behind_.registryEditor.TryOpen(hive, keyPath);
  }

  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override {
    if (IsDenied(hive, keyPath)) return std::nullopt;
    return behind_.registryEditor.ValueType(hive, keyPath, name);
  }

  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override {
    return behind_.registryEditor.SetValues(hive, keyPath, values);
  }

  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override {
    return behind_.registryEditor.CreateKey(hive, keyPath);
  }

  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override {
    return behind_.registryEditor.DeleteValue(hive, keyPath, name);
  }

  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override {
    return behind_.registryEditor.DeleteTree(hive, keyPath);
  }

  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override {
    if (IsDenied(sourceHive, sourcePath)) return kAccessDenied;
    return behind_.registryEditor.CopyTree(sourceHive, sourcePath, targetHive, targetPath);
  }

  // The registry tool cannot export a key that cannot be opened.
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override {
    for (const Key& key : denied_) {
      const std::wstring path = RootName(key.hive) + L"\\" + key.path;
      if (Contains(parameters, L"export \"" + path + L"\"")) return behind_.interpreter.Start(L"");
    }
    return behind_.interpreter.Start(parameters);
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

  Machine behind_;
  std::vector<Key> denied_;
};

class SandboxTestMachine : public TestMachine {
 public:
  SandboxTestMachine() : machine_(OpenSandbox(folder_)), guard_(machine_->Ports()) {
    product.productName = L"VANTRIC-T1";
    product.startupFolder = ScratchFolder() + L"Program Files\\Product\\Bin";
    MakeFolder(ScratchFolder());
  }

  Machine Ports() override {
    const Machine real = machine_->Ports();
    return {real.files, guard_,        real.folders,  real.guids, real.profiles,
            product,    real.archives, guard_,        clock,      guard_,
            real.user,  real.codePage, real.processes};
  }

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
    if (!opened.machine) throw std::runtime_error(ToUtf8(opened.reason));
    return std::unique_ptr<SandboxMachine>(static_cast<SandboxMachine*>(opened.machine.release()));
  }

  fs::path HostPath(const std::wstring& path) const {
    return machine_->Paths().ToHost(path).value();
  }

  void Change(RegistryHive hive, const std::function<void(RegistryKey&)>& change) {
    if (!machine_->Registry().Change(hive, change)) throw std::runtime_error("cannot save a hive");
  }

  TemporaryFolder folder_;
  std::unique_ptr<SandboxMachine> machine_;
  KeyGuard guard_;
};

}  // namespace

bool MakeLink(TestMachine& machine, const std::wstring& path, const std::wstring& target) {
  dynamic_cast<SandboxTestMachine&>(machine).MakeLink(path, target);
  return true;
}

std::unique_ptr<TestMachine> NewTestMachine() { return std::make_unique<SandboxTestMachine>(); }

}  // namespace carrovan
