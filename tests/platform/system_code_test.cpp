#include "platform/system_code.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

TEST(SystemCode, IsDescribedWithItsNumber) {
  EXPECT_EQ(DescribeSystemCode(kAccessDenied), L"access denied (error 5)");
  EXPECT_EQ(DescribeSystemCode(kSystemDiskFull), L"the disk is full (error 112)");
  EXPECT_EQ(DescribeSystemCode(kSystemOk), L"no error (error 0)");
}

TEST(SystemCode, KeepsTheNumberOfAnUnknownFailure) {
  EXPECT_EQ(DescribeSystemCode(1392), L"the system reports a failure (error 1392)");
}

TEST(SystemCode, HasAPhraseForEachNumberItNames) {
  const std::wstring unknown = L"the system reports a failure";
  for (const SystemCode code : {kFileNotFound, kPathNotFound, kAccessDenied, kInvalidData,
                                kSharingViolation, kFileExists, kSystemDiskFull, kInvalidName,
                                kFolderNotEmpty, kAlreadyExists, kNameTooLong, kNotAFolder}) {
    EXPECT_FALSE(DescribeSystemCode(code).starts_with(unknown)) << code;
  }
}

}  // namespace
}  // namespace carrovan
