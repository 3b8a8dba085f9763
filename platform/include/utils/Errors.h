// Status codes that libraries of the platform share: 0, or a negated errno, or a value far below
// every errno.
#pragma once

#include <errno.h>
#include <stdint.h>

namespace android {

using status_t = int32_t;

enum {
    OK = 0,
    NO_ERROR = OK,

    UNKNOWN_ERROR = INT32_MIN,

    NO_MEMORY = -ENOMEM,
    INVALID_OPERATION = -ENOSYS,
    BAD_VALUE = -EINVAL,
    BAD_TYPE = UNKNOWN_ERROR + 1,
    NAME_NOT_FOUND = -ENOENT,
    PERMISSION_DENIED = -EPERM,
    NO_INIT = -ENODEV,
    ALREADY_EXISTS = -EEXIST,
    DEAD_OBJECT = -EPIPE,
    FAILED_TRANSACTION = UNKNOWN_ERROR + 2,
    BAD_INDEX = -EOVERFLOW,
    NOT_ENOUGH_DATA = -ENODATA,
    WOULD_BLOCK = -EWOULDBLOCK,
    TIMED_OUT = -ETIMEDOUT,
    UNKNOWN_TRANSACTION = -EBADMSG,
};

}  // namespace android
