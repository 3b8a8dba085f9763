// System properties: one table for the whole process. Any thread.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

// Size of a buffer for a value: 91 characters and the terminating zero.
#define PROPERTY_VALUE_MAX 92

// Copies the value of `key` to `value` (PROPERTY_VALUE_MAX bytes) and returns its length. A
// property that is unset or empty gives the default, cut to 91 characters; without a default the
// empty text.
int property_get(const char* key, char* value, const char* default_value);

// Sets a property; a null value is the empty one. Returns 0, or -EINVAL for an empty key or a value
// of more than 91 characters, which leaves the old value in place.
int property_set(const char* key, const char* value);

}  // extern "C"
#pragma GCC visibility pop
