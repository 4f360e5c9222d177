#include "tools/gbk_text.h"

#include "tools/cli_error.h"

#include <iconv.h>

namespace tool {

std::string utf8FromGbk(const std::string& text) {
  iconv_t conversion = iconv_open("UTF-8", "GBK");
  if (conversion == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr): POSIX's sign of failure
    throw TCliError(TExit::failure, "this system cannot convert GBK text to UTF-8");
  }
  std::string source = text;
  std::string converted(2 * text.size(), '\0');  // two bytes of GBK take three of UTF-8 at most, one takes one
  char* in = source.data();
  char* out = converted.data();
  std::size_t inLeft = source.size();
  std::size_t outLeft = converted.size();
  const bool isConverted = iconv(conversion, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
  iconv_close(conversion);
  if (!isConverted) {
    throw TCliError(TExit::failure, "the report is not in the GBK code page");
  }
  converted.resize(converted.size() - outLeft);
  return converted;
}

}  // namespace tool
