#pragma once

#include <media/MediaExtractorPluginApi.h>
#include <utils/Errors.h>

#include <cstdint>
#include <string>
#include <vector>

/** A scripted track: its samples' times, and the status that ends it. A seek starts it over. */
struct FakeTrack {
    const char* mime = "audio/x";
    std::vector<int64_t> timesUs;
    android::status_t end = android::OK;  // OK: breaks the contract, success without a buffer
    android::status_t startStatus = android::OK;
};

/**
 * A malloc-made extractor table over scripted tracks. Calls append to *log: "start0", "read1",
 * "seek0@500/3", "stop0", "free0", "free". Tracks, script and log must outlive the tables.
 */
android::CMediaExtractor* makeFakeExtractor(std::vector<FakeTrack>* tracks,
                                            std::vector<std::string>* log);
