#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "support/SyntheticFiles.h"

namespace orvel::test {

struct ExpectedTrack {
    int stream;  // of libavformat
    const char* mime;
};

/** A file that the plug-in takes, and what it has to find in it. */
struct MediaFile {
    std::string name;
    Bytes (*make)(const std::string& name);  // the whole file
    const char* demuxer;
    uint32_t flag;          // that enables it in "mm.enable.orvel_parser"
    const char* container;  // "file-format" of its tracks
    std::vector<ExpectedTrack> tracks;

    Bytes bytes() const { return make(name); }
};
void PrintTo(const MediaFile& file, std::ostream* out);

/** Every file that is taken; at least one of each row of the container table but asf_o. */
const std::vector<MediaFile>& mediaFiles();
/** The row of that name, which must exist. */
const MediaFile& mediaFile(const char* name);
/** Those of mediaFiles() that give tracks. */
std::vector<MediaFile> filesWithTracks();
/** `name` with nothing in it but letters, digits and underscores. */
std::string asTestName(std::string name);

}  // namespace orvel::test
