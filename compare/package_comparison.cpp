#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "compare/document_comparison.h"
#include "compare/package_difference.h"
#include "compare/registry_comparison.h"
#include "compare/version_meaning.h"
#include "package/package_description.h"
#include "package/package_trust.h"
#include "package/package_writer.h"
#include "text/scattered_hash.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kOtherLabel[] = L"Other";

PackageSide SideOf(const PackageInspection& inspection) {
  return {inspection.company, inspection.product, inspection.releaseVersion,
          inspection.internalVersion};
}

bool SameVersion(const PackageSide& a, const PackageSide& b) {
  return a.releaseVersion == b.releaseVersion && a.internalVersion == b.internalVersion;
}

// Stands for a content that is not held. Nobody can make two contents of one hash, since hashes
// differ at every start.
class ContentHash {
 public:
  void Take(std::string_view part) {
    while (!part.empty()) {
      const std::size_t room = kBlockBytes - block_.size();
      block_.append(part.substr(0, room));
      part.remove_prefix(std::min(room, part.size()));
      if (block_.size() == kBlockBytes) Close();
    }
  }

  std::uint64_t Finish() {
    Close();
    return hash_;
  }

 private:
  static constexpr std::size_t kBlockBytes = 1 << 16;

  void Close() {
    hash_ = ScatteredHash(hash_ ^ ScatteredHash(block_));
    block_.clear();
  }

  std::string block_;
  std::uint64_t hash_ = 0;
};

// A package's item, and where its content is.
class Item {
 public:
  Item(ArchiveExaminer& archive, std::size_t index, const ArchiveItem& item)
      : archive_(archive), index_(index), item_(item) {}

  const std::wstring& Name() const { return item_.name; }
  std::uint64_t Bytes() const { return item_.sizeBytes; }

  // Nothing for an item that cannot be read; the problem says why.
  std::optional<std::uint64_t> Hash(std::wstring& problem) const {
    ContentHash hash;
    const ArchiveResult result =
        archive_.ReadInParts(index_, [&](std::string_view part) { hash.Take(part); });
    if (result == ArchiveResult::kDone) return hash.Finish();
    problem = DescribeArchiveResult(result);
    return std::nullopt;
  }

  std::optional<std::string> Content() const {
    const auto content = archive_.Read(index_, kMostUnderstoodBytes);
    if (!content) return std::nullopt;
    return std::string(content->begin(), content->end());
  }

 private:
  ArchiveExaminer& archive_;
  std::size_t index_;
  const ArchiveItem& item_;
};

class Side {
 public:
  Side(const ComparedPackage& package, bool versionsCount)
      : inspection_(package.inspection),
        meaning_(SideOf(package.inspection), versionsCount),
        files_(package.archive),
        dom_(OpenXmlDom(files_)) {
    for (std::size_t index = 0; index < inspection_.entries.size(); ++index) {
      AddItem({package.archive, index, inspection_.entries[index]});
    }
  }

  const std::map<std::wstring, Item, NameLess>& Items() const { return items_; }
  const VersionMeaning& Meaning() const { return meaning_; }
  XmlDom& Dom() { return *dom_; }
  bool Marks(const std::wstring& label) const {
    return std::ranges::find(inspection_.categories, label) != inspection_.categories.end();
  }

 private:
  void AddItem(Item item) {
    const std::wstring& name = item.Name();
    if (CompareNames(name, kPackageDescriptionName) == 0) return;
    // Of two that come to mean the same, the second one stands for itself.
    if (!items_.emplace(meaning_.OfEntry(name), item).second) items_.emplace(name, item);
  }

  const PackageInspection& inspection_;
  VersionMeaning meaning_;
  ArchiveFiles files_;
  std::unique_ptr<XmlDom> dom_;
  std::map<std::wstring, Item, NameLess> items_;  // by meaning
};

// A document and the session that it belongs to.
class LoadedDocument {
 public:
  LoadedDocument(XmlDom& dom, const std::wstring& name)
      : session_(dom.Begin()), document_(session_->NewDocument()) {
    isLoaded_ = document_ != nullptr && document_->Load(name);
  }

  bool IsLoaded() const { return isLoaded_; }
  XmlNode Root() { return document_->Root(); }
  std::wstring Problem() const {
    return document_ ? document_->LoadProblem() : L"the XML parser cannot be started";
  }

 private:
  std::unique_ptr<XmlSession> session_;
  std::unique_ptr<XmlDocument> document_;
  bool isLoaded_ = false;
};

class PackageComparison {
 public:
  PackageComparison(const ComparedPackage& first, const ComparedPackage& second)
      : result_{SideOf(first.inspection), SideOf(second.inspection), {}},
        first_(first, SameVersion(result_.first, result_.second)),
        second_(second, SameVersion(result_.first, result_.second)) {}

