#pragma once

#include <string>

namespace carrovan {

// One run of each fuzz target on one input. A finding ends the program. Two documents of one input
// are separated by a line of three hyphens.

// The engine's merge must end and give what its rules give word for word.
void FuzzXmlMerge(const std::string& input);
void FuzzShortcutMerge(const std::string& input);

// A record that reads must read back the same from what it is written as.
void FuzzRibbonDecode(const std::string& input);

// A registry file must come out as the rules say word for word, whatever its encoding.
void FuzzRegistryRewrite(const std::string& input);

// A document must come out as the rules say word for word, and an edit that has been made must not
// be made again.
void FuzzXmlRetarget(const std::string& input);

// An archive must be listed, checked, read, unpacked and verified with results that agree, and no
// file may come to lie outside the destination.
void FuzzArchive(const std::string& input);

// A registry file that passes must name no key that the sandbox would take outside its company, and
// be one also without what is personal.
void FuzzRegistryScan(const std::string& input);

// A package's description must read, and change one value without another.
void FuzzDescription(const std::string& input);

}  // namespace carrovan
