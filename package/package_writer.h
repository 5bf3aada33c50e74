#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "environment/product_context.h"

namespace carrovan {

struct SkippedItem {
  std::wstring path;
  ArchiveResult reason;
};

// How the writing of an archive went. The wizard does not look at it.
struct PackageReport {
  ArchiveResult outcome = ArchiveResult::kTargetNotWritable;  // kDone: the archive is in place
  std::vector<std::size_t> storedPerSource;  // number of files stored, for each source in order
  std::vector<SkippedItem> skipped;          // files that are there but could not be stored
};

// Entry name of a source that is a file of its own; empty when no rule names it.
std::wstring EntryNameOfFile(const ProductContext& context, const std::wstring& path);

// Entry name of a file found below a source folder; empty when no rule names it.
std::wstring EntryNameInFolder(const ProductContext& context, const std::wstring& path);

// Asked when everything is stored and before the archive takes its place: whether it may.
using MayTakePlace = std::function<bool(const PackageReport& report)>;

// Writes an archive from files and folders in the order given. A source that is missing, or that
// vanishes meanwhile, is passed over; so is everything named ".config", which belongs to the
// machine and not to the user. An archive that is there is replaced only by a finished one: when
// the disk fills up, or when it may not, nothing is put in its place.
PackageReport WritePackage(const ProductContext& context, const Machine& machine,
                           std::span<const std::wstring> sources, const std::wstring& archivePath,
                           ArchivePurpose purpose, const MayTakePlace& mayTakePlace = {});

}  // namespace carrovan
