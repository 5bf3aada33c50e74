#include "bench/merge/msxml_alone.h"

#include <msxml2.h>

#include "platform/windows/com_handles.h"

namespace carrovan {
namespace {

constexpr CLSID kDomDocument60 = {
    0x88d96a05, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
constexpr IID kXmlDomDocument = {
    0x2933bf81, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

using DocumentPointer = ComPointer<IXMLDOMDocument>;

void PutText(const std::wstring& text, Variant& variant) {
  variant.Edit().bstrVal = NewBstr(text).Release();
  variant.Edit().vt = VT_BSTR;
}

DocumentPointer Load(const std::wstring& path) {
  void* object = nullptr;
  if (FAILED(CoCreateInstance(kDomDocument60, nullptr, CLSCTX_INPROC_SERVER, kXmlDomDocument,
                              &object))) {
    return {};
  }
  DocumentPointer document(static_cast<IXMLDOMDocument*>(object));
  document.Get()->put_async(VARIANT_FALSE);
  document.Get()->put_resolveExternals(VARIANT_FALSE);
  document.Get()->put_validateOnParse(VARIANT_FALSE);
  Variant source;
  PutText(path, source);
  VARIANT_BOOL success = VARIANT_FALSE;
  const bool loaded =
      document.Get()->load(source.Get(), &success) == S_OK && success == VARIANT_TRUE;
  return loaded ? std::move(document) : DocumentPointer();
}

}  // namespace

bool LoadBothAndSave(const std::wstring& oldPath, const std::wstring& newPath,
                     const std::wstring& outputPath) {
  const ComApartment apartment;
  const DocumentPointer oldDocument = Load(oldPath);
  const DocumentPointer newDocument = Load(newPath);
  if (!oldDocument || !newDocument) return false;
  Variant target;
  PutText(outputPath, target);
  return newDocument.Get()->save(target.Get()) == S_OK;
}

}  // namespace carrovan
