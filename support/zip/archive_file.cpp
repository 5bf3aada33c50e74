#include "support/zip/archive_file.h"

#include <zip.h>

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>

#include "support/zip/part_file.h"
#include "support/zip/write_result.h"
#include "support/zip/zip_source.h"

namespace carrovan {
namespace {

using Zip = std::unique_ptr<zip_t, decltype(&zip_discard)>;

Zip NewZip(ArchiveOutput& output) {
  zip_source_t* source = zip_source_function_create(&ArchiveOutput::Call, &output, nullptr);
  zip_t* zip = source ? zip_open_from_source(source, ZIP_CREATE | ZIP_TRUNCATE, nullptr) : nullptr;
  if (source && !zip) zip_source_free(source);
  return Zip(zip, zip_discard);
}

// The extended timestamp: unlike the archive's own field it is in UTC and knows odd seconds.
bool SetTimestamp(zip_t* zip, zip_uint64_t index, std::int64_t modifiedSeconds) {
  constexpr zip_uint16_t kExtendedTimestamp = 0x5455;
  constexpr zip_uint8_t kHoldsModificationTime = 1;
  if (modifiedSeconds < std::numeric_limits<std::int32_t>::min() ||
      modifiedSeconds > std::numeric_limits<std::int32_t>::max()) {
    return true;
  }
  const auto seconds = static_cast<std::uint32_t>(modifiedSeconds);
  const auto byte = [&](int i) { return static_cast<zip_uint8_t>(seconds >> (8 * i)); };
  const std::array<zip_uint8_t, 5> field = {kHoldsModificationTime, byte(0), byte(1), byte(2),
                                            byte(3)};
  return zip_file_extra_field_set(zip, index, kExtendedTimestamp, ZIP_EXTRA_FIELD_NEW, field.data(),
                                  field.size(), ZIP_FL_LOCAL | ZIP_FL_CENTRAL) == 0;
}

// `Input` is one of the two sources of an entry's content.
template <typename Input>
bool AddEntry(zip_t* zip, Input& input, const StoredEntry& entry) {
  constexpr zip_uint32_t kArchiveAttribute = 0x20;
  zip_source_t* source = zip_source_function(zip, &Input::Call, &input);
  if (!source) return false;
  const zip_int64_t added = zip_file_add(zip, entry.nameUtf8.c_str(), source, ZIP_FL_ENC_UTF_8);
  if (added < 0) {
    zip_source_free(source);
    return false;
  }
  const auto index = static_cast<zip_uint64_t>(added);
  // Programs take a backslash for a separator only in the name of an entry that DOS made.
  return zip_file_set_external_attributes(zip, index, 0, ZIP_OPSYS_DOS, kArchiveAttribute) == 0 &&
         (entry.isDeflated || zip_set_file_compression(zip, index, ZIP_CM_STORE, 0) == 0) &&
         SetTimestamp(zip, index, entry.modifiedSeconds);
}

ArchiveResult ResultOfFailure(int zipError, FileStatus outputStatus) {
  if (zipError == ZIP_ER_MEMORY) return ArchiveResult::kOutOfMemory;
  if (outputStatus != FileStatus::kDone) return ResultOfWriting(outputStatus);
  const bool isSources = zipError == ZIP_ER_OPEN || zipError == ZIP_ER_READ;
  return isSources ? ArchiveResult::kSourceUnreadable : ArchiveResult::kTargetNotWritable;
}

ArchiveResult WriteEntries(OsFile& file, const OsFile& spool,
                           const std::vector<StoredEntry>& entries) {
  ArchiveOutput output(file);
  std::deque<EntryInput> packed;
  std::deque<FileInput> unpacked;
  ReadBuffer buffer;
  // Declared last: when it is given up, it still calls its sources.
  Zip zip = NewZip(output);
  if (!zip) return ArchiveResult::kOutOfMemory;
  for (const StoredEntry& entry : entries) {
    const bool added = entry.source.empty()
                           ? AddEntry(zip.get(), packed.emplace_back(spool, entry), entry)
                           : AddEntry(zip.get(), unpacked.emplace_back(entry, buffer), entry);
    if (!added) return ArchiveResult::kOutOfMemory;
  }
  if (zip_close(zip.get()) == 0) {
    static_cast<void>(zip.release());  // closing has freed it
    return ArchiveResult::kDone;
  }
  return ResultOfFailure(zip_error_code_zip(zip_get_error(zip.get())), output.Status());
}

// libzip would remove an archive without entries. It consists of nothing but its end record.
ArchiveResult WriteEmptyArchive(OsFile& file) {
  constexpr std::array<std::uint8_t, 22> kEndRecord = {'P', 'K', 5, 6};
  return ResultOfWriting(file.WriteAt(0, kEndRecord));
}

}  // namespace

ArchiveResult WriteArchiveFile(const std::filesystem::path& archive, const OsFile& spool,
                               const std::vector<StoredEntry>& entries, Durability durability) {
  PartFile part;
  FileStatus status = part.CreateForArchive(archive);
  if (status != FileStatus::kDone) return ResultOfWriting(status);
  const ArchiveResult result =
      entries.empty() ? WriteEmptyArchive(part.File()) : WriteEntries(part.File(), spool, entries);
  if (result != ArchiveResult::kDone) return result;
  if (durability == Durability::kFlushed) status = part.File().FlushToDisk();
  return ResultOfWriting(status == FileStatus::kDone ? part.Complete() : status);
}

}  // namespace carrovan
