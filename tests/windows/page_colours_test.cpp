#include <gtest/gtest.h>
#include <windows.h>

#include "pages/end_pages.h"
#include "platform/windows/module_loading.h"
#include "resources/resource.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

// The start page in a window that is never shown, with an answer about high contrast of its own.
class PageColours : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    ModuleHandle library;
    const std::wstring programs = RemoveFileSpec(RemoveFileSpec(ProgramPath()));
    ASSERT_EQ(LoadModule(programs + L"\\en-us\\MevrinLg.DLL", library), kSystemOk);
    resources_ = ResourceModule(std::move(library));
    frame_ = CreateWindowExW(0, L"Static", L"", WS_OVERLAPPED, 0, 0, 400, 400, nullptr, nullptr,
                             nullptr, nullptr);
    if (frame_ == nullptr) GTEST_SKIP() << "there is no screen; the wizard's tests have one";
  }
  void TearDown() override { DestroyWindow(frame_); }

  ResourceModule resources_;
  WizardFonts fonts_{USER_DEFAULT_SCREEN_DPI};
  WizardState state_;
  ProductContext context_;
  HWND frame_ = nullptr;
};

bool Yes() { return true; }
bool No() { return false; }

TEST_P(PageColours, AreThePagesOwnUnlessTheUserHasAskedForHighContrast) {
  const bool highContrast = GetParam();
  CStartDialog page({resources_, fonts_, highContrast ? &Yes : &No}, state_, context_);
  ASSERT_TRUE(page.CreateIn(frame_));
  const HWND heading = page.Control(IDC_START_HEADING);
  const DeviceContext context(heading);
  const LRESULT brush =
      SendMessageW(page.Window(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context.Get()),
                   reinterpret_cast<LPARAM>(heading));
  const bool isOwn = brush == reinterpret_cast<LRESULT>(GetStockObject(HOLLOW_BRUSH));
  EXPECT_EQ(isOwn, !highContrast);
}

INSTANTIATE_TEST_SUITE_P(Wish, PageColours, testing::Bool());

}  // namespace
}  // namespace carrovan
