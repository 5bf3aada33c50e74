#pragma once

#include <memory>
#include <string>

#include "platform/registry.h"

namespace carrovan {

// What other programs and administrators put in the way, for the tests. Each obstacle stands until
// its object is destroyed, and is null when it cannot be put up.
class Obstacle {
 public:
  virtual ~Obstacle() = default;
};

// The file is open in a program that shares it with nobody.
std::unique_ptr<Obstacle> LockFileForOthers(const std::wstring& path);

// Nobody may create anything in the folder.
std::unique_ptr<Obstacle> DenyCreatingIn(const std::wstring& folder);

// Nobody may open the key for reading.
std::unique_ptr<Obstacle> DenyReadingKey(RegistryHive hive, const std::wstring& keyPath);

// Sets or clears the read-only attribute of a file; false when that fails.
bool SetReadOnly(const std::wstring& path, bool readOnly);

// A link to a folder; false when this user may make none.
bool MakeFolderLink(const std::wstring& path, const std::wstring& target);

// The name is taken: nobody else can claim it. It is free again when its process ends in any way.
std::unique_ptr<Obstacle> ClaimName(const std::wstring& name);

unsigned long OwnProcessId();

// Not Windows itself, which differs in little.
bool RunsUnderWine();

}  // namespace carrovan
