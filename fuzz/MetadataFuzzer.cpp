// Any operations on two metadata stores, against a model: the last value written under a name is
// the one that is found, with its type or not at all.
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "FuzzInput.h"
#include "MetaKeyTables.h"
#include "OrvelMetaData.h"

using namespace orvel;

namespace {

using Rect = std::vector<int32_t>;
using Value = std::variant<std::string, int32_t, int64_t, float, std::vector<uint8_t>, Rect>;
using Model = std::map<std::string, Value>;

struct Store {
    android::sp<OrvelMetaData> meta = new OrvelMetaData;
    Model model;
};

// A row of one of the tables, so that keys are mostly known ones, or any number.
uint32_t chooseKey(fuzz::Input& input) {
    static const MetaKeyTable* const tables[] = {&kCStringKeys, &kFloatKeys,  &kInt64Keys,
                                                 &kInt32Keys,   &kCsdKeys,    &kBufferKeys,
                                                 &kRectKeys,    &kPointerKeys};
    const uint8_t table = input.byte();
    const uint16_t row = input.word();
    if (table >= 240) return static_cast<uint32_t>(input.word()) << 16 | row;
    const MetaKeyTable& chosen = *tables[table % 8];
    return chosen.begin()[row % static_cast<size_t>(chosen.end() - chosen.begin())].key;
}

uint64_t number(fuzz::Input& input) {
    uint64_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 16 | input.word();
    return value;
}

template <typename T>
const T* valueIn(const Model& model, const char* name) {
    const auto found = model.find(name);
    return found == model.end() ? nullptr : std::get_if<T>(&found->second);
}

const char* bufferName(uint32_t key) {
    const char* name = kCsdKeys.findName(key);
    return name != nullptr ? name : kBufferKeys.findName(key);
}

void set(Store& store, uint32_t key, fuzz::Input& input) {
    const auto expect = [](bool result, const char* name) {
        fuzz::require(result == (name != nullptr));
        return result;
    };
    switch (input.byte() % 6) {
        case 0: {
            const std::string text(input.byte(), static_cast<char>(input.byte() | 1));
            const char* name = kCStringKeys.findName(key);
            if (expect(store.meta->setCString(key, text.c_str()), name)) store.model[name] = text;
            break;
        }
        case 1: {
            const auto value = static_cast<int32_t>(number(input));
            if (key == kKeyIsSyncFrame || key == kKeyIsDefault) {
                const bool isSync = key == kKeyIsSyncFrame;
                fuzz::require(store.meta->setInt32(key, value) == (isSync || value != 0));
                if (isSync) store.model["is-sync-frame"] = value != 0 ? 1 : 0;
                if (!isSync && value != 0) store.model["is-default"] = 1;
                break;
            }
            const char* name = kInt32Keys.findName(key);
            if (expect(store.meta->setInt32(key, value), name)) store.model[name] = value;
            break;
        }
        case 2: {
            const auto value = static_cast<int64_t>(number(input));
            const char* name = kInt64Keys.findName(key);
            if (expect(store.meta->setInt64(key, value), name)) store.model[name] = value;
            break;
        }
        case 3: {
            const auto value = static_cast<float>(static_cast<int16_t>(input.word()));
            const char* name = kFloatKeys.findName(key);
            if (expect(store.meta->setFloat(key, value), name)) store.model[name] = value;
            break;
        }
        case 4: {
            const std::vector<uint8_t> bytes(input.word() % 4096, input.byte());
            const char* name = bufferName(key);
            const bool result = store.meta->setData(key, input.byte(), bytes.data(), bytes.size());
            if (expect(result, name)) store.model[name] = bytes;
            break;
        }
        case 5: {
            Rect rect(4);
            for (int32_t& side : rect)
                side = input.word();
            const char* name = kRectKeys.findName(key);
            const bool result = store.meta->setRect(key, rect[0], rect[1], rect[2], rect[3]);
            if (expect(result, name)) store.model[name] = rect;
            break;
        }
    }
}

void find(const Store& store, uint32_t key) {
    const OrvelMetaData& meta = *store.meta;
    const char* text = nullptr;
    const char* name = kCStringKeys.findName(key);
    fuzz::require(meta.findCString(key, &text) == (name != nullptr));
    const auto* expectedText = name ? valueIn<std::string>(store.model, name) : nullptr;
    fuzz::require((text != nullptr) == (expectedText != nullptr));
    fuzz::require(text == nullptr || *expectedText == text);

    const auto compare = [&](const char* known, bool result, auto value, auto preset) {
        fuzz::require(result == (known != nullptr));
        const auto* expected = known ? valueIn<decltype(value)>(store.model, known) : nullptr;
        fuzz::require(value == (expected != nullptr ? *expected : preset));
    };
    int32_t small = -7;
    const bool foundSmall = meta.findInt32(key, &small);
    compare(kInt32Keys.findName(key), foundSmall, small, -7);
    int64_t large = -7;
    const bool foundLarge = meta.findInt64(key, &large);
    compare(kInt64Keys.findName(key), foundLarge, large, int64_t{-7});
    float real = -0.5f;
    const bool foundReal = meta.findFloat(key, &real);
    compare(kFloatKeys.findName(key), foundReal, real, -0.5f);
    Rect rect(4, -7);
    const bool foundRect = meta.findRect(key, &rect[0], &rect[1], &rect[2], &rect[3]);
    compare(kRectKeys.findName(key), foundRect, rect, Rect(4, -7));
    uint32_t type = 0;
    const void* data = nullptr;
    size_t size = 0;
    const bool foundData = meta.findData(key, &type, &data, &size);
    const auto* bytes = static_cast<const uint8_t*>(data);
    compare(bufferName(key), foundData, std::vector<uint8_t>(bytes, bytes + size),
            std::vector<uint8_t>());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    Store stores[2];
    while (input.restSize() > 0) {
        const uint8_t operation = input.byte();
        Store& store = stores[operation & 1];
        Store& other = stores[1 - (operation & 1)];
        const uint32_t key = chooseKey(input);
        switch (operation >> 1 & 15) {
            case 0:
                store.meta->clear();
                store.model.clear();
                break;
            case 1:
                fuzz::require(!store.meta->remove(key) && !store.meta->hasData(key));
                break;
            case 2:
                store.meta->copyEntriesFrom(*other.meta);
                store.model = other.model;
                break;
            case 3:
                store.meta = new OrvelMetaData(*other.meta);
                store.model = other.model;
                break;
            case 4: {
                void* pointer = nullptr;
                const bool known = kPointerKeys.findName(key) != nullptr;
                fuzz::require(store.meta->setPointer(key, &store) == known);
                fuzz::require(store.meta->findPointer(key, &pointer) == known);
                fuzz::require(pointer == (known ? &store : nullptr));
                break;
            }
            case 5:
                fuzz::require(store.model.empty() == store.meta->toString().isEmpty());
                break;
            case 6:
            case 7:
            case 8:
                find(store, key);
                break;
            default:
                set(store, key, input);
        }
    }
    for (const Store& store : stores) {
        for (const MetaKeyTable* table : {&kCStringKeys, &kInt32Keys, &kInt64Keys, &kBufferKeys}) {
            for (const MetaKeyRow& row : *table)
                find(store, row.key);
        }
    }
    return 0;
}
