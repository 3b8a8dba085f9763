// The one place where status_t and media_status_t are converted into each other. Any thread.
#pragma once

#include <media/NdkMediaError.h>
#include <utils/Errors.h>

#pragma GCC visibility push(default)

// OK, ERROR_END_OF_STREAM, ERROR_IO, ERROR_MALFORMED, INVALID_OPERATION and UNKNOWN_ERROR have
// counterparts. Everything else, WOULD_BLOCK too, becomes AMEDIA_ERROR_UNKNOWN, with an error in
// the log that names the status.
media_status_t translate_error(android::status_t status);

// The inverse, which knows AMEDIA_ERROR_WOULD_BLOCK as well. Everything else becomes UNKNOWN_ERROR,
// with an error in the log.
android::status_t reverse_translate_error(media_status_t status);

#pragma GCC visibility pop
