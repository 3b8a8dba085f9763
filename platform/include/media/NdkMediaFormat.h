// The media format that crosses library boundaries: named entries of six types.
//
// One thread at a time uses a format. The last write to a name wins, also when its type differs;
// a getter is false, and writes nothing, when there is no entry of that name and type. Names and
// values are copied in. Writing the names again that a format held before it was cleared does not
// allocate: formats of media buffers are cleared and filled once a sample.
#pragma once

#include <media/NdkMediaError.h>
#include <stddef.h>
#include <stdint.h>

#pragma GCC visibility push(default)
extern "C" {

struct AMediaFormat;
typedef struct AMediaFormat AMediaFormat;

AMediaFormat* AMediaFormat_new(void);
// Nothing for null.
media_status_t AMediaFormat_delete(AMediaFormat* format);

// Empties `to`, then copies every entry of `from` to it. A format copied onto itself is empty
// after.
media_status_t AMediaFormat_copy(AMediaFormat* to, AMediaFormat* from);
void AMediaFormat_clear(AMediaFormat* format);

// "name: type(value)" of every entry, ordered by name. The format owns the text; it is valid until
// the next call or the format's end.
const char* AMediaFormat_toString(AMediaFormat* format);

bool AMediaFormat_getInt32(AMediaFormat* format, const char* name, int32_t* out);
bool AMediaFormat_getInt64(AMediaFormat* format, const char* name, int64_t* out);
bool AMediaFormat_getFloat(AMediaFormat* format, const char* name, float* out);
bool AMediaFormat_getRect(AMediaFormat* format, const char* name, int32_t* left, int32_t* top,
                          int32_t* right, int32_t* bottom);
// Text and bytes stay the format's: valid until the entry is written again, the format is cleared
// or ends, a text also only until the next get of the same name.
bool AMediaFormat_getString(AMediaFormat* format, const char* name, const char** out);
bool AMediaFormat_getBuffer(AMediaFormat* format, const char* name, void** data, size_t* size);

void AMediaFormat_setInt32(AMediaFormat* format, const char* name, int32_t value);
void AMediaFormat_setInt64(AMediaFormat* format, const char* name, int64_t value);
void AMediaFormat_setFloat(AMediaFormat* format, const char* name, float value);
void AMediaFormat_setRect(AMediaFormat* format, const char* name, int32_t left, int32_t top,
                          int32_t right, int32_t bottom);
// A null text is a mistake: it is logged as an error and nothing is written.
void AMediaFormat_setString(AMediaFormat* format, const char* name, const char* value);
// Null data is allowed for a size of 0 only; else as a null text.
void AMediaFormat_setBuffer(AMediaFormat* format, const char* name, const void* data, size_t size);

}  // extern "C"
#pragma GCC visibility pop
