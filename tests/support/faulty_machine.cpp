#include "tests/support/faulty_machine.h"

namespace carrovan {
namespace {

using Port = FaultyPort;

class FaultyReplacement : public FileReplacement {
 public:
  FaultyReplacement(std::unique_ptr<FileReplacement> file, Fault& fault)
      : file_(std::move(file)), fault_(fault) {}
  SystemCode Append(std::string_view part) override {
    return fault_.Strikes(Port::kFiles) ? kSystemDiskFull : file_->Append(part);
  }
  SystemCode Complete() override {
    return fault_.Strikes(Port::kFiles) ? kSharingViolation : file_->Complete();
  }

 private:
  std::unique_ptr<FileReplacement> file_;
  Fault& fault_;
};

class FaultyAppender : public FileAppender {
 public:
  FaultyAppender(std::unique_ptr<FileAppender> file, Fault& fault)
      : file_(std::move(file)), fault_(fault) {}
  SystemCode Append(std::string_view bytes) override {
    return fault_.Strikes(Port::kFiles) ? kSystemDiskFull : file_->Append(bytes);
  }
  SystemCode FlushToDisk() override {
    return fault_.Strikes(Port::kFiles) ? kSystemDiskFull : file_->FlushToDisk();
  }

 private:
  std::unique_ptr<FileAppender> file_;
  Fault& fault_;
};

class FaultyFiles : public ForwardingFiles {
 public:
  FaultyFiles(FileSystem& files, Fault& fault) : ForwardingFiles(files), fault_(fault) {}

  bool Exists(const std::wstring& path) const override {
    return !Strikes() && ForwardingFiles::Exists(path);
  }
  bool IsFolder(const std::wstring& path) const override {
    return !Strikes() && ForwardingFiles::IsFolder(path);
  }
  bool IsLink(const std::wstring& path) const override {
    return !Strikes() && ForwardingFiles::IsLink(path);
  }
  bool IsReadOnly(const std::wstring& path) const override {
    return !Strikes() && ForwardingFiles::IsReadOnly(path);
  }
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override {
    return Strikes() ? kAccessDenied : ForwardingFiles::ReadFolder(folder, entries);
  }
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override {
    return Strikes() ? kAccessDenied : ForwardingFiles::ReadBytes(path, bytes);
  }
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override {
    return Strikes() ? kAccessDenied : ForwardingFiles::ReadInParts(path, take);
  }
  SystemCode CreateFolder(const std::wstring& path) override {
    return Strikes() ? kAccessDenied : ForwardingFiles::CreateFolder(path);
  }
  SystemCode CreateEmptyFile(const std::wstring& path) override {
    return Strikes() ? kSystemDiskFull : ForwardingFiles::CreateEmptyFile(path);
  }
  SystemCode RemoveFile(const std::wstring& path) override {
    return Strikes() ? kSharingViolation : ForwardingFiles::RemoveFile(path);
  }
  SystemCode RemoveFolder(const std::wstring& path) override {
    return Strikes() ? kAccessDenied : ForwardingFiles::RemoveFolder(path);
  }
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override {
    return Strikes() ? kSystemDiskFull : ForwardingFiles::WriteBytes(path, bytes);
  }
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override {
    if (Strikes()) return kAccessDenied;
    std::unique_ptr<FileReplacement> file;
    const SystemCode code = ForwardingFiles::BeginReplacement(path, expectedBytes, file);
    if (code != kSystemOk) return code;
    replacement = std::make_unique<FaultyReplacement>(std::move(file), fault_);
    return kSystemOk;
  }
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override {
    if (Strikes()) return kSystemDiskFull;
    std::unique_ptr<FileAppender> file;
    const SystemCode code = ForwardingFiles::OpenToAppend(path, file);
    if (code == kSystemOk) appender = std::make_unique<FaultyAppender>(std::move(file), fault_);
    return code;
  }
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override {
    return Strikes() ? kSharingViolation : ForwardingFiles::HoldFile(path, hold);
  }
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override {
    return Strikes() ? kSystemDiskFull : ForwardingFiles::CopyOver(source, target);
  }
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override {
    return Strikes() ? kSharingViolation : ForwardingFiles::MoveTo(source, target);
  }
  SystemCode Flush(std::span<const std::wstring> paths) override {
    return Strikes() ? kSystemDiskFull : ForwardingFiles::Flush(paths);
  }

 private:
  bool Strikes() const { return fault_.Strikes(Port::kFiles); }

