#include "PluginSide.h"

#include <strings.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace orvel::bench {

host::SniffResult sniffTaken(const host::Plugin& plugin, host::DataSource& source) {
    host::SniffResult result = plugin.sniff(source);
    if (!result.taken())
        throw std::runtime_error("the plug-in declines a file that it should take");
    return result;
}

Session::Session(const host::Plugin& plugin, host::DataSource& source, host::SniffResult&& taken)
    : mExtractor(plugin.create(source, std::move(taken))) {
    if (!mExtractor) throw std::runtime_error("the plug-in makes no extractor");
    host::Format fileFormat;
    mExtractor->fileFormat(&fileFormat);
    const size_t count = mExtractor->countTracks();
    for (size_t i = 0; i < count; ++i) {
        host::Format format;
        mExtractor->trackFormat(i, host::Extractor::kIncludeExtensiveMetaData, &format);
    }
    mPlayer.emplace(*mExtractor);
    if (count == 0) throw std::runtime_error("the plug-in gives no tracks");
    for (size_t i = 0; i < count; ++i) {
        if (mPlayer->track(i) == nullptr) {
            throw std::runtime_error("track " + std::to_string(i) + " does not start");
        }
    }
}

size_t Session::position(const char* mimePrefix) const {
    for (size_t i = 0; i < mPlayer->trackCount(); ++i) {
        host::Format format;
        mExtractor->trackFormat(mPlayer->index(i), 0, &format);
        const auto mime = format.string(host::kKeyMime);
        if (mime && strncasecmp(mime->c_str(), mimePrefix, strlen(mimePrefix)) == 0) return i;
    }
    throw std::runtime_error(std::string("no track of type ") + mimePrefix);
}

host::Buffer readSample(host::Track& track, const host::ReadOptions& options) {
    host::ReadResult result = track.read(options);
    if (result.status != android::OK || !result.buffer) {
        throw std::runtime_error("a read ended with status " + std::to_string(result.status));
    }
    return std::move(result.buffer);
}

}  // namespace orvel::bench
