#pragma once

#include <map>
#include <random>

#include "environment/setting_category.h"
#include "package/package_paths.h"
#include "tests/support/memory_machine.h"

namespace carrovan {

// A machine that a seed decides, always the same for the same one: a product with some versions and
// languages, a profile and a registry in disorder, and packages to match. The user is "u".
class RandomMachine : public MemoryMachine {
 public:
  enum class Run { kImport, kLegacyImport, kReset };

  explicit RandomMachine(unsigned seed);

  // What to do with the machine.
  Run Kind() const { return kind_; }
  const std::wstring& PackagePath() const { return package_; }
  const std::wstring& TargetYear() const { return year_; }
  bool IsChosen(SettingCategory category) const;
  // What an import does with paths; in every other machine nothing.
  const PathRules& Paths() const { return paths_; }

 private:
  using Put = void (RandomMachine::*)(const std::wstring& path, const std::string& bytes);

  std::size_t Below(std::size_t bound);
  bool Chance(int percent) { return Below(100) < static_cast<std::size_t>(percent); }
  template <typename T, std::size_t N>
  const T& OneOf(const T (&choices)[N]) {
    return choices[Below(N)];
  }

  void Install();
  void FillProfile(const std::wstring& version, const std::wstring& year);
  void FillProductFolder(const std::wstring& base, bool roaming, Put put);
  void FillFolder(const std::wstring& folder, const std::wstring& subfolder, Put put);
  void FillDrafting(const std::wstring& base, const std::wstring& year, Put put);
  std::string ContentFor(const std::wstring& name, const std::wstring& subfolder);
  void FillRegistry();
  void FillKey(RegistryKey& key, int levels);
  RegistryValue AnyValue();

  void ChoosePaths(unsigned seed);
  void MakePackage();
  void MakeLegacyPackage();
  void Describe();
  void AddRegistryFiles();
  void AddOddities();
  std::string RegistryFileText();
  std::wstring RegistryLine();
  void WriteArchive();

  void PutInProfile(const std::wstring& path, const std::string& bytes);
  void PutInPackage(const std::wstring& path, const std::string& bytes);

  std::mt19937 random_;
  Run kind_ = Run::kImport;
  std::wstring package_;
  std::wstring year_;
  std::vector<bool> chosen_;
  PathRules paths_;
  std::vector<std::wstring> languages_;
  std::wstring packageVersion_;
  std::wstring packageYear_;
  std::map<std::wstring, std::string> entries_;
};

}  // namespace carrovan
