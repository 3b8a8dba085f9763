#define LOG_TAG "NdkMediaFormat"

#include "MediaFormat.h"

#include <inttypes.h>
#include <log/log.h>
#include <string.h>

#include <algorithm>

using standin::FormatType;

namespace {

// A removed entry gives storage above this back: album art should not outlive its use.
constexpr size_t kMaxKeptBytes = 4096;

bool isNamed(const AMediaFormat::Entry& entry, const char* name, size_t length) {
    return entry.name.size() == length && memcmp(entry.name.data(), name, length) == 0;
}

}  // namespace

const AMediaFormat::Entry* AMediaFormat::find(const char* name, FormatType type) const {
    size_t length = strlen(name);
    for (const Entry& entry : mEntries) {
        if (!isNamed(entry, name, length)) continue;
        return entry.present && entry.type == type ? &entry : nullptr;
    }
    return nullptr;
}

AMediaFormat::Entry& AMediaFormat::set(const char* name, FormatType type) {
    const size_t length = strlen(name);
    Entry* place = nullptr;
    for (Entry& entry : mEntries) {
        if (!isNamed(entry, name, length)) continue;
        place = &entry;
        break;
    }
    if (place == nullptr) {
        place = &mEntries.emplace_back();
        place->name.assign(name, length);
    }
    place->present = true;
    place->type = type;
    return *place;
}

void AMediaFormat::setBytes(const char* name, FormatType type, const void* data, size_t size) {
    // The data may be part of what it replaces; assign() allows that.
    set(name, type).bytes.assign(static_cast<const char*>(data), size);
}

void AMediaFormat::clear() {
    for (Entry& entry : mEntries) {
        entry.present = false;
        entry.lentText.reset();
        if (entry.bytes.capacity() > kMaxKeptBytes) std::string().swap(entry.bytes);
    }
}

void AMediaFormat::copyFrom(const AMediaFormat& other) {
    clear();
    for (const Entry& from : other.mEntries) {
        if (!from.present) continue;
        Entry& to = set(from.name.c_str(), from.type);
        memcpy(to.rect, from.rect, sizeof(to.rect));
        if (from.type == FormatType::String || from.type == FormatType::Buffer) {
            to.bytes = from.bytes;
        }
    }
}

std::vector<const AMediaFormat::Entry*> AMediaFormat::sorted() const {
    std::vector<const Entry*> entries;
    for (const Entry& entry : mEntries) {
        if (entry.present) entries.push_back(&entry);
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry* a, const Entry* b) { return a->name < b->name; });
    return entries;
}

const char* AMediaFormat::toString() {
    mText.clear();
    for (const Entry* entry : sorted()) {
        if (!mText.empty()) mText += ", ";
        mText += entry->name;
        mText += ": ";
        char value[96];
        switch (entry->type) {
            case FormatType::Int32:
                snprintf(value, sizeof(value), "int32(%" PRId32 ")", entry->int32);
                break;
            case FormatType::Int64:
                snprintf(value, sizeof(value), "int64(%" PRId64 ")", entry->int64);
                break;
            case FormatType::Float:
                snprintf(value, sizeof(value), "float(%f)", static_cast<double>(entry->float32));
                break;
            case FormatType::String:
                mText += "string(" + entry->bytes + ")";
                continue;
            case FormatType::Buffer:
                snprintf(value, sizeof(value), "data(%zu bytes)", entry->bytes.size());
                break;
            case FormatType::Rect:
                snprintf(value, sizeof(value),
                         "Rect(%" PRId32 ", %" PRId32 ", %" PRId32 ", %" PRId32 ")", entry->rect[0],
                         entry->rect[1], entry->rect[2], entry->rect[3]);
                break;
        }
        mText += value;
    }
    return mText.c_str();
}

void standin::forEachEntry(const AMediaFormat* format,
                           void (*visit)(void* cookie, const char* key, const FormatValue& value),
                           void* cookie) {
    for (const AMediaFormat::Entry* entry : format->sorted()) {
        FormatValue value = {};
        value.type = entry->type;
        switch (entry->type) {
            case FormatType::Int32:
                value.int32 = entry->int32;
                break;
            case FormatType::Int64:
                value.int64 = entry->int64;
                break;
            case FormatType::Float:
                value.floatValue = entry->float32;
                break;
            case FormatType::String:
                value.string = entry->bytes.c_str();
                break;
            case FormatType::Buffer:
                value.data = entry->bytes.data();
                value.dataSize = entry->bytes.size();
                break;
            case FormatType::Rect:
                std::copy_n(entry->rect, 4, value.rect);
                break;
        }
        visit(cookie, entry->name.c_str(), value);
    }
}
