# Makes a string literal of the style and one of the parts of the script, in their order:
#   cmake -D STYLE=FILE -D SCRIPT=FILE -P embed.cmake
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.css style)
set(script "")
foreach(part numbers plot page)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/${part}.js text)
  string(APPEND script "${text}\n")
endforeach()
file(WRITE ${STYLE} "R\"page(${style})page\"\n")
file(WRITE ${SCRIPT} "R\"page(${script})page\"\n")
