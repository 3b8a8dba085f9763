#pragma once

#include <utils/StrongPointer.h>

#include "OrvelMetaData.h"

namespace orvel {

// A metadata store as a value: a copy has entries of its own. The store itself is held by sp, as
// everything that derives from RefBase has to be on the platform, and so can be an element of a
// Vector, which assigns its elements. No lock, as the store has none.
class MetaDataValue {
  public:
    MetaDataValue() : mStore(new OrvelMetaData) {}
    MetaDataValue(const MetaDataValue& other) : mStore(new OrvelMetaData(other)) {}
    MetaDataValue& operator=(const MetaDataValue& other) {
        mStore = new OrvelMetaData(other);
        return *this;
    }

    operator OrvelMetaData&() const { return *mStore; }  // NOLINT: it stands for its store
    OrvelMetaData* get() const { return mStore.get(); }

    bool findCString(uint32_t key, const char** value) const {
        return mStore->findCString(key, value);
    }
    bool findInt32(uint32_t key, int32_t* value) const { return mStore->findInt32(key, value); }

  private:
    android::sp<OrvelMetaData> mStore;
};

}  // namespace orvel