  PackageDifference Run() {
    for (const CategoryRecord& record : CategoryTable())
      CompareMark(std::wstring(Text(record.label)));
    for (const auto& [meaning, item] : first_.Items()) {
      const auto other = second_.Items().find(meaning);
      if (other == second_.Items().end()) {
        AddOnly(Difference::kOnlyInFirst, first_, item);
      } else {
        CompareItems(item, other->second);
      }
    }
    for (const auto& [meaning, item] : second_.Items()) {
      if (!first_.Items().contains(meaning)) AddOnly(Difference::kOnlyInSecond, second_, item);
    }
    TakeCategories();
    return std::move(result_);
  }

 private:
  void CompareMark(const std::wstring& label) {
    const bool marked = first_.Marks(label);
    if (marked == second_.Marks(label)) return;
    categories_[label].marked = marked ? Difference::kOnlyInFirst : Difference::kOnlyInSecond;
  }

  void AddOnly(Difference kind, const Side& side, const Item& item) {
    ItemDifference difference;
    difference.kind = kind;
    const bool isFirst = kind == Difference::kOnlyInFirst;
    (isFirst ? difference.firstName : difference.secondName) = item.Name();
    (isFirst ? difference.firstBytes : difference.secondBytes) = item.Bytes();
    Add(side, item, std::move(difference));
  }

  void Add(const Side& side, const Item& item, ItemDifference difference) {
    const CategoryRecord* const record = side.Meaning().CategoryOf(item.Name());
    const std::wstring label(record == nullptr ? std::wstring_view(kOtherLabel)
                                               : Text(record->label));
    categories_[label].items.push_back(std::move(difference));
  }

  void CompareItems(const Item& first, const Item& second) {
    ItemDifference difference;
    difference.firstName = first.Name();
    difference.secondName = second.Name();
    difference.firstBytes = first.Bytes();
    difference.secondBytes = second.Bytes();
    if (!AreSame(first, second, difference)) Add(first_, first, std::move(difference));
  }

  // Fills the difference when they are not.
  bool AreSame(const Item& first, const Item& second, ItemDifference& difference) {
    const auto hash = first.Hash(difference.note);
    if (!hash) difference.note = L"the first cannot be read: " + difference.note;
    std::wstring problem;
    const auto other = second.Hash(problem);
    if (!other && difference.note.empty())
      difference.note = L"the second cannot be read: " + problem;
    if (!hash || !other) return false;
    if (hash == other && first.Bytes() == second.Bytes()) return true;
    return AreUnderstood(first, second, difference) && difference.Details() == 0;
  }

  // False for what is compared byte by byte.
  bool AreUnderstood(const Item& first, const Item& second, ItemDifference& difference) {
    const bool isRegistryFile = IsRegistryFileName(first.Name());
    if (!isRegistryFile && !EndsWithIgnoringAsciiCase(first.Name(), L".xml")) return false;
    if (std::max(first.Bytes(), second.Bytes()) > kMostUnderstoodBytes) {
      difference.note = L"too long to be compared but byte by byte";
      return false;
    }
    return isRegistryFile ? CompareAsRegistryFiles(first, second, difference)
                          : CompareAsDocuments(first, second, difference);
  }

  bool CompareAsRegistryFiles(const Item& first, const Item& second, ItemDifference& difference) {
    const auto bytes = first.Content();
    const auto others = second.Content();
    return bytes && others &&
           CompareRegistryFiles({*bytes, first_.Meaning()}, {*others, second_.Meaning()},
                                difference);
  }

  bool CompareAsDocuments(const Item& first, const Item& second, ItemDifference& difference) {
    LoadedDocument document(first_.Dom(), first.Name());
    LoadedDocument other(second_.Dom(), second.Name());
    if (!document.IsLoaded()) difference.note = L"the first is no document: " + document.Problem();
    if (!other.IsLoaded() && difference.note.empty()) {
      difference.note = L"the second is no document: " + other.Problem();
    }
    if (!difference.note.empty()) return false;
    CompareDocuments({document.Root(), first_.Meaning()}, {other.Root(), second_.Meaning()},
                     difference);
    return true;
  }

  void TakeCategories() {
    const auto take = [this](const std::wstring& label) {
      const auto at = categories_.find(label);
      if (at == categories_.end()) return;
      at->second.label = label;
      result_.categories.push_back(std::move(at->second));
    };
    for (const CategoryRecord& record : CategoryTable()) take(std::wstring(Text(record.label)));
    take(kOtherLabel);
  }

  PackageDifference result_;
  Side first_;
  Side second_;
  std::map<std::wstring, CategoryDifference> categories_;  // by label
};

}  // namespace

PackageDifference ComparePackages(const ComparedPackage& first, const ComparedPackage& second) {
  return PackageComparison(first, second).Run();
}

}  // namespace carrovan
