#include "tests/rewrite/literal_rewrite.h"

#include <gtest/gtest.h>

#include <random>

#include "rewrite/document_text.h"
#include "rewrite/registry_rewrite.h"
#include "rewrite/xml_rewrite.h"
#include "tests/rewrite/rewrite_bench.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kFile[] = L"C:\\d\\a.reg";

// Texts of few pieces, so that matches, near misses and matches within replacements come up often.
std::u16string RandomText(std::mt19937& random, int most) {
  static const std::u16string kPieces[] = {u"C:\\\\Users\\\\",
                                           u"C:/Users/",
                                           u"\\Users\\",
                                           u"/Users/",
                                           u"Users",
                                           u"old",
                                           u"new user",
                                           u"new",
                                           u"%USERPROFILE%",
                                           u"27.0",
                                           u"27.0\\",
                                           u"2025",
                                           u"\\",
                                           u"\\\\",
                                           u"\"",
                                           u"=",
                                           u"[",
                                           u"]",
                                           u"\r\n",
                                           u"\n",
                                           u"\r",
                                           u" ",
                                           u"\t",
                                           u"a",
                                           u"P 27.0",
                                           u"P 2",
                                           u"\"v\"=\"C:\\\\x",
                                           u"\"v\"=\"",
                                           u"\"\r\n",
                                           u"C:\\\\x",
                                           u"Q:/z",
                                           u"\x4E2D",
                                           u"\xD83D\xDE00",
                                           u"..",
                                           u"5",
                                           u"/",
                                           u"VANTRIC",
                                           u"VANTRIC1.5",
                                           u"VANTRIC27",
                                           u".",
                                           u"=\"\\\\s",
                                           u":"};
  std::u16string text;
  for (auto count = random() % static_cast<unsigned>(most); count > 0; --count) {
    text += kPieces[random() % std::size(kPieces)];
  }
  return text;
}

class RandomRewrite : public testing::Test {
 protected:
  RandomRewrite() {
    bench.files.Put(L"C:\\x", "");
    bench.files.Put(L"C:\\Users\\new user\\a", "");
    bench.user.name = L"new user";
    bench.user.profile = L"C:\\Users\\new user";
  }

  std::u16string Literal(std::u16string text, const std::vector<Replacement>& replacements) {
    std::size_t ignored = 0;
    for (const Replacement& each : replacements) {
      text = LiterallyReplaced(text, ToUtf16(each.search), ToUtf16(each.replacement), ignored);
    }
    text = LiterallyWithUser(text, u"new user", u"C:\\\\Users\\\\new user", users_ = 0);
    return LiterallyWithoutInvalidPaths(text, bench.files, dropped_ = 0);
  }

  std::vector<std::wstring> LiteralReports() const {
    std::vector<std::wstring> lines = {L"Successfully replaced " + std::to_wstring(users_) +
                                       L" user paths"};
    if (dropped_ > 0) {
      lines.push_back(L"Successfully removed " + std::to_wstring(dropped_) +
                      L" registry entries with invalid absolute paths");
    }
    return lines;
  }

  RewriteBench bench;
  std::size_t users_ = 0;
  std::size_t dropped_ = 0;
};

TEST_F(RandomRewrite, RegistryFilesComeOutAsTheRulesSay) {
  const std::vector<Replacement> kReplacements[] = {
      {{L"P 27.0", L"P 28.0"}, {L"27.0\\", L"28.0\\"}, {L"2025", L"2026"}},
      {{L"P 27.0", L"P 2"}, {L"2\\", L"27.0\\old"}, {L"a", L"C:/Users/a"}},
      {{L"\r\n", L"\n"}, {L"\na", L"x\n"}, {L"", L"y"}},
  };
  for (unsigned seed = 0; seed < CARROVAN_RANDOM_TEXTS; ++seed) {
    std::mt19937 random(seed);
    const std::vector<Replacement>& replacements = kReplacements[random() % 3];
    const std::u16string text = RandomText(random, seed % 100 == 0 ? 3000 : 60);
    bench.files.partBytes = 1 + random() % 97;
    bench.files.Put(kFile, Utf16File(FromUtf16(text)));
    bench.log.lines.clear();
    ASSERT_EQ(RewriteRegistryFile(kFile, replacements, bench.Ports()), kSystemOk);
    ASSERT_EQ(bench.files.Bytes(kFile), Utf16File(FromUtf16(Literal(text, replacements))))
        << "seed " << seed;
    ASSERT_EQ(bench.log.lines, LiteralReports()) << "seed " << seed;

    bench.files.Put(kFile, ToUtf8(FromUtf16(text)));
    ASSERT_EQ(RewriteRegistryFile(kFile, replacements, bench.Ports()), kSystemOk);
    ASSERT_EQ(bench.files.Bytes(kFile), ToUtf8(FromUtf16(Literal(text, replacements))))
        << "seed " << seed;
  }
}

TEST_F(RandomRewrite, OnePassAfterTheOtherGivesTheSame) {
  for (unsigned seed = 0; seed < CARROVAN_RANDOM_TEXTS / 4; ++seed) {
    std::mt19937 random(seed);
    const std::string bytes = Utf16File(FromUtf16(RandomText(random, 60)));
    bench.files.Put(kFile, bytes);
    ASSERT_EQ(RewriteRegistryFile(kFile, {{L"27.0", L"28.0"}}, bench.Ports()), kSystemOk);
    const std::string together = bench.files.Bytes(kFile);
    bench.files.Put(kFile, bytes);
    ASSERT_EQ(ReplaceInRegistryFile(kFile, {L"27.0", L"28.0"}, bench.Ports()), kSystemOk);
    ASSERT_EQ(ReplaceUserPaths(kFile, bench.Ports()), kSystemOk);
    ASSERT_EQ(RemoveInvalidAbsolutePaths(kFile, bench.Ports()), kSystemOk);
    ASSERT_EQ(bench.files.Bytes(kFile), together) << "seed " << seed;
  }
}

TEST_F(RandomRewrite, RetargetedDocumentsComeOutAsTheRulesSay) {
  for (unsigned seed = 0; seed < CARROVAN_RANDOM_TEXTS; ++seed) {
    std::mt19937 random(seed);
    const std::u16string text = RandomText(random, 60);
    bench.files.Put(kFile, Utf16File(FromUtf16(text)));
    ASSERT_EQ(RetargetLegacyVersion(kFile, L"VANTRIC", L"28.0", bench.files, bench.codePage),
              kSystemOk);
    ASSERT_EQ(bench.files.Bytes(kFile),
              Utf16File(FromUtf16(LiterallyRetargeted(text, u"VANTRIC", u"28.0"))))
        << "seed " << seed;
  }
}

TEST(UnitText, FindsWhatAPlainSearchFinds) {
  std::mt19937 random(1);
  for (int i = 0; i < 2000; ++i) {
    std::u16string text;
    for (auto count = random() % 700; count > 0; --count) text += u"abc"[random() % 3];
    std::u16string search;
    for (auto count = random() % 9; count > 0; --count) search += u"abc"[random() % 3];
    const std::size_t from = random() % (text.size() + 1);
    ASSERT_EQ(FindUnits(text, search, from), search.empty() ? kNotFound : text.find(search, from));
    std::size_t count = 0;
    const std::u16string expected = LiterallyReplaced(text, search, u"ab", count);
    ASSERT_EQ(ReplaceUnits(text, search, u"ab"), count);
    ASSERT_EQ(text, expected);
  }
}

}  // namespace
}  // namespace carrovan
