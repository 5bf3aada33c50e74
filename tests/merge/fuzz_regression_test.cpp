#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/fuzz_targets.h"

namespace carrovan {
namespace {

// A finding ends the program, which names the input by the trace.
void Replay(const std::string& target, void (*run)(const std::string&)) {
  int replayed = 0;
  for (const char* kind : {"seeds", "regression"}) {
    const std::filesystem::path folder =
        std::filesystem::path(CARROVAN_FUZZ_FOLDER) / kind / target;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      SCOPED_TRACE(entry.path());
      std::ifstream file(entry.path(), std::ios::binary);
      run({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
      ++replayed;
    }
  }
  EXPECT_GT(replayed, 0);
}

TEST(FuzzRegression, XmlMerge) { Replay("xml_merge", FuzzXmlMerge); }
TEST(FuzzRegression, ShortcutMerge) { Replay("shortcut_merge", FuzzShortcutMerge); }
TEST(FuzzRegression, RibbonDecode) { Replay("ribbon_decode", FuzzRibbonDecode); }
TEST(FuzzRegression, RegistryRewrite) { Replay("registry_rewrite", FuzzRegistryRewrite); }
TEST(FuzzRegression, XmlRetarget) { Replay("xml_retarget", FuzzXmlRetarget); }
TEST(FuzzRegression, Archive) { Replay("archive", FuzzArchive); }
TEST(FuzzRegression, Description) { Replay("description", FuzzDescription); }
TEST(FuzzRegression, RegistryScan) { Replay("registry_scan", FuzzRegistryScan); }

}  // namespace
}  // namespace carrovan
