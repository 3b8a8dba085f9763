// What the parts of a text page are written with.
#pragma once

#include <cstdio>
#include <string>

#include "text.h"
#include "text_output.h"

namespace orvel::probe {

enum class Colour { Bold, Good, Warn, Bad, Dim };

// Lines of a page, over a stream and a style of someone else's.
class Page {
  public:
    static constexpr size_t kLabelColumns = 12;

    Page(const TextStyle& style, FILE* out) : mStyle(style), mOut(out) {}

    std::string paint(Colour colour, const std::string& text) const {
        static constexpr const char* kCodes[] = {"1", "32", "33", "31;1", "2"};
        if (!mStyle.colour) return text;
        return "\033[" + std::string(kCodes[static_cast<int>(colour)]) + "m" + text + "\033[0m";
    }
    void line(const std::string& text) const { fprintf(mOut, "%s\n", text.c_str()); }
    // "  label       text"
    void row(const std::string& label, const std::string& text) const {
        const size_t pad = label.size() < kLabelColumns ? kLabelColumns - label.size() : 1;
        line("  " + paint(Colour::Dim, label) + std::string(pad, ' ') + text);
    }
    // Characters of untrusted text that fit behind `taken` columns; 0: all, everything was asked
    // for.
    size_t foreignRoom(size_t taken = kLabelColumns + 2) const {
        if (mStyle.allKeys) return 0;
        return mStyle.width > taken + 20 ? mStyle.width - taken - 3 : 20;
    }
    std::string foreign(const std::string& text) const { return printable(text, foreignRoom()); }
    FILE* out() const { return mOut; }
    bool allKeys() const { return mStyle.allKeys; }

  private:
    const TextStyle& mStyle;
    FILE* mOut;
};

}  // namespace orvel::probe
