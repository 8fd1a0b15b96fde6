#include "platform/wide_errors.h"

#include <iostream>

namespace temvar {

void WriteWideErrorLine(const char* utf8) {
  // glibc ties stderr to narrow or to wide text with its first use, and drops the other kind from
  // then on (fwide). The library writes narrow text to it elsewhere, so this goes out as bytes too.
  std::cerr << utf8 << std::endl;
}

}  // namespace temvar
