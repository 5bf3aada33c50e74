#include "tests/support/contract_machines.h"

#include <utility>

#include "platform/file_operations.h"
#include "preview/overlay_machine.h"
#include "restore/recorded_machine.h"
#include "restore/restore_point.h"
#include "text/text.h"

namespace carrovan {
namespace {

// A machine in front of another one, on which everything that a test puts there lies.
class FrontTestMachine : public TestMachine {
 public:
  FrontTestMachine() { product = machine_->product; }

  HostFiles& Packages() override { return machine_->Packages(); }
  std::wstring ScratchFolder() const override { return machine_->ScratchFolder(); }
  void MakeFolder(const std::wstring& path) override { machine_->MakeFolder(path); }
  void PutFile(const std::wstring& path, const std::string& bytes) override {
    machine_->PutFile(path, bytes);
  }
  std::optional<std::string> FileBytes(const std::wstring& path) const override {
    return machine_->FileBytes(path);
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
    return machine_->Value(hive, keyPath, name);
  }
  bool MakeKeyUnreadable(RegistryHive hive, const std::wstring& keyPath) override {
    return machine_->MakeKeyUnreadable(hive, keyPath);
  }

 protected:
  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
};

// What a test looks at is what the overlay shows, and so must be what it puts there.
class OverlayTestMachine : public FrontTestMachine {
 public:
  OverlayTestMachine() {
    overlay_ = OverlayMachine::Open(machine_->Ports()).object;
    EXPECT_TRUE(overlay_);
  }

  Machine Ports() override { return overlay_->Ports(); }
  void PutFile(const std::wstring& path, const std::string& bytes) override {
    machine_->PutFile(path, bytes);
    FileSystem& files = *overlay_->Ports().files;
    std::string shown;
    if (files.ReadBytes(path, shown) == kSystemOk && shown == bytes) return;
    EXPECT_EQ(files.WriteBytes(path, bytes), kSystemOk) << ToUtf8(path);
  }
  std::optional<std::string> FileBytes(const std::wstring& path) const override {
    std::string bytes;
    const bool read = overlay_->Ports().files->ReadBytes(path, bytes) == kSystemOk;
    return read ? std::optional(bytes) : std::nullopt;
  }
  std::optional<RegistryValue> Value(RegistryHive hive, const std::wstring& keyPath,
                                     const std::wstring& name) const override {
    const auto values = overlay_->Ports().registry->Values(hive, keyPath);
    if (!values) return std::nullopt;
    for (const RegistryValue& value : *values) {
      if (CompareNames(value.name, name) == 0) return value;
    }
    return std::nullopt;
  }

 private:
  std::unique_ptr<OverlayMachine> overlay_;
};

// A machine whose changes are noted in a restore point, which lies among the test's own files.
class RecordedTestMachine : public FrontTestMachine {
 public:
  RecordedTestMachine() : ports_(machine_->Ports()) {
    recorder_ = ChangeRecorder::Begin(ports_, {L"import", L"2026", L""}).object;
    EXPECT_TRUE(recorder_);
    recorded_.emplace(ports_, *recorder_);
  }
  ~RecordedTestMachine() override {
    const auto root = RestoreRoot(*ports_.folders);
    const std::wstring id = recorder_->Id();
    recorder_.reset();
    if (root) WipeFolder(*ports_.files, *root + L"\\" + id);
  }

  Machine Ports() override { return recorded_->Ports(); }
  bool KeepsSpelling() const override { return machine_->KeepsSpelling(); }

 private:
  Machine ports_;
  std::unique_ptr<ChangeRecorder> recorder_;
  std::optional<RecordedMachine> recorded_;
};

}  // namespace

std::unique_ptr<TestMachine> NewContractMachine(ContractMachine kind) {
  switch (kind) {
    case ContractMachine::kOverlay:
      return std::make_unique<OverlayTestMachine>();
    case ContractMachine::kRecorded:
      return std::make_unique<RecordedTestMachine>();
    default:
      return NewTestMachine();
  }
}

}  // namespace carrovan
