# Makes html_assets.cpp of page.css and page.js:
#   cmake -D OUT=FILE -P embed.cmake
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.css style)
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.js script)
file(WRITE ${OUT} "#include \"html_assets.h\"

namespace orvel::probe {

const char kHtmlStyle[] = R\"page(${style})page\";
const char kHtmlScript[] = R\"page(${script})page\";

}  // namespace orvel::probe
")
