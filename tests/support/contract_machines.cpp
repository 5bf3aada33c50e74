#include "tests/support/contract_machines.h"

#include <utility>

#include "platform/text.h"
#include "preview/overlay_machine.h"

namespace carrovan {
namespace {

// A machine behind an overlay. What a test puts there lies on the machine itself, as long as the
// overlay shows it; what it looks at is what the overlay shows.
class OverlayTestMachine : public TestMachine {
 public:
  OverlayTestMachine() {
    product = machine_->product;
    std::wstring reason;
    overlay_ = OverlayMachine::Open(machine_->Ports(), reason);
    EXPECT_TRUE(overlay_) << ToUtf8(reason);
  }

  Machine Ports() override { return overlay_->Ports(); }
  std::wstring ScratchFolder() const override { return machine_->ScratchFolder(); }
  void MakeFolder(const std::wstring& path) override { machine_->MakeFolder(path); }
  void PutFile(const std::wstring& path, const std::string& bytes) override {
    machine_->PutFile(path, bytes);
    FileSystem& files = overlay_->Ports().files;
    std::string shown;
    if (files.ReadBytes(path, shown) == kSystemOk && shown == bytes) return;
    EXPECT_EQ(files.WriteBytes(path, bytes), kSystemOk) << ToUtf8(path);
  }
  std::optional<std::string> FileBytes(const std::wstring& path) const override {
    std::string bytes;
    const bool read = overlay_->Ports().files.ReadBytes(path, bytes) == kSystemOk;
    return read ? std::optional(bytes) : std::nullopt;
  }
  void DeletePath(const std::wstring& path) override { machine_->DeletePath(path); }
  void MakeUnreadable(const std::wstring& path) override { machine_->MakeUnreadable(path); }
  void MakeFolderUnwritable(const std::wstring& folder) override {
    machine_->MakeFolderUnwritable(folder);
  }
  void MakeReadOnly(const std::wstring& path) override { machine_->MakeReadOnly(path); }
  void PutKey(RegistryHive hive, const std::wstring& keyPath) override {
    machine_->PutKey(hive, keyPath);
  }
  void PutValue(RegistryHive hive, const std::wstring& keyPath,
                const RegistryValue& value) override {
    machine_->PutValue(hive, keyPath, value);
  }
  std::optional<RegistryValue> Value(RegistryHive hive, const std::wstring& keyPath,
                                     const std::wstring& name) const override {
    const auto values = overlay_->Ports().registry.Values(hive, keyPath);
    if (!values) return std::nullopt;
    for (const RegistryValue& value : *values) {
      if (CompareNames(value.name, name) == 0) return value;
    }
    return std::nullopt;
  }
  bool MakeKeyUnreadable(RegistryHive hive, const std::wstring& keyPath) override {
    return machine_->MakeKeyUnreadable(hive, keyPath);
  }

 private:
  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  std::unique_ptr<OverlayMachine> overlay_;
};

}  // namespace

std::unique_ptr<TestMachine> NewContractMachine(ContractMachine kind) {
  if (kind == ContractMachine::kOwn) return NewTestMachine();
  return std::make_unique<OverlayTestMachine>();
}

}  // namespace carrovan
