#include <windows.h>

#include "app/carrovan_app.h"

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
  carrovan::CCarrovanApp().InitInstance();
  return 0;
}
