#pragma once

#include <memory>

#include "platform/machine.h"
#include "preview/overlay_tree.h"

namespace carrovan {

// The files of a machine that can be changed without the machine noticing. Reads fall through to
// it, and what is written lies in a spool folder in the temporary path, which goes away with this
// object and is never seen through it. A file in the spool never changes, so that copying and
// moving give another name to it and no more.
//
// What only an attempt shows is not foreseen: a folder that is closed to the user, a disk that is
// full. A folder that is reached through a link and by its own path counts as two.
class OverlayFiles : public FileSystem {
 public:
  // None when no spool folder can be made. The machine outlives it.
  static OrReason<OverlayFiles> Open(const Machine& machine);
  ~OverlayFiles() override;
  OverlayFiles(const OverlayFiles&) = delete;
  OverlayFiles& operator=(const OverlayFiles&) = delete;

  // The file of the machine or the spool that has the content seen at a path, for those that read
  // files by themselves. Names no file where there is none.
  std::wstring Locate(const std::wstring& path) const;

  // The path of a new file in the spool; the caller writes it, once.
  std::wstring NewSpoolFile();

  // What writing to a path would answer.
  [[nodiscard]] SystemCode CodeOfWriting(const std::wstring& path) const;

  // Shows a file of the spool at a path, in place of the file that may be there. Fails as writing
  // it would.
  [[nodiscard]] SystemCode Adopt(const std::wstring& spoolFile, const std::wstring& path);

  const OverlayTree& Tree() const { return tree_; }

  bool Exists(const std::wstring& path) const override;
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring& path) const override;
  bool IsReadOnly(const std::wstring& path) const override;
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;
  std::uint64_t FileBytes(const std::wstring& path) const override;
  std::optional<std::uint64_t> FreeBytes(const std::wstring& folder) const override;
  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;
  // Nothing of the overlay is to outlive the program.
  SystemCode Flush(std::span<const std::wstring>) override { return kSystemOk; }

 private:
  class Replacement;
  class Appender;

  OverlayFiles(FileSystem& machine, std::wstring spool);

  Seen Look(const std::wstring& path) const;
  bool IsReadOnly(const Seen& seen) const;
  SystemCode MissingCode(const OverlayPath& path) const;
  SystemCode CodeOfReading(const std::wstring& path, Seen& seen) const;
  std::vector<FolderEntry> Merged(const OverlayNode& folder,
                                  const std::vector<FolderEntry>& machine) const;

  FileSystem& machine_;
  std::wstring spool_;  // without a trailing separator
  OverlayTree tree_;
  std::size_t spooled_ = 0;
};

}  // namespace carrovan
