// The page's style and script, made at build time of html/page.css and html/page.js.
#pragma once

namespace orvel::probe {

extern const char kHtmlStyle[];
extern const char kHtmlScript[];

}  // namespace orvel::probe
