#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "platform/archive_library.h"
#include "support/tarvik_api.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"

namespace carrovan {

// The archives behind the handles of the zip functions. A handle is a number that is never given
// twice, so one that was closed, or was none, is recognised. The functions are those of
// tarvik_api.h; memory may run out in them (std::bad_alloc).
class ZipHandles {
 public:
  EyeZipHandle CreateZip(const wchar_t* path, const char* password);
  EyeZipHandle OpenZip(const wchar_t* path, const char* password);
  bool IsReader(EyeZipHandle zip) const;

  ArchiveResult StoreUncompressed(EyeZipHandle zip);
  ArchiveResult Add(EyeZipHandle zip, const wchar_t* entryName, const wchar_t* sourcePath);
  ArchiveResult Item(EyeZipHandle zip, std::uint32_t index, EyeZipEntry* entry);
  ArchiveResult Extract(EyeZipHandle zip, std::uint32_t index, const wchar_t* targetPath);
  ArchiveResult CloseWriter(EyeZipHandle zip);
  ArchiveResult CloseReaderOrGiveUp(EyeZipHandle zip);

 private:
  struct OpenArchive {
    std::unique_ptr<ZipWriter> writer;  // one of the two
    std::unique_ptr<ZipReader> reader;
    std::wstring lastItemName;
  };

  EyeZipHandle Keep(OpenArchive archive);
  OpenArchive* Find(EyeZipHandle zip);

  std::map<std::uintptr_t, OpenArchive> archives_;
  std::uintptr_t lastHandle_ = 0;
};

}  // namespace carrovan
