#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/archive_library.h"

namespace carrovan {

// Writes a zip archive that other programs can read: plain deflate, names in UTF-8 with
// backslashes, modification times kept, ZIP64 where it is needed. Memory does not grow with the
// size of the files. Until Close succeeds the archive at the path stays as it was, even when the
// process is killed.
class ZipWriter {
 public:
  // Null when nothing can be created in the archive's folder, when the path is a folder, or when
  // the archive that is there is read-only.
  static std::unique_ptr<ZipWriter> Create(const std::filesystem::path& archive);

  // A writer that was not closed leaves nothing behind.
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  // What is added from now on is stored as it is and read when the archive is closed, not before:
  // no byte is moved twice, and the archive is not flushed to disk. One that cannot be read then
  // fails the whole archive.
  void StoreUncompressed();

  // How many threads pack files that are expected; 1 at first. The archive is the same with any
  // number. Called before anything is added.
  void UseThreads(unsigned threads);

  // The file will be added after those that were expected before it, so it may be read already.
  // One that is never added does no harm.
  void Expect(const std::filesystem::path& source);

  // Reads a regular file whole and stores it; what cannot be read whole is not stored, and the
  // writer goes on. The name is refused when it is empty, unfit for a file (RefusalOfStoredName)
  // or, without regard to case, stored already.
  [[nodiscard]] ArchiveResult Add(const std::wstring& entryName,
                                  const std::filesystem::path& source);

  // Writes the archive to a sibling (the archive's name + ".part"), flushes it and renames it over
  // the archive. On failure the sibling is gone and the archive is as it was. Called once, last.
  [[nodiscard]] ArchiveResult Close();

 private:
  class Contents;

  explicit ZipWriter(std::unique_ptr<Contents> contents);

  std::unique_ptr<Contents> contents_;
};

}  // namespace carrovan
