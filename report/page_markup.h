#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace carrovan {

// Text of a package, a path or a system becomes text of a page here, and nowhere else: it can
// neither be markup nor change the direction or the look of what stands around it.

// For the content of an element. What cannot be seen becomes a visible escape, set apart: control
// characters, marks of direction, line and paragraph ends, halves of surrogate pairs.
std::string MarkupOf(std::wstring_view text);

// The same between <bdi> and </bdi>, with places at which a long path may break.
std::string NameMarkup(std::wstring_view name);

// The same for a title, in which there are no elements: escapes are plain text.
std::string TitleMarkup(std::wstring_view text);

// The beginning of a text that is longer, with an ellipsis and its length behind it.
std::wstring CutText(const std::wstring& text, std::size_t mostCharacters);

}  // namespace carrovan
