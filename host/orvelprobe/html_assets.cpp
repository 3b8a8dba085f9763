// Around the generated literals: a compiler may keep the names of the files that define something
// in the program, where the build folder's have no business.
#include "html_assets.h"

namespace orvel::probe {

// clang-format off
const char kHtmlStyle[] =
#include "html_style.inc"
;
const char kHtmlScript[] =
#include "html_script.inc"
;
// clang-format on

}  // namespace orvel::probe