  Fault& fault_;
};

// Its reading and its editing fail apart from each other.
class FaultyRegistry : public ForwardingRegistry {
 public:
  FaultyRegistry(RegistryEditor& registry, Fault& fault)
      : ForwardingRegistry(registry), fault_(fault) {}

  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override {
    return !fault_.Strikes(Port::kRegistryReader) && ForwardingRegistry::CanOpenKey(hive, keyPath);
  }
  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override {
    if (fault_.Strikes(Port::kRegistryReader)) return std::nullopt;
    return ForwardingRegistry::SubkeyNames(hive, keyPath);
  }
  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override {
    if (fault_.Strikes(Port::kRegistryReader)) return std::nullopt;
    return ForwardingRegistry::Values(hive, keyPath);
  }
  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override {
    return Strikes() ? kAccessDenied : ForwardingRegistry::TryOpen(hive, keyPath);
  }
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override {
    if (Strikes()) return std::nullopt;
    return ForwardingRegistry::ValueType(hive, keyPath, name);
  }
  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override {
    return Strikes() ? kAccessDenied : ForwardingRegistry::SetValues(hive, keyPath, values);
  }
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override {
    return Strikes() ? kAccessDenied : ForwardingRegistry::CreateKey(hive, keyPath);
  }
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override {
    return Strikes() ? kAccessDenied : ForwardingRegistry::DeleteValue(hive, keyPath, name);
  }
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override {
    return Strikes() ? kAccessDenied : ForwardingRegistry::DeleteTree(hive, keyPath);
  }
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override {
    return Strikes() ? kAccessDenied
                     : ForwardingRegistry::CopyTree(sourceHive, sourcePath, targetHive, targetPath);
  }
  SystemCode Flush(RegistryHive hive) override {
    return Strikes() ? kAccessDenied : ForwardingRegistry::Flush(hive);
  }

 private:
  bool Strikes() const { return fault_.Strikes(Port::kRegistryEditor); }

  Fault& fault_;
};

class FaultyFolders : public KnownFolders {
 public:
  FaultyFolders(KnownFolders& folders, Fault& fault) : folders_(folders), fault_(fault) {}

  std::optional<std::wstring> RoamingAppData() const override {
    return Strikes() ? std::nullopt : folders_.RoamingAppData();
  }
  std::optional<std::wstring> LocalAppData() const override {
    return Strikes() ? std::nullopt : folders_.LocalAppData();
  }
  std::optional<std::wstring> TempPath() const override {
    return Strikes() ? std::nullopt : folders_.TempPath();
  }

 private:
  bool Strikes() const { return fault_.Strikes(Port::kFolders); }

  KnownFolders& folders_;
  Fault& fault_;
};

class FaultyGuids : public GuidSource {
 public:
  FaultyGuids(GuidSource& guids, Fault& fault) : guids_(guids), fault_(fault) {}
  std::optional<std::wstring> NewGuid() override {
    return fault_.Strikes(Port::kGuids) ? std::nullopt : guids_.NewGuid();
  }

 private:
  GuidSource& guids_;
  Fault& fault_;
};

class FaultyProfiles : public ProfileFile {
 public:
  FaultyProfiles(ProfileFile& profiles, Fault& fault) : profiles_(profiles), fault_(fault) {}
  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override {
    if (fault_.Strikes(Port::kProfiles)) return {};
    return profiles_.ReadValue(section, key, filePath);
  }
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override {
    return !fault_.Strikes(Port::kProfiles) && profiles_.WriteValue(section, key, value, filePath);
  }

 private:
  ProfileFile& profiles_;
  Fault& fault_;
};

class FaultyWriter : public ArchiveWriter {
 public:
  FaultyWriter(std::unique_ptr<ArchiveWriter> writer, Fault& fault)
      : writer_(std::move(writer)), fault_(fault) {}
  void Expect(const std::wstring& sourcePath) override { writer_->Expect(sourcePath); }
  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    if (fault_.Strikes(Port::kArchives)) return ArchiveResult::kSourceUnreadable;
    return writer_->Add(entryName, sourcePath);
  }
  ArchiveResult Close() override {
    return fault_.Strikes(Port::kArchives) ? ArchiveResult::kDiskFull : writer_->Close();
  }

 private:
  std::unique_ptr<ArchiveWriter> writer_;
  Fault& fault_;
};

class FaultyReader : public ArchiveReader {
 public:
  FaultyReader(std::unique_ptr<ArchiveReader> reader, Fault& fault)
      : reader_(std::move(reader)), fault_(fault) {}
  std::optional<ArchiveItem> Item(std::size_t index) const override { return reader_->Item(index); }
  void Expect(std::size_t index) override { reader_->Expect(index); }
  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    if (fault_.Strikes(Port::kArchives)) return ArchiveResult::kDiskFull;
    return reader_->Extract(index, targetPath);
  }

 private:
  std::unique_ptr<ArchiveReader> reader_;
  Fault& fault_;
};

class FaultyArchives : public ArchiveLibrary {
 public:
  FaultyArchives(ArchiveLibrary& archives, Fault& fault) : archives_(archives), fault_(fault) {}
  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override {
    if (fault_.Strikes(Port::kArchives)) return nullptr;
    auto writer = archives_.Create(archivePath, purpose);
    return writer ? std::make_unique<FaultyWriter>(std::move(writer), fault_) : nullptr;
  }
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override {
    if (fault_.Strikes(Port::kArchives)) return nullptr;
    auto reader = archives_.Open(archivePath);
    return reader ? std::make_unique<FaultyReader>(std::move(reader), fault_) : nullptr;
  }

 private:
  ArchiveLibrary& archives_;
  Fault& fault_;
};

