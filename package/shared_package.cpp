#include "package/shared_package.h"

#include <string_view>
#include <utility>

#include "package/package_description.h"
#include "package/package_trust.h"
#include "package/package_writer.h"
#include "package/staging_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool IsDocumentName(const std::wstring& entry) { return EndsWithIgnoringAsciiCase(entry, L".xml"); }

std::u16string UnitsOf(std::string_view bytes, bool isUtf16) {
  std::u16string units;
  const std::size_t step = isUtf16 ? 2 : 1;
  units.reserve(bytes.size() / step);
  for (std::size_t at = 0; at + step <= bytes.size(); at += step) {
    const auto low = static_cast<unsigned char>(bytes[at]);
    const auto high = isUtf16 ? static_cast<unsigned char>(bytes[at + 1]) : 0;
    units.push_back(static_cast<char16_t>(low | high << 8));
  }
  return units;
}

std::string BytesOf(std::u16string_view units, bool isUtf16) {
  std::string bytes;
  bytes.reserve(units.size() * (isUtf16 ? 2 : 1));
  for (const char16_t unit : units) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    if (isUtf16) bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

PrivateItem WholeItem(const std::wstring& entry, std::wstring reason) {
  return {entry, L"", L"", false, false, std::move(reason)};
}

PrivateItem ChangedDocument(const std::wstring& entry, std::size_t places) {
  PrivateItem item = WholeItem(entry, std::wstring(ContentRule(PrivacyRuleKind::kDocument).reason) +
                                          L": " + std::to_wstring(places));
  item.isChanged = true;
  return item;
}

class PrivacySearch {
 public:
  explicit PrivacySearch(ArchiveExaminer& archive) : archive_(archive) {}

  std::vector<PrivateItem> Run() {
    ForEachItem([this](std::size_t index, const ArchiveItem& item) {
      if (IsRegistryFileName(item.name)) Collect(index);
    });
    ForEachItem([this](std::size_t index, const ArchiveItem& item) { LookInto(index, item); });
    return std::move(found_);
  }

 private:
  template <typename Take>
  void ForEachItem(Take take) {
    for (std::size_t index = 0; const auto item = archive_.Item(index); ++index) take(index, *item);
  }

  // What cannot be read is found when it is looked into.
  void Collect(std::size_t index) {
    ProfileNameCollector collector(names_.users);
    static_cast<void>(
        archive_.ReadInParts(index, [&collector](std::string_view part) { collector.Take(part); }));
    collector.Finish();
  }

  void LookInto(std::size_t index, const ArchiveItem& item) {
    if (const PrivacyRule* rule = judge_.RuleForFile(item.name)) {
      found_.push_back(WholeItem(item.name, std::wstring(rule->reason)));
    } else if (IsRegistryFileName(item.name)) {
      LookIntoRegistryFile(index, item);
    } else if (IsDocumentName(item.name)) {
      LookIntoDocument(index, item);
    }
  }

  void LookIntoRegistryFile(std::size_t index, const ArchiveItem& item) {
    RegistryPrivacyFilter filter(judge_, item.name, found_, {});
    const ArchiveResult result =
        archive_.ReadInParts(index, [&filter](std::string_view part) { filter.Take(part); });
    filter.Finish();
    if (result == ArchiveResult::kDone) return;
    found_.push_back(
        WholeItem(item.name, L"cannot be looked into: " + DescribeArchiveResult(result)));
  }

  void LookIntoDocument(std::size_t index, const ArchiveItem& item) {
    const auto content = archive_.Read(index, ArchiveFiles::kLongestFileBytes);
    if (!content) {
      found_.push_back(WholeItem(item.name, L"cannot be looked into"));
      return;
    }
    std::string bytes(content->begin(), content->end());
    if (const std::size_t places = MakeDocumentNeutral(bytes); places > 0) {
      found_.push_back(ChangedDocument(item.name, places));
    }
  }

  ArchiveExaminer& archive_;
  PrivateNames names_;
  PrivacyJudge judge_{names_};
  std::vector<PrivateItem> found_;
};

class SharingWriter : public ArchiveWriter {
 public:
  SharingWriter(std::unique_ptr<ArchiveWriter> archive, const Machine& machine,
                std::wstring changedPath, PrivateNames& names, std::vector<PrivateItem>& leftOut)
      : archive_(std::move(archive)),
        files_(*machine.files),
        profiles_(*machine.profiles),
        changedPath_(std::move(changedPath)),
        names_(names),
        leftOut_(leftOut) {}

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    if (entryName == kPackageDescriptionName) {
      const bool isMarked = profiles_.WriteValue(kSharingSection, kSharedKey, L"1", sourcePath);
      return isMarked ? archive_->Add(entryName, sourcePath) : ArchiveResult::kSourceUnreadable;
    }
    if (const PrivacyRule* rule = judge_.RuleForFile(entryName)) {
      leftOut_.push_back(WholeItem(entryName, std::wstring(rule->reason)));
      return ArchiveResult::kDone;
    }
    if (IsRegistryFileName(entryName)) return AddRegistryFile(entryName, sourcePath);
    if (IsDocumentName(entryName)) return AddDocument(entryName, sourcePath);
    return archive_->Add(entryName, sourcePath);
  }

  ArchiveResult Close() override { return archive_->Close(); }

 private:
  ArchiveResult AddRegistryFile(const std::wstring& entryName, const std::wstring& sourcePath) {
    ProfileNameCollector collector(names_.users);
    if (!Read(sourcePath, [&](std::string_view part) { collector.Take(part); })) {
      return ArchiveResult::kSourceUnreadable;
    }
    collector.Finish();

    if (!ClearPath(files_, changedPath_)) return ArchiveResult::kTargetNotWritable;
    SystemCode written = files_.WriteBytes(changedPath_, {});
    RegistryPrivacyFilter filter(judge_, entryName, leftOut_, [&](std::string_view bytes) {
      pending_.append(bytes);
      if (pending_.size() >= kMostPendingBytes) WritePending(written);
    });
    const bool isRead = Read(sourcePath, [&](std::string_view part) { filter.Take(part); });
    filter.Finish();
    WritePending(written);
    return isRead ? AddChanged(entryName, written) : ArchiveResult::kSourceUnreadable;
  }

  ArchiveResult AddDocument(const std::wstring& entryName, const std::wstring& sourcePath) {
    std::string bytes;
    if (files_.ReadBytes(sourcePath, bytes) != kSystemOk) {
      return ArchiveResult::kSourceUnreadable;
    }
    const std::size_t places = MakeDocumentNeutral(bytes);
    if (places == 0) return archive_->Add(entryName, sourcePath);
    leftOut_.push_back(ChangedDocument(entryName, places));
    if (!ClearPath(files_, changedPath_)) return ArchiveResult::kTargetNotWritable;
    return AddChanged(entryName, files_.WriteBytes(changedPath_, bytes));
  }

  template <typename Take>
  bool Read(const std::wstring& path, Take take) const {
    return files_.ReadInParts(path, [&take](std::string_view part, std::uint64_t) {
      take(part);
      return true;
    }) == kSystemOk;
  }

  void WritePending(SystemCode& written) {
    if (written == kSystemOk) written = files_.AppendBytes(changedPath_, pending_);
    pending_.clear();
  }

  // What could not be written stays out, as what cannot be read does.
  ArchiveResult AddChanged(const std::wstring& entryName, SystemCode written) {
    const ArchiveResult result = written == kSystemOk ? archive_->Add(entryName, changedPath_)
                                                      : ArchiveResult::kSourceUnreadable;
    static_cast<void>(ClearPath(files_, changedPath_));
    return result;
  }

  static constexpr std::size_t kMostPendingBytes = std::size_t{1} << 20;

  std::unique_ptr<ArchiveWriter> archive_;
  FileSystem& files_;
  ProfileFile& profiles_;
  const std::wstring changedPath_;
  PrivateNames& names_;
  PrivacyJudge judge_{names_};
  std::vector<PrivateItem>& leftOut_;
  std::string pending_;
};

}  // namespace

std::vector<PrivateItem> FindPrivateItems(ArchiveExaminer& archive) {
  return PrivacySearch(archive).Run();
}

std::size_t MakeDocumentNeutral(std::string& bytes) {
  const bool isUtf16 = bytes.starts_with("\xFF\xFE");
  const std::size_t odd = isUtf16 ? bytes.size() % 2 : 0;
  std::u16string units = UnitsOf(bytes, isUtf16);
  const std::size_t places = ReplaceProfileNames(units);
  if (places > 0) bytes = BytesOf(units, isUtf16) + bytes.substr(bytes.size() - odd);
  return places;
}

std::unique_ptr<ArchiveWriter> SharingArchives::Create(const std::wstring& archivePath,
                                                       ArchivePurpose purpose) {
  auto archive = machine_.archives->Create(archivePath, purpose);
  if (!archive) return nullptr;
  return std::make_unique<SharingWriter>(std::move(archive), machine_,
                                         stagingFolder_ + L"~shared.part", names_, leftOut_);
}

}  // namespace carrovan
