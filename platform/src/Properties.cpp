#define LOG_TAG "properties"

#include <cutils/properties.h>
#include <errno.h>
#include <log/log.h>
#include <string.h>

#include <map>
#include <string>

#include "Monitor.h"

namespace {

struct Table {
    standin::Mutex lock;
    std::map<std::string, std::string, std::less<>> values ORVEL_TSA(guarded_by(lock));
};

// Never destroyed: properties may be read until the last thread ends.
Table& table() {
    static Table& instance = *new Table;
    return instance;
}

}  // namespace

int property_get(const char* key, char* value, const char* default_value) {
    {
        Table& properties = table();
        standin::Autolock hold(properties.lock);
        auto found = properties.values.find(key);
        if (found != properties.values.end() && !found->second.empty()) {
            memcpy(value, found->second.c_str(), found->second.size() + 1);
            return static_cast<int>(found->second.size());
        }
    }
    size_t length = default_value == nullptr ? 0 : strnlen(default_value, PROPERTY_VALUE_MAX - 1);
    if (length > 0) memcpy(value, default_value, length);
    value[length] = '\0';
    return static_cast<int>(length);
}

int property_set(const char* key, const char* value) {
    if (value == nullptr) value = "";
    if (key == nullptr || *key == '\0') {
        ALOGE("property without a name, value \"%s\"", value);
        return -EINVAL;
    }
    if (strlen(value) >= PROPERTY_VALUE_MAX) {
        ALOGE("value of property \"%s\" has %zu characters, the most is %d", key, strlen(value),
              PROPERTY_VALUE_MAX - 1);
        return -EINVAL;
    }
    Table& properties = table();
    standin::Autolock hold(properties.lock);
    properties.values[key] = value;
    return 0;
}
