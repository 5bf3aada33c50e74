#include "platform/windows/tarvik_functions.h"

namespace carrovan {
namespace {

// Finds functions one after the other and remembers the first that is missing.
class FunctionFinder {
 public:
  explicit FunctionFinder(const FunctionLookup& lookup) : lookup_(lookup) {}

  template <typename Function>
  void Find(const char* name, Function& function) {
    function = reinterpret_cast<Function>(lookup_(name));
    if (function == nullptr && missing_.empty()) missing_ = name;
  }

  const std::string& Missing() const { return missing_; }

 private:
  const FunctionLookup& lookup_;
  std::string missing_;
};

}  // namespace

std::string FindTarvikFunctions(const FunctionLookup& lookup, TarvikFunctions& functions) {
  FunctionFinder finder(lookup);
  finder.Find("EyeGetProductName", functions.productName);
  finder.Find("EyeGetProductVersion", functions.productVersion);
  finder.Find("EyeGetHumanRedableVersion", functions.humanReadableVersion);
  finder.Find("EyeGetCompanyNameShort", functions.companyShortName);
  finder.Find("APIGetAppStartupFolder", functions.startupFolder);
  finder.Find("CreateZip", functions.createZip);
  finder.Find("ZipAdd", functions.zipAdd);
  finder.Find("IsZipHandleU", functions.isZipHandleU);
  finder.Find("CloseZipZ", functions.closeZipZ);
  finder.Find("OpenZip", functions.openZip);
  finder.Find("GetZipItem", functions.getZipItem);
  finder.Find("UnzipItem", functions.unzipItem);
  finder.Find("CloseZipU", functions.closeZipU);
  functions.storeZipItems = reinterpret_cast<StoreZipItemsFunction>(lookup("StoreZipItems"));
  return finder.Missing();
}

}  // namespace carrovan
