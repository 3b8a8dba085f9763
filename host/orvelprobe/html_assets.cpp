// A file of the tree around the generated text: a compiler may keep the name of what it compiles in
// the program, where the build folder's has no business.
#include "html_assets.h"

#include "html_assets.inc"
