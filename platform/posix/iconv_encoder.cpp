#include "platform/posix/iconv_encoder.h"

#include <iconv.h>
#include <libxml/encoding.h>

#include <array>
#include <cerrno>
#include <cstdint>

namespace carrovan {
namespace {

class IconvEncoder : public DocumentEncoder {
 public:
  explicit IconvEncoder(iconv_t converter) : converter_(converter) {}
  ~IconvEncoder() override { iconv_close(converter_); }
  IconvEncoder(const IconvEncoder&) = delete;
  IconvEncoder& operator=(const IconvEncoder&) = delete;

  std::size_t Append(std::string_view utf8, std::string& bytes) override {
    // The interface takes a pointer to what it does not change.
    char* unread = const_cast<char*>(utf8.data());
    std::size_t left = utf8.size();
    while (left > 0 && Convert(&unread, &left, bytes)) {
    }
    return utf8.size() - left;
  }

  void Finish(std::string& bytes) override {
    while (Convert(nullptr, nullptr, bytes) && lastFilledTheBuffer_) {
    }
  }

 private:
  // Fills the buffer once. False at a character that cannot be converted.
  bool Convert(char** unread, std::size_t* left, std::string& bytes) {
    char* end = buffer_.data();
    std::size_t room = buffer_.size();
    const bool failed =
        iconv(converter_, unread, left, &end, &room) == static_cast<std::size_t>(-1);
    lastFilledTheBuffer_ = failed && errno == E2BIG;
    bytes.append(buffer_.data(), end);
    return !failed || lastFilledTheBuffer_;
  }

  iconv_t converter_;
  std::array<char, 4096> buffer_ = {};
  bool lastFilledTheBuffer_ = false;
};

std::unique_ptr<DocumentEncoder> Open(const char* encoding) {
  const iconv_t converter = iconv_open(encoding, "UTF-8");
  if (reinterpret_cast<std::intptr_t>(converter) == -1) return nullptr;
  return std::make_unique<IconvEncoder>(converter);
}

}  // namespace

std::unique_ptr<DocumentEncoder> OpenIconvEncoder(const std::string& encoding) {
  if (auto encoder = Open(encoding.c_str())) return encoder;
  xmlCharEncodingHandler* const handler = xmlFindCharEncodingHandler(encoding.c_str());
  if (handler == nullptr) return nullptr;
  auto encoder = handler->name == nullptr ? nullptr : Open(handler->name);
  xmlCharEncCloseFunc(handler);
  return encoder;
}

}  // namespace carrovan
