#include "platform/windows/tarvik_library.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/windows/tarvik_ports.h"
#include "tests/windows/test_traces.h"
#include "text/text.h"

namespace carrovan {
namespace {

int something = 0;

// Knows every function except one, and notes what it was asked for.
class LookupWithout {
 public:
  explicit LookupWithout(std::string missing) : missing_(std::move(missing)) {}

  FunctionLookup AsFunction() {
    return [this](const char* name) -> void* {
      asked.insert(name);
      return name == missing_ ? nullptr : &something;
    };
  }

  std::set<std::string> asked;

 private:
  std::string missing_;
};

TEST(TarvikFunctions, AreCompleteWhenTheLibraryHasThemAll) {
  LookupWithout lookup("");
  TarvikFunctions functions;
  EXPECT_EQ(FindTarvikFunctions(lookup.AsFunction(), functions), "");
  const std::set<std::string> expected = {"EyeGetProductName",
                                          "EyeGetProductVersion",
                                          "EyeGetHumanRedableVersion",
                                          "EyeGetCompanyNameShort",
                                          "APIGetAppStartupFolder",
                                          "CreateZip",
                                          "ZipAdd",
                                          "IsZipHandleU",
                                          "CloseZipZ",
                                          "OpenZip",
                                          "GetZipItem",
                                          "UnzipItem",
                                          "CloseZipU",
                                          "StoreZipItems"};
  EXPECT_EQ(lookup.asked, expected);
}

TEST(TarvikFunctions, NamesTheFunctionThatIsMissing) {
  LookupWithout complete("");
  TarvikFunctions functions;
  FindTarvikFunctions(complete.AsFunction(), functions);
  complete.asked.erase("StoreZipItems");
  for (const std::string& name : complete.asked) {
    LookupWithout lookup(name);
    EXPECT_EQ(FindTarvikFunctions(lookup.AsFunction(), functions), name);
  }
}

TEST(TarvikFunctions, MayLackTheOneThatStoresWithoutCompression) {
  LookupWithout lookup("StoreZipItems");
  TarvikFunctions functions;
  EXPECT_EQ(FindTarvikFunctions(lookup.AsFunction(), functions), "");
  EXPECT_EQ(functions.storeZipItems, nullptr);
}

TEST(TarvikLibrary, SaysWhatToDoWhenTheLibraryIsMissing) {
  const TarvikOrReason tarvik = LoadTarvik(L"C:\\no such folder\\tarvik.dll");
  EXPECT_EQ(tarvik.object, nullptr);
  EXPECT_EQ(tarvik.reason,
            L"C:\\no such folder\\tarvik.dll is missing: run Carrovan's setup and name the CAD "
            L"product's program folder, or put this program into that folder and start it there");
}

TEST(TarvikLibrary, RefusesAnotherLibraryOfThatName) {
  const TarvikOrReason tarvik = LoadTarvik(L"C:\\windows\\system32\\version.dll");
  EXPECT_EQ(tarvik.object, nullptr);
  EXPECT_EQ(tarvik.reason,
            L"C:\\windows\\system32\\version.dll has no function EyeGetProductName: use the "
            L"library of a CAD product that this program supports");
}

TEST(TarvikLibrary, RefusesAFileThatIsNoLibrary) {
  const TarvikOrReason tarvik = LoadTarvik(L"C:\\windows\\win.ini");
  EXPECT_EQ(tarvik.object, nullptr);
  EXPECT_TRUE(Contains(tarvik.reason, L"win.ini cannot be loaded (error "))
      << ToUtf8(tarvik.reason);
}

TEST(TarvikProduct, AsksForEachFactByItsOwnFunction) {
  TarvikFunctions functions;
  functions.productName = [] { return L"VANTRIC"; };
  functions.productVersion = [] { return L"28.0"; };
  functions.humanReadableVersion = [] { return L"2026"; };
  functions.companyShortName = [] { return L"Vantric"; };
  functions.startupFolder = [] { return L"C:\\Product\\Bin"; };
  const TarvikProduct product(functions);
  EXPECT_EQ(product.ProductName(), L"VANTRIC");
  EXPECT_EQ(product.ProductVersion(), L"28.0");
  EXPECT_EQ(product.HumanReadableVersion(), L"2026");
  EXPECT_EQ(product.CompanyShortName(), L"Vantric");
  EXPECT_EQ(product.StartupFolder(), L"C:\\Product\\Bin");
}

TEST(TarvikProduct, TakesNoTextForAnEmptyOne) {
  TarvikFunctions functions;
  functions.productName = []() -> const wchar_t* { return nullptr; };
  EXPECT_EQ(TarvikProduct(functions).ProductName(), L"");
}

}  // namespace
}  // namespace carrovan
