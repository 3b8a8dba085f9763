// Assertions that hold in every build. A failure is logged at fatal priority and aborts:
//   FILE:LINE CHECK(EXPRESSION) failed.
//   FILE:LINE Should not be here.
#pragma once

#include <log/log.h>

#define ADEBUG_TEXT_(token) #token
#define ADEBUG_TEXT(token) ADEBUG_TEXT_(token)
#define ADEBUG_HERE __FILE__ ":" ADEBUG_TEXT(__LINE__)

#define CHECK(condition) \
    LOG_ALWAYS_FATAL_IF(!(condition), "%s", ADEBUG_HERE " CHECK(" #condition ") failed.")

#define TRESPASS() LOG_ALWAYS_FATAL("%s", ADEBUG_HERE " Should not be here.")
