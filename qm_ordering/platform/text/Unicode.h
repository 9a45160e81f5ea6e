#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qm_ordering::text {

// The position of the first byte at which the text is not UTF-8 (overlong forms, surrogates and values above
// U+10FFFF included); nothing when it is UTF-8 throughout. Zero bytes are text.
std::optional<std::size_t> FindBrokenUTF8(std::string_view zvText);

// The position of the first byte of what cannot stand in an XML 1.0 document: broken UTF-8, control
// characters other than tab, line feed and carriage return, U+FFFE, U+FFFF.
std::optional<std::size_t> FindNonXML(std::string_view zvText);

// The text in the form in which two texts that differ in letter case alone are equal: simple Unicode case
// folding, one character to one character (ß stays ß), no normalisation. Broken bytes stay as they are. The
// keys of collections and the store's text columns both compare by this one function.
std::string Fold(std::string_view zvText);

// Compares Fold(zvLeft) with Fold(zvRight) byte by byte, without making them: negative, zero or positive.
int CompareFolded(std::string_view zvLeft, std::string_view zvRight) noexcept;

// The version of the folding table; a store whose text indexes were built with another rebuilds them.
const char* FoldingVersion();

// The text without leading and trailing spaces (U+0020 alone).
std::string_view TrimSpaces(std::string_view zvText);

}  // namespace qm_ordering::text
