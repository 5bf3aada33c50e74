#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/forwarding_ports.h"
#include "platform/machine.h"
#include "platform/registry_tool.h"

namespace carrovan {

// What a face was to show.
class RecordingView {
 public:
  std::vector<std::wstring> messages;
  std::wstring finishText;

  void ShowMessage(const std::wstring& text) { messages.push_back(text); }
};

// Keeps one file, whatever is done to it.
class KeepingFiles : public ForwardingFiles {
 public:
  KeepingFiles(FileSystem& files, std::wstring kept)
      : ForwardingFiles(files), kept_(std::move(kept)) {}

  SystemCode RemoveFile(const std::wstring& path) override {
    return path == kept_ ? kSharingViolation : ForwardingFiles::RemoveFile(path);
  }

 private:
  std::wstring kept_;
};

// Shows files of one name as pipes or devices.
class SpecialFiles : public ForwardingFiles {
 public:
  SpecialFiles(FileSystem& files, std::wstring name)
      : ForwardingFiles(files), name_(std::move(name)) {}

  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override {
    const SystemCode code = ForwardingFiles::ReadFolder(folder, entries);
    Mark(entries);
    return code;
  }

 private:
  void Mark(std::vector<FolderEntry>& entries) const {
    for (FolderEntry& entry : entries) entry.isSpecial = entry.name == name_;
  }

  std::wstring name_;
};

class FixedFolders : public KnownFolders {
 public:
  std::optional<std::wstring> roaming = L"C:\\Users\\u\\AppData\\Roaming";
  std::optional<std::wstring> local = L"C:\\Users\\u\\AppData\\Local";
  std::optional<std::wstring> temp = L"C:\\Users\\u\\AppData\\Local\\Temp\\";

  std::optional<std::wstring> RoamingAppData() const override { return roaming; }
  std::optional<std::wstring> LocalAppData() const override { return local; }
  std::optional<std::wstring> TempPath() const override { return temp; }
};

class FixedProcess : public OwnProcess {
 public:
  ProcessFacts facts{L"carrovan-tests", 42};

  ProcessFacts Facts() const override { return facts; }
};

class FixedGuids : public GuidSource {
 public:
  std::optional<std::wstring> guid = L"{00112233-4455-6677-8899-AABBCCDDEEFF}";

  std::optional<std::wstring> NewGuid() override { return guid; }
};

// Starts nothing and notes what it was asked to start.
class RecordingInterpreter : public CommandInterpreter {
 public:
  InterpretedRegistryTool tool{*this};
  std::vector<std::wstring> started;
  int waits = 0;
  bool canStart = true;
  bool succeeds = true;

  std::unique_ptr<RunningTool> Start(const std::wstring& parameters) override {
    started.push_back(parameters);
    if (!canStart) return nullptr;
    return std::make_unique<Command>(*this);
  }

 private:
  class Command : public RunningTool {
   public:
    explicit Command(RecordingInterpreter& owner) : owner_(owner) {}
    bool WaitForEnd() override {
      ++owner_.waits;
      return owner_.succeeds;
    }

   private:
    RecordingInterpreter& owner_;
  };
};

// Ends at once without work when it is first started, and passes on everything later.
class HastyRegistryTool : public ForwardingRegistryTool {
 public:
  HastyRegistryTool(RegistryTool& tool, int hasty) : ForwardingRegistryTool(tool), hasty_(hasty) {}

  int started = 0;

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& key,
                                         const std::wstring& file) override {
    if (started++ < hasty_) return std::make_unique<EndedTool>(false);
    return ForwardingRegistryTool::ExportKey(key, file);
  }
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& file) override {
    if (started++ < hasty_) return std::make_unique<EndedTool>(false);
    return ForwardingRegistryTool::ImportFile(file);
  }

 private:
  int hasty_;
};

// Passes everything to another library, but adding fails with `result` from the given file on.
class FailingArchives : public ArchiveLibrary {
 public:
  FailingArchives(ArchiveLibrary& library, ArchiveResult result, std::size_t firstFailure)
      : library_(library), result_(result), remaining_(firstFailure) {}

  ArchiveResult closeResult = ArchiveResult::kDone;  // anything else: Close fails without closing
  bool closed = false;

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& archivePath,
                                        ArchivePurpose purpose) override {
    auto writer = library_.Create(archivePath, purpose);
    return writer ? std::make_unique<Writer>(*this, std::move(writer)) : nullptr;
  }
  std::unique_ptr<ArchiveReader> Open(const std::wstring& archivePath) override {
    return library_.Open(archivePath);
  }

 private:
  class Writer : public ArchiveWriter {
   public:
    Writer(FailingArchives& owner, std::unique_ptr<ArchiveWriter> writer)
        : owner_(owner), writer_(std::move(writer)) {}
    ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
      if (owner_.remaining_ == 0) return owner_.result_;
      --owner_.remaining_;
      return writer_->Add(entryName, sourcePath);
    }
    ArchiveResult Close() override {
      owner_.closed = true;
      if (owner_.closeResult != ArchiveResult::kDone) return owner_.closeResult;
      return writer_->Close();
    }

   private:
    FailingArchives& owner_;
    std::unique_ptr<ArchiveWriter> writer_;
  };

  ArchiveLibrary& library_;
  ArchiveResult result_;
  std::size_t remaining_;
};

}  // namespace carrovan
