#pragma once

#include <optional>

#include "framework/Extractor.h"
#include "framework/Player.h"
#include "framework/Plugin.h"

namespace orvel::bench {

/** Throws std::runtime_error when the plug-in declines. */
host::SniffResult sniffTaken(const host::Plugin& plugin, host::DataSource& source);

/**
 * One file opened as the framework opens it: extractor, file format, all track formats, all tracks
 * started. Destruction stops the tracks and frees everything. One thread.
 */
class Session {
  public:
    /** Throws std::runtime_error when no extractor is made or a track does not start. */
    Session(const host::Plugin& plugin, host::DataSource& source, host::SniffResult&& taken);

    host::Player& player() { return *mPlayer; }
    /** The first track whose MIME type begins so. Throws std::runtime_error without one. */
    size_t position(const char* mimePrefix) const;
    host::Track& track(size_t position) { return *mPlayer->track(position); }

  private:
    std::optional<host::Extractor> mExtractor;
    std::optional<host::Player> mPlayer;
};

/** One sample. Throws std::runtime_error when the read gives none. */
host::Buffer readSample(host::Track& track, const host::ReadOptions& options = {});

}  // namespace orvel::bench
