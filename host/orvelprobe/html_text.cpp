#include "html_text.h"

#include <openssl/evp.h>

#include "text.h"

namespace orvel::probe {

std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string foreignText(std::string_view text, size_t maxCharacters) {
    return "<bdi>" + escaped(printable(text, maxCharacters)) + "</bdi>";
}

std::string base64(const void* data, size_t size) {
    std::string text((size + 2) / 3 * 4 + 1, '\0');  // EVP_EncodeBlock ends it with a null
    const int length =
            EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                            static_cast<const unsigned char*>(data), static_cast<int>(size));
    text.resize(static_cast<size_t>(length));
    return text;
}

std::string column(const std::vector<int64_t>& values) {
    std::string bytes;
    for (const int64_t value : values) {
        // Twice the number, or twice what it lacks to -1, and one.
        uint64_t rest = static_cast<uint64_t>(value < 0 ? ~value : value) << 1 | (value < 0);
        for (; rest > 127; rest >>= 7)
            bytes += static_cast<char>(rest | 128);
        bytes += static_cast<char>(rest);
    }
    return base64(bytes.data(), bytes.size());
}

}  // namespace orvel::probe
