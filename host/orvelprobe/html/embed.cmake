# Makes html_assets.inc of the style and the parts of the script, in their order:
#   cmake -D OUT=FILE -P embed.cmake
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.css style)
set(script "")
foreach(part numbers plot page)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/${part}.js text)
  string(APPEND script "${text}\n")
endforeach()
file(WRITE ${OUT} "namespace orvel::probe {

const char kHtmlStyle[] = R\"page(${style})page\";
const char kHtmlScript[] = R\"page(${script})page\";

}  // namespace orvel::probe
")
