#pragma once

#include <string>

#include "platform/xml_dom.h"

namespace carrovan {

// A document put together at random, and what every DOM must make of it.
struct GeneratedXml {
  std::string bytes;
  std::string encoding;  // that its declaration names; empty when there is none
  std::string tree;      // as DumpOf writes it
};

// The same seed gives the same document. Encodings, line ends, kinds of node, references,
// xml:space and white space where it goes, stays or lies between two pieces of one text come up in
// every few documents.
GeneratedXml GenerateXml(unsigned seed);

// A tree in one line: every node with its kind, name, text and attribute "k".
std::string DumpOf(const XmlNode& root);

// The bytes of a document in one of the generator's encodings, as UTF-8.
std::string InUtf8(const std::string& bytes);

}  // namespace carrovan
