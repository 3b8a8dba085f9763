#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>

#include "framework/CountingSource.h"
#include "framework/Extractor.h"
#include "framework/Player.h"
#include "framework/Plugin.h"

namespace orvel::bench {

/** The plug-in did not do what a case asks of it. */
class PluginSideError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Throws PluginSideError when the plug-in declines. */
host::SniffResult sniffTaken(const host::Plugin& plugin, host::DataSource& source);

/**
 * One file opened as the framework opens it: extractor, file format, all track formats, all tracks
 * started. Destruction stops the tracks and frees everything. One thread.
 */
class Session {
  public:
    /** Throws PluginSideError when no extractor is made or a track does not start. */
    Session(const host::Plugin& plugin, host::DataSource& source, host::SniffResult&& taken);

    host::Player& player() { return *mPlayer; }
    /** The first track whose MIME type begins so. Throws PluginSideError when there is none. */
    size_t position(const char* mimePrefix) const;
    host::Track& track(size_t position) { return *mPlayer->track(position); }

  private:
    std::optional<host::Extractor> mExtractor;
    std::optional<host::Player> mPlayer;
};

/** One sample. Throws PluginSideError when the read gives none. */
host::Buffer readSample(host::Track& track, const host::ReadOptions& options = {});

/**
 * Waits until the source has been left alone for some milliseconds: caches are full, the reader is
 * idle.
 */
void waitUntilIdle(const host::CountingSource& source);

}  // namespace orvel::bench
