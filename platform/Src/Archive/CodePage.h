// Text of packages that are not Unicode.
#pragma once

#include <string>
#include <string_view>

namespace Archive {

/// The code page that a language's packages are usually built in: 936 for simplified Chinese; 1252 when nothing is
/// known.
unsigned codePageOfLanguage(unsigned languageId);

/// To UTF-8. A package records its code page nowhere, so that text which is UTF-8 already is taken as such; what a code
/// page does not know becomes U+FFFD.
std::string utf8FromCodePage(std::string_view text, unsigned codePage);

/// The system's own conversion. @return false when it does not know the code page or the text is malformed
bool convertBySystem(std::string_view text, unsigned codePage, std::string& utf8);

}  // namespace Archive
