#pragma once

#include <string>

namespace carrovan {

// Wine's DOM writes UTF-8 whatever the document's declaration says. These see to it that a saved
// document is what it says it is.

// The encoding that a saved document's declaration names; empty when it is UTF-8 or not named, and
// for a document in 16-bit units, which needs no declaration to be read.
std::wstring DeclaredEightBitEncoding(const std::string& bytes);

// The same document in an encoding, from UTF-8; characters that the encoding lacks become character
// references. Empty when the system does not know the encoding.
std::string EncodeDocument(const std::string& utf8, const std::wstring& encoding);

}  // namespace carrovan
