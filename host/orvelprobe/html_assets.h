// The page's style and script, made of html/ at build time.
#pragma once

namespace orvel::probe {

extern const char kHtmlStyle[];
extern const char kHtmlScript[];

}  // namespace orvel::probe
