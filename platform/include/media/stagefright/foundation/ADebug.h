// Assertions that hold in every build. A failure is logged at fatal priority and aborts:
//   FILE:LINE CHECK(EXPRESSION) failed.
//   FILE:LINE CHECK_EQ( A,B) failed: VALUE vs. VALUE
//   FILE:LINE Should not be here.
#pragma once

#include <log/log.h>
#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AString.h>
#include <stdio.h>

#include <type_traits>

namespace android {
namespace adebug {

// The value of an operand as text.
template <typename T>
AString describe(const T& value) {
    char text[64];
    if constexpr (std::is_floating_point<T>::value) {
        snprintf(text, sizeof(text), "%g", static_cast<double>(value));
    } else if constexpr (std::is_enum<T>::value || std::is_integral<T>::value) {
        if (value < T{}) {
            snprintf(text, sizeof(text), "%lld", static_cast<long long>(value));
        } else {
            snprintf(text, sizeof(text), "%llu", static_cast<unsigned long long>(value));
        }
    } else if constexpr (std::is_pointer<T>::value) {
        snprintf(text, sizeof(text), "%p", static_cast<const void*>(value));
    } else {
        snprintf(text, sizeof(text), "(object)");
    }
    return AString(text);
}

}  // namespace adebug
}  // namespace android

#define ADEBUG_TEXT_(token) #token
#define ADEBUG_TEXT(token) ADEBUG_TEXT_(token)
#define ADEBUG_HERE __FILE__ ":" ADEBUG_TEXT(__LINE__)

#define CHECK(condition) \
    LOG_ALWAYS_FATAL_IF(!(condition), "%s", ADEBUG_HERE " CHECK(" #condition ") failed.")

// Each operand is evaluated once.
#define ADEBUG_CHECK_OP(suffix, op, x, y)                                                   \
    do {                                                                                    \
        const auto& adebugX = (x);                                                          \
        const auto& adebugY = (y);                                                          \
        if (__builtin_expect(!(adebugX op adebugY), false)) {                               \
            __android_log_assert(nullptr, LOG_TAG, "%s%s vs. %s",                           \
                                 ADEBUG_HERE " CHECK_" #suffix "( " #x "," #y ") failed: ", \
                                 ::android::adebug::describe(adebugX).c_str(),              \
                                 ::android::adebug::describe(adebugY).c_str());             \
        }                                                                                   \
    } while (false)

#define CHECK_EQ(x, y) ADEBUG_CHECK_OP(EQ, ==, x, y)
#define CHECK_NE(x, y) ADEBUG_CHECK_OP(NE, !=, x, y)
#define CHECK_LE(x, y) ADEBUG_CHECK_OP(LE, <=, x, y)
#define CHECK_LT(x, y) ADEBUG_CHECK_OP(LT, <, x, y)
#define CHECK_GE(x, y) ADEBUG_CHECK_OP(GE, >=, x, y)
#define CHECK_GT(x, y) ADEBUG_CHECK_OP(GT, >, x, y)

#define TRESPASS() LOG_ALWAYS_FATAL("%s", ADEBUG_HERE " Should not be here.")