class FaultyRun : public RunningTool {
 public:
  FaultyRun(std::unique_ptr<RunningTool> command, Fault& fault)
      : command_(std::move(command)), fault_(fault) {}
  bool WaitForEnd() override {
    return !fault_.Strikes(Port::kInterpreter) && command_->WaitForEnd();
  }

 private:
  std::unique_ptr<RunningTool> command_;
  Fault& fault_;
};

class FaultyRegistryTool : public RegistryTool {
 public:
  FaultyRegistryTool(RegistryTool& tool, Fault& fault) : tool_(tool), fault_(fault) {}
  std::unique_ptr<RunningTool> ExportKey(const std::wstring& key,
                                         const std::wstring& file) override {
    if (fault_.Strikes(Port::kInterpreter)) return nullptr;
    return Faulty(tool_.ExportKey(key, file));
  }
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& file) override {
    if (fault_.Strikes(Port::kInterpreter)) return nullptr;
    return Faulty(tool_.ImportFile(file));
  }

 private:
  std::unique_ptr<RunningTool> Faulty(std::unique_ptr<RunningTool> running) {
    return running ? std::make_unique<FaultyRun>(std::move(running), fault_) : nullptr;
  }

  RegistryTool& tool_;
  Fault& fault_;
};

class FaultyUser : public UserIdentity {
 public:
  FaultyUser(UserIdentity& user, Fault& fault) : user_(user), fault_(fault) {}
  std::optional<std::wstring> UserName() const override {
    return fault_.Strikes(Port::kUser) ? std::nullopt : user_.UserName();
  }
  std::optional<std::wstring> ProfileFolder() const override {
    return fault_.Strikes(Port::kUser) ? std::nullopt : user_.ProfileFolder();
  }

 private:
  UserIdentity& user_;
  Fault& fault_;
};

class FaultyDocument : public XmlDocument {
 public:
  FaultyDocument(std::unique_ptr<XmlDocument> document, Fault& fault)
      : document_(std::move(document)), fault_(fault) {}
  bool Load(const std::wstring& path) override {
    return !fault_.Strikes(Port::kDom) && document_->Load(path);
  }
  std::wstring LoadProblem() const override { return document_->LoadProblem(); }
  XmlNode Root() override { return document_->Root(); }
  XmlNode CreateElement(std::string_view name) override {
    return fault_.Strikes(Port::kDom) ? XmlNode() : document_->CreateElement(name);
  }
  bool Save(const std::wstring& path) override {
    return !fault_.Strikes(Port::kDom) && document_->Save(path);
  }

 private:
  std::unique_ptr<XmlDocument> document_;
  Fault& fault_;
};

class FaultySession : public XmlSession {
 public:
  FaultySession(std::unique_ptr<XmlSession> session, Fault& fault)
      : session_(std::move(session)), fault_(fault) {}
  bool Started() const override { return !fault_.Strikes(Port::kDom) && session_->Started(); }
  std::unique_ptr<XmlDocument> NewDocument() override {
    if (fault_.Strikes(Port::kDom)) return nullptr;
    auto document = session_->NewDocument();
    return document ? std::make_unique<FaultyDocument>(std::move(document), fault_) : nullptr;
  }

 private:
  std::unique_ptr<XmlSession> session_;
  Fault& fault_;
};

class FaultyDom : public XmlDom {
 public:
  FaultyDom(FileSystem& files, Fault& fault) : dom_(OpenXmlDom(files)), fault_(fault) {}
  std::unique_ptr<XmlSession> Begin() override {
    return std::make_unique<FaultySession>(dom_->Begin(), fault_);
  }

 private:
  std::unique_ptr<XmlDom> dom_;
  Fault& fault_;
};

}  // namespace

struct FaultyMachine::Parts {
  Parts(const Machine& machine, Fault& fault)
      : behind(machine),
        files(*machine.files, fault),
        registry(*machine.registry, fault),
        folders(*machine.folders, fault),
        guids(*machine.guids, fault),
        profiles(*machine.profiles, fault),
        archives(*machine.archives, fault),
        registryTool(*machine.registryTool, fault),
        user(*machine.user, fault),
        dom(files, fault) {}

  Machine behind;
  FaultyFiles files;
  FaultyRegistry registry;
  FaultyFolders folders;
  FaultyGuids guids;
  FaultyProfiles profiles;
  FaultyArchives archives;
  FaultyRegistryTool registryTool;
  FaultyUser user;
  FaultyDom dom;
};

FaultyMachine::FaultyMachine(const Machine& machine, Fault& fault)
    : parts_(std::make_unique<Parts>(machine, fault)) {}

FaultyMachine::~FaultyMachine() = default;

Machine FaultyMachine::Ports() {
  Machine ports = parts_->behind;
  ports.files = &parts_->files;
  ports.registry = &parts_->registry;
  ports.folders = &parts_->folders;
  ports.guids = &parts_->guids;
  ports.profiles = &parts_->profiles;
  ports.archives = &parts_->archives;
  ports.registryTool = &parts_->registryTool;
  ports.user = &parts_->user;
  return ports;
}

XmlDom& FaultyMachine::Dom() { return parts_->dom; }

}  // namespace carrovan
