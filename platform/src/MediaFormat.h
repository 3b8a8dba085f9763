// The storage of a media format.
#pragma once

#include <media/NdkMediaFormat.h>
#include <standin/FormatEntries.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

// Entries are found by walking them: a format has a handful, at most a few dozen. An entry that is
// removed keeps its place, its name and, when it is small, its storage, so that a format which is
// cleared and filled again with the same names allocates nothing.
struct AMediaFormat {
  public:
    struct Entry {
        std::string name;
        bool present = false;
        standin::FormatType type = standin::FormatType::Int32;
        union {
            int32_t int32;
            int64_t int64;
            float float32;
            int32_t rect[4] = {};
        };
        std::string bytes;                              // of String and Buffer
        mutable std::unique_ptr<std::string> lentText;  // what the last get of a String gave out
    };

    // The entry of that name and type, or null.
    const Entry* find(const char* name, standin::FormatType type) const;
    // The entry of that name, new or old, with its type set and its value to be set by the caller.
    Entry& set(const char* name, standin::FormatType type);
    void setBytes(const char* name, standin::FormatType type, const void* data, size_t size);

    void clear();
    void copyFrom(const AMediaFormat& other);
    const char* toString();

    // The entries that are present, ordered by name.
    std::vector<const Entry*> sorted() const;

  private:
    // Present or not, in order of first use. A deque: entries, and the texts that callers hold,
    // stay where they are when another is added.
    std::deque<Entry> mEntries;
    std::string mText;
};
