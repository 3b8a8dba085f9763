# Makes string literals of the page's template, style and script:
#   cmake -D OUT=FILE -P embed.cmake
set(out "")
foreach(part page.html:kPageHtml page.css:kPageStyle page.js:kPageScript)
  string(REPLACE ":" ";" part ${part})
  list(GET part 0 file)
  list(GET part 1 name)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/${file} text)
  # The address sanitizer keeps where a global is defined: not the build folder's file.
  string(APPEND out "#line 1 \"${file}\"\nconstexpr char ${name}[] = R\"page(${text})page\";\n")
endforeach()
file(WRITE ${OUT} "${out}")
