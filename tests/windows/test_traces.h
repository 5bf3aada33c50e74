#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/windows/obstacles.h"

namespace carrovan {

// Deletes a file, or a folder with its content, read-only files included. A link is removed, not
// followed.
void DeleteTree(const std::wstring& path);

// The product name of one test machine, "VANTRIC-T<process>-<number>", and everything on the real
// machine that bears it: in the temporary folder, in the brands' folders and in the brands' keys.
class TestTraces {
 public:
  // Takes a name that no other test machine has, and removes what test programs that died have
  // left.
  TestTraces();
  TestTraces(const TestTraces&) = delete;
  TestTraces& operator=(const TestTraces&) = delete;
  // Removes what bears the name, and a brand's own folder or key when it was not there before and
  // is empty.
  ~TestTraces();

  const std::wstring& Name() const { return name_; }

  // A new folder that bears the name, with a trailing backslash.
  const std::wstring& ScratchFolder() const { return scratch_; }

  // True for the brands' folders and keys, which test machines share.
  bool IsShared(const std::wstring& folder) const;
  bool IsShared(RegistryHive hive, const std::wstring& keyPath) const;

 private:
  struct Folder {
    std::wstring path;
    bool wasThere = false;
  };
  struct Key {
    RegistryHive hive = RegistryHive::kCurrentUser;
    std::wstring path;
    bool wasThere = false;
  };

  void TakeName();
  void RemoveNames(const std::function<bool(const std::wstring& name)>& isTrace) const;
  void RemoveEmptyPlaces() const;

  std::wstring temp_;
  std::vector<Folder> folders_;
  std::vector<Key> keys_;            // inner before outer
  std::unique_ptr<Obstacle> claim_;  // keeps the name from being taken for a dead machine's
  std::wstring name_;
  std::wstring scratch_;
};

}  // namespace carrovan
