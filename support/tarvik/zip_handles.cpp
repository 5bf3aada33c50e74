#include "support/tarvik/zip_handles.h"

#include <bit>
#include <utility>

#include "support/files/os_file.h"

namespace carrovan {
namespace {

std::uintptr_t NumberOf(EyeZipHandle zip) { return std::bit_cast<std::uintptr_t>(zip); }

}  // namespace

EyeZipHandle ZipHandles::CreateZip(const wchar_t* path, const char* password) {
  if (path == nullptr || password != nullptr) return nullptr;
  return Keep({ZipWriter::Create(PathFromText(path)), nullptr, L""});
}

EyeZipHandle ZipHandles::OpenZip(const wchar_t* path, const char* password) {
  if (path == nullptr || password != nullptr) return nullptr;
  return Keep({nullptr, ZipReader::Open(PathFromText(path)), L""});
}

bool ZipHandles::IsReader(EyeZipHandle zip) const {
  const auto found = archives_.find(NumberOf(zip));
  return found != archives_.end() && found->second.reader != nullptr;
}

ArchiveResult ZipHandles::StoreUncompressed(EyeZipHandle zip) {
  OpenArchive* archive = Find(zip);
  if (!archive || !archive->writer) return ArchiveResult::kNoSuchItem;
  archive->writer->StoreUncompressed();
  return ArchiveResult::kDone;
}

ArchiveResult ZipHandles::Add(EyeZipHandle zip, const wchar_t* entryName,
                              const wchar_t* sourcePath) {
  OpenArchive* archive = Find(zip);
  if (!archive || !archive->writer || !entryName || !sourcePath) return ArchiveResult::kNoSuchItem;
  return archive->writer->Add(entryName, PathFromText(sourcePath));
}

ArchiveResult ZipHandles::Item(EyeZipHandle zip, std::uint32_t index, EyeZipEntry* entry) {
  OpenArchive* archive = Find(zip);
  if (!archive || !archive->reader || !entry) return ArchiveResult::kNoSuchItem;
  auto item = archive->reader->Item(index);
  if (!item) return ArchiveResult::kNoSuchItem;
  archive->lastItemName = std::move(item->name);
  *entry = {archive->lastItemName.c_str(), item->sizeBytes, item->packedSizeBytes};
  return ArchiveResult::kDone;
}

ArchiveResult ZipHandles::Extract(EyeZipHandle zip, std::uint32_t index,
                                  const wchar_t* targetPath) {
  OpenArchive* archive = Find(zip);
  if (!archive || !archive->reader || !targetPath) return ArchiveResult::kNoSuchItem;
  return archive->reader->Extract(index, PathFromText(targetPath));
}

ArchiveResult ZipHandles::CloseWriter(EyeZipHandle zip) {
  OpenArchive* archive = Find(zip);
  if (!archive || !archive->writer) return ArchiveResult::kNoSuchItem;
  const ArchiveResult result = archive->writer->Close();
  archives_.erase(NumberOf(zip));
  return result;
}

ArchiveResult ZipHandles::CloseReaderOrGiveUp(EyeZipHandle zip) {
  return archives_.erase(NumberOf(zip)) != 0 ? ArchiveResult::kDone : ArchiveResult::kNoSuchItem;
}

EyeZipHandle ZipHandles::Keep(OpenArchive archive) {
  if (!archive.writer && !archive.reader) return nullptr;
  archives_.emplace(++lastHandle_, std::move(archive));
  return std::bit_cast<EyeZipHandle>(lastHandle_);
}

ZipHandles::OpenArchive* ZipHandles::Find(EyeZipHandle zip) {
  const auto found = archives_.find(NumberOf(zip));
  return found == archives_.end() ? nullptr : &found->second;
}

}  // namespace carrovan
