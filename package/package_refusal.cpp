#include "package/package_refusal.h"

#include <string_view>

namespace carrovan {
namespace {

// How zip archives and their end begin. The end lies in front of a comment of limited length.
constexpr std::string_view kItemMark = "PK\3\4";
constexpr std::string_view kEndMark = "PK\5\6";
constexpr std::size_t kMostTailBytes = 22 + 0xFFFF;

struct Glimpse {
  std::string front;  // as many bytes as a mark has
  std::string tail;
  std::uint64_t bytes = 0;
};

SystemCode Look(const FileReader& files, const std::wstring& path, Glimpse& glimpse) {
  return files.ReadInParts(path, [&glimpse](std::string_view part, std::uint64_t) {
    const std::size_t missing = kItemMark.size() - glimpse.front.size();
    glimpse.front += part.substr(0, missing);
    glimpse.tail += part;
    if (glimpse.tail.size() > kMostTailBytes) {
      glimpse.tail.erase(0, glimpse.tail.size() - kMostTailBytes);
    }
    glimpse.bytes += part.size();
    return true;
  });
}

std::wstring ReasonOf(const Glimpse& glimpse) {
  if (glimpse.bytes == 0) return L"it is empty";
  if (glimpse.tail.find(kEndMark) != std::string::npos) {
    return L"the directory of the zip archive is damaged";
  }
  if (glimpse.front == kItemMark) return L"the end of the zip archive is missing";
  return L"it holds no zip archive";
}

}  // namespace

std::wstring DescribeNoPackage(const FileReader& files, const std::wstring& path) {
  if (files.IsFolder(path)) return path + L" is not a package: it is a folder";
  if (!files.Exists(path)) return path + L" is missing";
  Glimpse glimpse;
  const SystemCode code = Look(files, path, glimpse);
  if (code != kSystemOk) return path + L" cannot be read: " + DescribeSystemCode(code);
  return path + L" is not a package: " + ReasonOf(glimpse);
}

}  // namespace carrovan
