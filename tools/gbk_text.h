// Texts of the library, which come in the GBK code page.
#pragma once

#include <string>

namespace tool {

// The same text in UTF-8. Throws when the system does not know the code page or the text is not in it.
std::string utf8FromGbk(const std::string& text);

}  // namespace tool
