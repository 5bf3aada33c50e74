#include "cli/progress.h"

namespace carrovan {
namespace {

// Often enough to be seen moving, seldom enough to cost nothing.
constexpr std::size_t kFilesPerUpdate = 16;

constexpr wchar_t kClearLine[] = L"\r                                \r";

class ProgressWriter : public ArchiveWriter {
 public:
  ProgressWriter(std::unique_ptr<ArchiveWriter> writer, Console& console)
      : writer_(std::move(writer)), console_(console) {}
  ~ProgressWriter() override { console_.Err(kClearLine); }
  ProgressWriter(const ProgressWriter&) = delete;
  ProgressWriter& operator=(const ProgressWriter&) = delete;

  void Expect(const std::wstring& sourcePath) override { writer_->Expect(sourcePath); }

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    if (count_++ % kFilesPerUpdate == 0) {
      console_.Err(L"\r" + std::to_wstring(count_) + L" files ");
    }
    return writer_->Add(entryName, sourcePath);
  }

  ArchiveResult Close() override { return writer_->Close(); }

 private:
  std::unique_ptr<ArchiveWriter> writer_;
  Console& console_;
  std::size_t count_ = 0;
};

}  // namespace

ProgressArchives::ProgressArchives(ArchiveLibrary& library, Console& console)
    : library_(library), console_(console) {}

std::unique_ptr<ArchiveWriter> ProgressArchives::Create(const std::wstring& archivePath,
                                                        ArchivePurpose purpose) {
  auto writer = library_.Create(archivePath, purpose);
  if (!writer || !console_.ErrIsTerminal()) return writer;
  return std::make_unique<ProgressWriter>(std::move(writer), console_);
}

std::unique_ptr<ArchiveReader> ProgressArchives::Open(const std::wstring& archivePath) {
  return library_.Open(archivePath);
}

}  // namespace carrovan
